// When a gate calls the host, and that it answers while the store is in use. What it allows, and that it
// follows every change of the stored consent, is checked by PrecedenceTest and ChoicesTest.

#include <future>

#include "tests/core/ClientTest.h"

namespace TalvoConsentSDK {

namespace {

using enum ConsentCategory;

class ConsentGateTest : public ClientTest {
 protected:
  // Creates the client with this consent stored, "none" for none.
  void begin(const std::string& consent) {
    store("basicConsent", consent);
    for (const char* method : {"POST", "PUT"}) answer(method, "cookie-consent/s", 200, R"({"id":"n"})");
    client = created();
  }
  void submit(const std::string& consent) {
    client->submitConsent(parsed<BasicConsent>(consent), nullptr);
    platform.settle();
  }
  Subscription watched() {
    return client->gate().on(statistics, [this] { note("start"); }, [this] { note("stop"); });
  }
  Texts taken() { return std::exchange(trace, {}); }

  std::shared_ptr<CookiesSDK> client;
};

TEST_F(ConsentGateTest, RefusesCategoriesWithoutAGate) {
  begin("none");
  for (const ConsentCategory category : {unclassified, doNotSell}) {
    EXPECT_THROW((void)client->gate().isAllowed(category), Error);
    EXPECT_THROW((void)client->gate().on(category, nullptr, nullptr), Error);
  }
}

TEST_F(ConsentGateTest, CallsTheHostInTurnUntilTheSubscriptionEnds) {
  begin(R"({"statistics":true})");
  Subscription first = watched();
  EXPECT_THAT(taken(), IsEmpty()) << "not inside the call";
  platform.settle();
  EXPECT_THAT(taken(), ElementsAre("start on main"));
  const Subscription second = watched();
  submit(R"({"statistics":true,"marketing":true})");
  EXPECT_THAT(taken(), ElementsAre("start on main")) << "the second only: nothing changed for the first";
  submit(R"({"statistics":["A"]})");
  EXPECT_THAT(taken(), ElementsAre("stop on main", "stop on main"));
  first.end();
  submit(R"({"statistics":true})");
  EXPECT_THAT(taken(), ElementsAre("start on main"));

  client->submitConsent(BasicConsent::rejectAll(), nullptr);
  client->submitConsent(BasicConsent::acceptAll(), nullptr);
  while (platform.background->runAll() + platform.sessionThread->runAll() > 0) {
  }
  platform.settle();
  EXPECT_THAT(taken(), IsEmpty()) << "a change that was undone before the main actor ran";
  answer("PUT", "cookie-consent/s", 503, "down");
  submit(R"({"statistics":true})");  // takes the last reply of 200
  submit("{}");
  EXPECT_THAT(taken(), IsEmpty()) << "a refusal that could not be sent";
}

TEST_F(ConsentGateTest, LetsClosuresDoAnything) {
  begin(R"({"statistics":true})");
  Subscription inner, outer;
  throws = true;
  outer = client->gate().on(statistics,
                            [&] {
                              outer.end();
                              inner = watched();
                              note("outer");
                            },
                            {});
  const Subscription empty = client->gate().on(statistics, {}, {});
  platform.settle();
  EXPECT_THAT(taken(), ElementsAre("outer on main", "start on main"));
  throws = false;
  submit("{}");
  EXPECT_THAT(taken(), ElementsAre("stop on main"));
  const Subscription erasing = client->observeConsent([&](const std::optional<BasicConsent>& now) {
    note(now ? written(*now) : "none");
    if (now) client->eraseConsent();
  });
  submit(R"({"marketing":true})");
  EXPECT_THAT(taken(), ElementsAre(R"({"marketing":true} on main)", "none on main"));
  EXPECT_EQ(stored("basicConsent"), "none");
}

TEST_F(ConsentGateTest, CallsNothingInsideACallNorAfterItsEnd) {
  begin(R"({"statistics":true})");
  Subscription waiting, ended;
  waiting = client->gate().on(
      statistics,
      [&] {
        submit("{}");  // runs the main actor's jobs, as a dialog does
        note("started");
      },
      [&] { note("stopped"); });
  ended = client->gate().on(
      statistics,
      [&] {
        ended.end();
        submit("{}");
      },
      [&] { note("stopped though it had ended"); });
  platform.settle();
  EXPECT_THAT(taken(), ElementsAre("started on main", "stopped on main"));

  Subscription second;
  const auto first = client->addEventListener(ConsentEvent::consentSent, [&] { second.end(); });
  second = client->addEventListener(ConsentEvent::consentSent, [&] { note("listened though it had ended"); });
  submit("{}");
  EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(ConsentGateTest, AnswersWhileTheStoreIsBlocked) {
  begin(R"({"statistics":true})");
  const ConsentGate gate = client->gate();
  std::promise<void> blocked, released;
  platform.userDefaults->before = [&](std::string_view) {
    blocked.set_value();
    released.get_future().wait();
    platform.userDefaults->before = [](auto) {};
  };
  auto reading = std::async(std::launch::async, [&] { return client->getConsent(); });
  blocked.get_future().wait();
  EXPECT_TRUE(gate.isAllowed(statistics));
  EXPECT_FALSE(gate.isAllowed(marketing, "A"));
  const Subscription subscription = watched();
  platform.mainActor->runAll();
  EXPECT_THAT(taken(), ElementsAre("start on main"));
  released.set_value();
  EXPECT_EQ(written(reading.get().value()), R"({"statistics":true})");
}

}  // namespace
}  // namespace TalvoConsentSDK
