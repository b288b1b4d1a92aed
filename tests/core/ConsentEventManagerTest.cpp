#include "TalvoConsentSDK/core/ConsentEventManager.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {
namespace {

using Event = ConsentEvent;

class ConsentEventManagerTest : public ::testing::Test {
 protected:
  std::shared_ptr<ConsentEventCallback> listener(
      const std::string& name, std::function<void()> work = [] {}) {
    const auto success = [this, name, work] {
      trace += name;
      work();
    };
    return std::make_shared<ConsentEventClosureCallback>(success, [this] { trace += "!"; });
  }

  std::string traceOf(const std::vector<Event>& events) {
    trace.clear();
    manager.trigger(events);
    return trace;
  }

  ConsentEventManager manager;
  std::string trace;
};

TEST_F(ConsentEventManagerTest, DeliversInOrderToRegisteredListeners) {
  EXPECT_EQ(traceOf({Event::acceptAll, Event::consentSent}), "");
  const auto a = listener("a");
  for (const auto& each : {a, listener("b"), a}) manager.addListener(Event::consentSent, each);
  for (const auto& each : {listener("c"), {}}) manager.addListener(Event::acceptAll, each);
  EXPECT_EQ(traceOf({Event::consentSent, Event::rejectAll, Event::acceptAll, Event::consentSent}), "abacaba");
  manager.removeListeners(Event::acceptAll);
  EXPECT_EQ(traceOf({Event::acceptAll, Event::consentSent}), "aba");
  manager.removeAllListeners();
  EXPECT_EQ(traceOf({Event::acceptAll, Event::consentSent}), "");
  EXPECT_EQ(a.use_count(), 1) << "the manager still holds the listener";
}

TEST_F(ConsentEventManagerTest, LetsListenersChangeTheRegistry) {
  manager.addListener(Event::acceptAll, listener("a", [this] { manager.removeAllListeners(); }));
  manager.addListener(Event::acceptAll,
                      listener("b", [this] { manager.addListener(Event::acceptAll, listener("c")); }));
  manager.addListener(Event::consentSent, listener("d"));
  EXPECT_EQ(traceOf({Event::acceptAll, Event::consentSent}), "ab")
      << "changes apply to later deliveries only";
  EXPECT_EQ(traceOf({Event::acceptAll}), "c");
}

}  // namespace
}  // namespace TalvoConsentSDK
