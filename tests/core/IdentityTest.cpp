#include "tests/core/ClientTest.h"

namespace TalvoConsentSDK {
namespace {

// What a client does with an identity: "+user" identifies, "-" removes. The service has a consent of user
// "known", fails for "broken", and knows nobody else.
struct Identity {
  std::string name;
  Texts before;  // stored: consent, original, user
  Texts steps;
  Texts requested;  // for whom the service was asked
  Texts after;
  std::string unreadable = "";  // keys that fail, from creation on
  std::string unwritable = "";
  bool recovers = false;  // once the client is created
};

class IdentityTest : public ClientTest, public ::testing::WithParamInterface<Identity> {};

TEST_P(IdentityTest, MovesConsentsAsItsRulesSay) {
  const auto& [name, before, steps, requested, after, unreadable, unwritable, recovers] = GetParam();
  const Texts keys{"basicConsent", "originalConsent", "userId"};
  for (std::size_t n = 0; n < keys.size(); ++n) store(keys[n], before[n]);
  for (const std::string query : {"", "?consentId=c"}) {
    for (const std::string user : {"a", "b"})
      answer("GET", "cookie-consent/s/identified/" + user + query, 200, "null");
    answer("GET", "cookie-consent/s/identified/known" + query, 200,
           R"({"id":"k","categories":{"statistics":["a"]}})");
    answer("GET", "cookie-consent/s/identified/broken" + query, 500, "down");
  }
  FailingUserDefaults& device = *platform.userDefaults;
  device.before = [&, reading = unreadable, writing = unwritable](std::string_view key) {
    device.failsToRead = key == prefix + reading + ".s";
    device.failsToWrite = key == prefix + writing + ".s";
  };
  const auto client = created();
  if (recovers) device.before = [&](std::string_view) { device.failsToRead = false; };
  const bool fails = !recovers && !(unreadable + unwritable).empty();
  noteEvents(*client);
  for (const std::string& step : steps) {
    trace.clear();
    step == "-" ? client->removeIdentity() : client->identify(step.substr(1));
    EXPECT_EQ(stored("userId"), step == "-" ? "none" : step.substr(1));
    EXPECT_THAT(trace, IsEmpty());
    platform.settle();
    EXPECT_EQ(trace, step == "-" ? Texts() : Texts{"IdentificationComplete on main"});
    EXPECT_EQ(fails ? (platform.printer->take(), Texts()) : platform.printer->take(),
              step == "+broken" ? Texts{"Error fetching identified consent: HTTP error 500: down"} : Texts());
  }
  Texts requests;
  for (const std::string& user : requested) requests.push_back("GET cookie-consent/s/identified/" + user);
  EXPECT_EQ(newRequests(), requests);
  for (std::size_t n = 0; n < keys.size(); ++n) EXPECT_EQ(stored(keys[n]), after[n]);
}

const std::string held = R"({"marketing":true,"id":"c"})";
const std::string bare = R"({"marketing":true})";
const std::string kept = R"({"id":"o"})";
const std::string fetched = R"({"statistics":["a"],"id":"k"})";
const Identity identities[] = {
    {"WithoutConsent", {"none", "none", "none"}, {"+a"}, {"a"}, {"none", "none", "a"}},
    {"WithoutConsentAndBack", {"none", "none", "none"}, {"+a", "-"}, {"a"}, {"none", "none", "none"}},
    {"Identify", {held, "none", "none"}, {"+a"}, {"a"}, {bare, held, "a"}},
    {"Twice", {held, "none", "none"}, {"+a", "+a"}, {"a", "a"}, {bare, held, "a"}},
    {"TheSame", {held, "none", "a"}, {"+a"}, {"a?consentId=c"}, {held, "none", "a"}},
    {"Another", {held, kept, "a"}, {"+b"}, {"b"}, {bare, kept, "b"}},
    {"TheSameThenAnother", {held, "none", "a"}, {"+a", "+b"}, {"a?consentId=c", "b"}, {bare, "none", "b"}},
    {"Known", {held, "none", "none"}, {"+known"}, {"known"}, {fetched, held, "known"}},
    {"KnownThenAnother", {held, "none", "none"}, {"+known", "+b"}, {"known", "b"}, {bare, held, "b"}},
    {"Broken", {held, "none", "none"}, {"+broken"}, {"broken"}, {bare, held, "broken"}},
    {"KnownAndBack", {held, "none", "none"}, {"+known", "-"}, {"known"}, {held, "none", "none"}},
    {"BackAndAnother", {held, "none", "none"}, {"+a", "-", "+b"}, {"a", "b"}, {bare, held, "b"}},
    {"Remove", {held, "none", "a"}, {"-"}, {}, {bare, "none", "none"}},
    {"RemoveRestores", {held, kept, "a"}, {"-", "-"}, {}, {"{}", "none", "none"}},
    {"RemoveRestoresOnce", {held, kept, "a"}, {"-"}, {}, {kept, "none", "none"}},
    {"RemoveNobody", {held, "none", "none"}, {"-"}, {}, {bare, "none", "none"}},
    {"UserUnread", {held, kept, "a"}, {"+a"}, {"a"}, {bare, kept, "a"}, "userId"},
    {"UserUnreadAtFirst",
     {held, kept, "a"},
     {"+a"},
     {"a?consentId=c"},
     {held, kept, "a"},
     "userId",
     "",
     true},
    {"ConsentUnreadAtFirst",
     {held, "none", "none"},
     {"+a"},
     {"a"},
     {bare, held, "a"},
     "basicConsent",
     "",
     true},
    {"OriginalUnread", {held, kept, "a"}, {"-", "+b"}, {"b"}, {bare, kept, "b"}, "originalConsent"},
    {"NotRestored", {held, kept, "a"}, {"-", "+b"}, {"b"}, {held, kept, "b"}, "", "basicConsent"},
};
INSTANTIATE_TEST_SUITE_P(Client, IdentityTest, ValuesIn(identities), byName);

TEST_F(ClientTest, GivesNoImplicitConsentForAnIdentity) {
  answer("POST", "cookie-consent/s", 500, "not now");
  answer("GET", "cookie-consent/s/identified/a", 200, "null");
  const auto client = created(R"({"implicitConsent":true})");
  client->identify("a");
  platform.settle();
  EXPECT_THAT(newRequests(), ElementsAre("GET cookie-consent/s/identified/a"));
}

}  // namespace
}  // namespace TalvoConsentSDK
