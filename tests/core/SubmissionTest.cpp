#include <stdexcept>

#include "TalvoConsentSDK/models/FullConsent.h"
#include "TalvoConsentSDK/platform/Spawn.h"

#include "tests/core/ClientTest.h"

namespace TalvoConsentSDK {
namespace {

struct Submission {
  std::string name;
  std::string consent;
  std::string status;
  std::string categories;  // besides those that are always sent
  std::string members;     // of the payload, besides those that are always the same
  Texts events;
  std::string storedBefore = "none";
  std::string user = "none";
};

class SubmissionTest : public ClientTest, public ::testing::WithParamInterface<Submission> {};

TEST_P(SubmissionTest, SendsStoresAndAnnounces) {
  const auto& [name, consent, status, categories, members, events, storedBefore, user] = GetParam();
  store("basicConsent", storedBefore);
  store("userId", user);
  answer("GET", "cookie-consent/s/identified/" + user, 200, "null");
  const std::string method = storedBefore == "none" ? "POST" : "PUT";
  answer(method, "cookie-consent/s", 201, R"({"id":"from service"})");
  const auto client = created();
  noteEvents(*client);
  Texts expected = events;
  for (const char* last : {"ConsentSent", "from service"}) expected.push_back(last);
  for (std::string& each : expected) each += " in background";

  for (int round = 0; round < 2; ++round) {  // what was created is created once more
    trace.clear();
    client->submitConsent(parsed<BasicConsent>(consent),
                          [&](const Result<ConsentResponse>& result) { note(result->id); });
    EXPECT_THAT(newRequests(), IsEmpty());
    platform.settle();
    EXPECT_THAT(newRequests(), ElementsAre(method + " cookie-consent/s"));
    const URLRequest request = platform.session->requests().back();
    EXPECT_THAT(request.headers, ElementsAre(Pair("Content-Type", "application/json"),
                                             Pair("X-Client-Name", "mobile-consent-sdk-ios")));
    EXPECT_EQ(canonical(*request.body),
              canonical(R"({"status":")" + status +
                        R"(","categories":{"necessary":true,"unclassified":true,)" + categories + "}," +
                        members + R"("consentDataAnalytics":{},"typeConsent":"explicit","siteId":"s"})"));
    EXPECT_EQ(trace, expected);
    EXPECT_EQ(stored("basicConsent"), consent);
  }
  EXPECT_THAT(platform.printer->take(), IsEmpty());
}

const Texts allEvents{"AcceptAll", "PreferenceAccepted", "MarketingAccepted", "StatisticsAccepted"};
const std::string nothing = R"("preferences":false,"marketing":false,"statistics":false)";
const Submission submissions[] = {
    {"AcceptAll", R"({"preferences":true,"statistics":true,"marketing":true})", "accepted",
     R"("preferences":true,"marketing":true,"statistics":true)", "", allEvents},
    {"NothingChosen", "{}", "rejected", nothing, "", {"RejectAll"}},
    {"MarketingAloneOfAUser",
     R"({"marketing":true,"id":"c-1","optedIn":false})",
     "accepted",
     R"("preferences":false,"marketing":true,"statistics":false,"optedIn":false)",
     R"("id":"c-1","userId":"u",)",
     {"MarketingAccepted"},
     "none",
     "u"},
    {"PartialUpdate",
     R"({"preferences":["b","a"],"statistics":false,"marketing":["ü \"x\""],"optedIn":true})",
     "partial",
     R"("preferences":["b","a"],"marketing":["ü \"x\""],"statistics":false,"optedIn":true)",
     "",
     {"PreferenceAccepted", "MarketingAccepted"},
     R"({"id":"held"})"},
};
INSTANTIATE_TEST_SUITE_P(Client, SubmissionTest, ValuesIn(submissions), byName);

Task<void> submitAndNote(std::shared_ptr<CookiesSDK> client, BasicConsent consent,
                         std::function<void(std::string)> note) {
  try {
    auto submission = client->submitConsent(consent);
    const ConsentResponse response = co_await std::move(submission);
    note(response.id);
  } catch (const Error& error) {
    note(error.what());
  }
}

TEST_F(ClientTest, StoresAndAnnouncesNothingThatFails) {
  store("basicConsent", R"({"id":"held"})");
  answer("PUT", "cookie-consent/s", 422, "refused");
  answer("PUT", "cookie-consent/s", 422, "refused");
  answer("PUT", "cookie-consent/s", 200, "{}");
  const auto client = created();
  noteEvents(*client);
  BasicConsent unwritable;
  unwritable.id = "\xFF";
  for (const BasicConsent& consent : {BasicConsent::acceptAll(), BasicConsent::acceptAll(), unwritable}) {
    client->submitConsent(consent, [&](const Result<ConsentResponse>& result) { note(failure(result)); });
    platform.settle();
    spawn(platform.mainActor,
          submitAndNote(client, consent, [this](const std::string& text) { note(text); }));
    platform.settle();
  }
  const std::string refused = "HTTP error 422: refused";
  const std::string missing = "Failed to decode response: Missing key at id";
  const std::string invalid = "Network error: Invalid value: The text is not valid UTF-8";
  EXPECT_THAT(trace, ElementsAre(refused + " in background", refused + " on main", missing + " in background",
                                 missing + " on main", invalid + " in background", invalid + " on main"));
  EXPECT_EQ(newRequests().size(), 4u);
  EXPECT_EQ(stored("basicConsent"), R"({"id":"held"})");
  EXPECT_THAT(platform.printer->take(), IsEmpty());
}

// A host's own coroutine, which has no executor.
struct Coroutine {
  struct promise_type {
    Coroutine get_return_object() { return {}; }
    std::suspend_never initial_suspend() { return {}; }
    std::suspend_never final_suspend() noexcept { return {}; }
    void return_void() {}
    void unhandled_exception() { std::terminate(); }
  };
};

Coroutine awaitAndNote(Task<ConsentResponse> submission, std::function<void(std::string)> note) {
  const ConsentResponse response = co_await std::move(submission);
  note(response.id);
}

TEST_F(ClientTest, JudgesAnAsynchronousSubmissionAtTheCallAndResumesItsAwaiterWhereItBelongs) {
  answer("POST", "cookie-consent/s", 200, R"({"id":"new"})");
  answer("GET", "cookie-consent/s/identified/u", 200, "null");
  const auto client = created();
  const auto noting = [this](const std::string& text) { note(text); };
  auto submission = client->submitConsent(BasicConsent::rejectAll());
  client->identify("u");
  platform.settle();
  EXPECT_THAT(newRequests(), ElementsAre("GET cookie-consent/s/identified/u")) << "not awaited yet";
  noteEvents(*client);
  awaitAndNote(std::move(submission), noting);
  platform.settle();
  EXPECT_FALSE(parsed<FullConsent>(*platform.session->requests().back().body).userId)
      << "nobody was identified";
  spawn(platform.mainActor, submitAndNote(client, BasicConsent::rejectAll(), noting));
  platform.settle();
  EXPECT_EQ(parsed<FullConsent>(*platform.session->requests().back().body).userId, "u");
  EXPECT_THAT(trace, ElementsAre("RejectAll in background", "ConsentSent in background", "new in background",
                                 "RejectAll in background", "ConsentSent in background", "new on main"));
}

TEST_F(ClientTest, SucceedsAlsoWhereNothingCanBeStoredAndHostsThrow) {
  answer("POST", "cookie-consent/s", 200, R"({"id":"new"})");
  const auto client = created();
  platform.userDefaults->failsToWrite = true;
  const auto throwing = [] { throw std::runtime_error("host's"); };
  client->addEventListener(ConsentEvent::rejectAll,
                           std::make_shared<ConsentEventClosureCallback>(throwing, throwing));
  noteEvents(*client);
  client->submitConsent(BasicConsent::rejectAll(), [&](const Result<ConsentResponse>&) { throwing(); });
  platform.settle();
  EXPECT_THAT(trace, ElementsAre("RejectAll in background", "ConsentSent in background"));
  EXPECT_THAT(platform.printer->take(),
              ElementsAre("⚠️ Failed to save consent to UserDefaults: The store is out of order",
                          "⚠️ A callback threw: host's", "⚠️ A callback threw: host's"));
}

}  // namespace
}  // namespace TalvoConsentSDK
