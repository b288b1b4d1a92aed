// The gate: what it allows, when it calls the host, and what it does while the store fails or is in use. That
// it follows every change of the stored consent is checked by PrecedenceTest and ChoicesTest.

#include <future>

#include "tests/core/ClientTest.h"

namespace TalvoConsentSDK {

using namespace platform;

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
  std::string consent() const {
    const auto stored = client->getConsent();
    return stored ? written(*stored) : "none";
  }
  Texts taken() { return std::exchange(trace, {}); }

  std::shared_ptr<CookiesSDK> client;
};

TEST_F(ConsentGateTest, AllowsWhatTheStoredConsentAccepts) {
  const struct {
    std::string consent;
    bool preferences, statistics, marketing, vendorA;  // vendorA: of marketing
  } cases[] = {
      {"{}", false, false, false, false},
      {R"({"preferences":true,"statistics":false,"marketing":true})", true, false, true, true},
      {R"({"marketing":["A","B"]})", false, false, false, true},
      {R"({"marketing":["B"],"optedIn":true})", false, false, false, false},
      {R"({"preferences":true,"statistics":true,"marketing":true,"optedIn":false})", false, false, false,
       false},
      {R"({"preferences":true,"marketing":["A"],"optedIn":false})", false, false, false, false},
  };
  begin("none");
  const ConsentGate gate = client->gate();
  EXPECT_FALSE(gate.isAllowed(statistics)) << "no consent";
  for (const auto& [consent, ofPreferences, ofStatistics, ofMarketing, ofVendor] : cases) {
    submit(consent);
    EXPECT_TRUE(gate.isAllowed(necessary)) << consent;
    EXPECT_TRUE(gate.isAllowed(necessary, "A")) << consent;
    EXPECT_EQ(gate.isAllowed(preferences), ofPreferences) << consent;
    EXPECT_EQ(gate.isAllowed(statistics), ofStatistics) << consent;
    EXPECT_EQ(gate.isAllowed(marketing), ofMarketing) << consent;
    EXPECT_EQ(gate.isAllowed(marketing, "A"), ofVendor) << consent;
  }
  for (const ConsentCategory category : {unclassified, doNotSell}) {
    EXPECT_THROW((void)gate.isAllowed(category), Error);
    EXPECT_THROW((void)gate.on(category, nullptr, nullptr), Error);
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

TEST_F(ConsentGateTest, ReportsEachChangeOfTheConsent) {
  begin("none");
  const Subscription observation = client->observeConsent(
      [this](const std::optional<BasicConsent>& now) { note(now ? written(*now) : "none"); });
  platform.settle();
  EXPECT_THAT(taken(), IsEmpty()) << "no change yet";
  const struct {
    std::string change;
    std::function<void()> make;
    Texts reported;
  } changes[] = {
      {"a decision", [&] { submit(R"({"marketing":["A"]})"); }, {R"({"marketing":["A"]} on main)"}},
      {"the same again", [&] { submit(R"({"marketing":["A"]})"); }, {}},
      {"another process, unread", [&] { store("basicConsent", "{}"); }, {}},
      {"another process, read", [&] { EXPECT_EQ(consent(), "{}"); }, {"{} on main"}},
      {"damage",
       [&] {
         store("basicConsent", "damaged");
         EXPECT_EQ(consent(), "none");
       },
       {"none on main"}},
      {"a decision after it", [&] { submit(R"({"marketing":true})"); }, {R"({"marketing":true} on main)"}},
      {"an erasure", [&] { EXPECT_TRUE(client->eraseConsent()); }, {"none on main"}},
      {"another erasure", [&] { EXPECT_TRUE(client->eraseConsent()); }, {}},
  };
  for (const auto& [change, make, reported] : changes) {
    make();
    platform.settle();
    EXPECT_EQ(taken(), reported) << change;
  }
}

// ChoicesTest draws failures in any order; this shows the rule.
TEST_F(ConsentGateTest, StaysAsItIsWhileTheStoreFailsAndClosesAtALogout) {
  begin(R"({"statistics":true})");
  const ConsentGate gate = client->gate();
  platform.userDefaults->failsToRead = true;
  EXPECT_EQ(consent(), "none");
  EXPECT_TRUE(gate.isAllowed(statistics));
  client->removeIdentity();
  EXPECT_FALSE(gate.isAllowed(statistics));
  platform.userDefaults->failsToRead = false;
  EXPECT_EQ(consent(), R"({"statistics":true})");
  EXPECT_TRUE(gate.isAllowed(statistics)) << "the consent was given while nobody was identified";
  platform.userDefaults->failsToWrite = true;
  EXPECT_FALSE(client->eraseConsent());
  EXPECT_FALSE(gate.isAllowed(statistics));
  EXPECT_NE(stored("basicConsent"), "none");
  platform.userDefaults->failsToWrite = false;
  EXPECT_EQ(consent(), "none");
  EXPECT_EQ(stored("basicConsent"), "none") << "erased by the next operation";
}

TEST_F(ConsentGateTest, FollowsAStoreThatCannotSynchronize) {
  begin(R"({"statistics":true})");
  const Subscription subscription = watched();
  platform.settle();
  platform.userDefaults->failsToSynchronize = true;
  submit("{}");
  submit(R"({"id":"n","statistics":true})");
  EXPECT_THAT(taken(), ElementsAre("start on main", "stop on main", "start on main"));

  answer("GET", "cookie-consent/s/identified/u", 200, "null");
  client->identify("u");
  client->removeIdentity();
  platform.settle();
  EXPECT_EQ(consent(), R"({"statistics":true,"id":"n"})") << "the logout is made once";
  EXPECT_FALSE(client->eraseConsent());
  submit("{}");
  EXPECT_EQ(consent(), "{}") << "the erasure is made once";
  const int synchronizations = platform.store->synchronizations();
  platform.userDefaults->failsToSynchronize = false;
  consent(), consent();
  EXPECT_EQ(platform.store->synchronizations(), synchronizations + 1);
  EXPECT_TRUE(client->eraseConsent());
}

// A login, a logout or an erasure that arrives while a consent is being stored gets no turn of its own.
TEST_F(ConsentGateTest, FollowsWhatArrivesDuringAWrite) {
  begin(R"({"statistics":true})");
  answer("GET", "cookie-consent/s/identified/u", 200, "null");
  answer("GET", "cookie-consent/s/identified/known", 200, R"({"id":"k","categories":{"statistics":true}})");
  const ConsentGate gate = client->gate();
  const auto duringTheNextWrite = [&](const std::function<void()>& act) {
    platform.userDefaults->before = [this, act, reads = 3](std::string_view) mutable {
      if (reads-- > 0) return;
      const auto now = act;
      platform.userDefaults->before = [](auto) {};  // destroys this closure
      now();
    };
  };
  duringTheNextWrite([&] { client->identify("u"); });
  submit(R"({"statistics":false})");
  EXPECT_FALSE(gate.isAllowed(statistics)) << "the refusal was stored";
  EXPECT_EQ(stored("userId"), "u");

  client->identify("known");
  duringTheNextWrite([&] { EXPECT_FALSE(client->eraseConsent()); });
  platform.settle();
  EXPECT_FALSE(gate.isAllowed(statistics));
  EXPECT_EQ(stored("basicConsent") + stored("originalConsent") + stored("userId"), "nonenonenone");
  EXPECT_THAT(platform.printer->take(), ElementsAre(HasSubstr("Failed to remove consent")));
}

TEST_F(ConsentGateTest, ReportsAnUnwritableConsentOnce) {
  begin(R"({"statistics":true,"id":"c"})");
  answer("GET", "cookie-consent/s/identified/u?consentId=c", 500, "down");
  answer("GET", "cookie-consent/s/identified/u", 500, "down");
  const Subscription observation = client->observeConsent([this](const auto&) {
    note("changed");
    consent();
  });
  platform.userDefaults->failsToWrite = true;
  client->identify("u");
  platform.settle();
  EXPECT_THAT(taken(), ElementsAre("changed on main")) << "the identifier of the record is the person's own";
}

TEST_F(ConsentGateTest, GivesNoImplicitConsentAfterAnErasure) {
  answer("POST", "cookie-consent/s", 200, R"({"id":"n"})");
  client = create(R"({"implicitConsent":true})");
  EXPECT_TRUE(client->eraseConsent());
  platform.settle();
  EXPECT_EQ(consent(), "none");
  EXPECT_THAT(newRequests(), ElementsAre(HasSubstr("configurations")));
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
  auto reading = std::async(std::launch::async, [&] { return consent(); });
  blocked.get_future().wait();
  EXPECT_TRUE(gate.isAllowed(statistics));
  EXPECT_FALSE(gate.isAllowed(marketing, "A"));
  const Subscription subscription = watched();
  platform.mainActor->runAll();
  EXPECT_THAT(taken(), ElementsAre("start on main"));
  released.set_value();
  EXPECT_EQ(reading.get(), R"({"statistics":true})");
}

}  // namespace
}  // namespace TalvoConsentSDK
