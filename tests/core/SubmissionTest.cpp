#include <future>
#include <thread>

#include "TalvoConsentSDK/platform/Spawn.h"

#include "tests/core/ClientTest.h"

namespace TalvoConsentSDK {

namespace {

// Awaits a submission without an executor, and notes its end.
void awaitAndNote(Task<ConsentResponse> submission, const std::function<void(std::string)>& note) {
  spawn<ConsentResponse>(nullptr, std::move(submission),
                         [note](const Result<ConsentResponse>& end) { note(end->id); });
}

TEST_F(ClientTest, DecidesWhatToSendWhenAnAsynchronousSubmissionIsCalled) {
  answer("POST", "cookie-consent/s", 200, R"({"id":"new"})");
  answer("GET", "cookie-consent/s/identified/u", 200, "null");
  const auto client = created();
  auto submission = client->submitConsent(BasicConsent::rejectAll());
  client->identify("u");
  platform.settle();
  EXPECT_THAT(newRequests(), ElementsAre("GET cookie-consent/s/identified/u")) << "not awaited yet";
  noteEvents(*client);
  awaitAndNote(std::move(submission), [this](const std::string& text) { note(text); });
  platform.settle();
  EXPECT_THAT(newRequests(), ElementsAre("POST cookie-consent/s"));
  EXPECT_THAT(trace,
              ElementsAre("RejectAll in background", "ConsentSent in background", "new in background"));
}

TEST_F(ClientTest, CallsListenersAndCompletionsInOrderOnAnExecutorOfTheirOwn) {
  answer("POST", "cookie-consent/s", 200, R"({"id":"new"})");
  answer("GET", "cookie-consent/s/identified/u", 200, "null");
  platform.callbacks = std::make_shared<ManualExecutor>();
  platform.install();
  const auto client = created();
  noteEvents(*client);
  const auto listener = std::make_shared<ConsentEventClosureCallback>([this] { note("?"); }, [] {});
  for (const auto& each : {listener, {}, listener}) client->addEventListener(ConsentEvent::rejectAll, each);
  client->removeEventListener(ConsentEvent::rejectAll, listener);
  client->submitConsent(BasicConsent::rejectAll(), [this](const auto&) { note("first"); });
  awaitAndNote(client->submitConsent(BasicConsent::rejectAll()), [this](const auto&) { note("second"); });
  client->identify("u");
  while (platform.mainActor->runAll() + platform.background->runAll() + platform.sessionThread->runAll() >
         0) {
  }
  EXPECT_EQ(stored("basicConsent"), written(BasicConsent::rejectAll())) << "even while callbacks are blocked";
  EXPECT_THAT(std::exchange(trace, {}), ElementsAre("IdentificationComplete on main"));
  platform.callbacks->post([this] { note("between"); });
  EXPECT_TRUE(platform.callbacks->runAll() == 3 && platform.callbacks->runAll() == 0);
  EXPECT_THAT(trace, ElementsAre("RejectAll elsewhere", "ConsentSent elsewhere", "first elsewhere",
                                 "RejectAll elsewhere", "ConsentSent elsewhere", "between elsewhere"));
  platform.background->runAll();
  EXPECT_EQ(trace.back(), "second in background");
}

TEST_F(ClientTest, DeliversEventsInOrderToTheListenersOfThatMoment) {
  using enum ConsentEvent;
  for (const char* method : {"POST", "PUT"}) answer(method, "cookie-consent/s", 200, R"({"id":"new"})");
  const auto client = created();
  const auto listener = [this](
                            const std::string& name, std::function<void()> work = [] {}) {
    return std::make_shared<ConsentEventClosureCallback>([=, this] { work(), note(name); }, [] {});
  };
  const auto heard = [&] {
    client->submitConsent(BasicConsent::rejectAll(), nullptr);
    platform.settle();
    return std::exchange(trace, {});
  };
  const auto a = listener("a");
  for (const auto& each : {a, listener("b"), a}) client->addEventListener(rejectAll, each);
  client->addEventListener(consentSent, listener("c", [&] {
                             client->removeAllEventListeners();
                             for (const auto event : {rejectAll, consentSent})
                               client->addEventListener(event, listener("later"));
                           }));
  client->addEventListener(consentSent, listener("d"));
  EXPECT_THAT(heard(), ElementsAre("a in background", "b in background", "a in background", "c in background",
                                   "d in background"));
  EXPECT_EQ(a.use_count(), 1) << "the client still holds the listener";
  EXPECT_THAT(heard(), ElementsAre("later in background", "later in background"));
  client->removeEventListener(rejectAll);
  EXPECT_THAT(heard(), ElementsAre("later in background"));
}

// A store whose first save blocks, as if waiting for another process, until the test releases it.
struct WaitingStore : InMemoryUserDefaults {
  Result<void> commit(const std::vector<StoreChange>& changes) override {
    std::call_once(first, [this] {
      entered.set_value();
      released.get_future().wait();
    });
    return InMemoryUserDefaults::commit(changes);
  }

  std::once_flag first;
  std::promise<void> entered, released;
};

TEST_F(ClientTest, ReturnsFromIdentifyWhileASaveWaitsAndRepeatsItAfterwards) {
  answer("POST", "cookie-consent/s", 200, R"({"id":"new"})");
  answer("GET", "cookie-consent/s/identified/u", 200, "null");
  const auto waiting = std::make_shared<WaitingStore>();
  platform.userDefaults = std::make_shared<FailingUserDefaults>(waiting);
  platform.install();
  const auto client = created();
  client->submitConsent(BasicConsent::rejectAll(), nullptr);
  std::thread saving([&] { platform.settle(); });
  waiting->entered.get_future().wait();
  client->identify("u");
  client->removeIdentity();
  client->identify("u");
  EXPECT_TRUE(waiting->values().empty());
  waiting->released.set_value();
  saving.join();
  // The thread that saved has also stored what arrived meanwhile.
  EXPECT_EQ(waiting->string(prefix + "userId.s").value(), "u");
  EXPECT_EQ(waiting->data(prefix + "originalConsent.s").value(), Data(written(BasicConsent::rejectAll())));
  platform.settle();
}

// If the executors refuse jobs, each operation still ends exactly once, on the caller's thread.
TEST_F(ClientTest, EndsOnceIfExecutorsRefuseJobs) {
  for (const char* method : {"POST", "PUT"}) answer(method, "cookie-consent/s", 200, R"({"id":"new"})");
  answer("GET", "banner-customization/s?lng=en", 500, "down");
  answer("GET", "cookies/s?lng=en", 200, "{}");
  answer("GET", "cookie-consent/s/identified/u", 200, "null");
  std::vector<std::shared_ptr<FailingExecutor>> executors;
  for (const auto member : {&Platform::mainActor, &Platform::background, &Platform::callbacks}) {
    executors.push_back(std::make_shared<FailingExecutor>(Platform::current().*member));
    replaceSeam(member, executors.back());
  }
  const auto client = created();
  std::map<std::string, int> ends;
  client->addEventListener(ConsentEvent::identificationComplete,
                           std::make_shared<ConsentEventClosureCallback>([&] { ++ends["identify"]; }, [] {}));
  for (const auto& executor : executors) {
    for (const bool refuses : {true, false}) {
      (refuses ? executor->refuses : executor->throwsAfterwards) = true;
      ends.clear();
      client->submitConsent({}, [&](const auto&) { ++ends["submit"]; });
      spawn<ConsentResponse>(nullptr, client->submitConsent({}), [&](const auto&) { ++ends["task"]; });
      client->showBanner({}, {}, {}, [&](const Error&) { ++ends["banner"]; });
      client->identify("u");
      platform.settle();
      EXPECT_THAT(ends,
                  ElementsAre(Pair("banner", 1), Pair("identify", 1), Pair("submit", 1), Pair("task", 1)));
      executor->refuses = executor->throwsAfterwards = false;
    }
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
