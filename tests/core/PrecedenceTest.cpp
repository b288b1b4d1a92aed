// Checks which choice is kept when each source of a consent meets each kind of stored consent, with a network
// and a store that work or fail. The table is tests/golden/precedence.txt, whose header explains the columns.

#include <set>

#include "TalvoConsentSDK/platform/Spawn.h"

#include "tests/core/ClientTest.h"
#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {

namespace {

const std::string document = bannerDocument(
    customization("buttons:acceptAll,rejectAll,preferences", "tabs:marketing buttons:savePreferences",
                  R"(,"savePreference":"Save","preferencesButton":"Manage")"));

Task<void> awaited(Task<ConsentResponse> submission) {
  co_await std::move(submission);
}

class PrecedenceTest : public ClientTest, public ::testing::WithParamInterface<std::array<std::string, 6>> {
 protected:
  PrecedenceTest() {
    for (const std::string query : {"", "?consentId=c", "?consentId=o"}) {
      const std::string path = "cookie-consent/s/identified/";
      answer("GET", path + "new" + query, 200, "null");
      answer("GET", path + "known" + query, 200, R"({"id":"k","categories":{"statistics":["a"]}})");
      answer("GET", path + "broken" + query, 500, "down");
    }
    platform.userDefaults->before = [this](std::string_view key) {
      if (untilInside > 0 && --untilInside == 0) take(inside);
      const auto fails = [&](const std::string& which) {
        return which == "all" || key == prefix + which + ".s";
      };
      const int read = key == prefix + "basicConsent.s" ? ++reads : 0;
      platform.userDefaults->failsToRead = fails(unreadable) || (read > 0 && read == failingRead);
      platform.userDefaults->failsToWrite = fails(unwritable);
    };
    answer("GET", "banner-customization/s?lng=en", 200, document);
    answer("GET", "cookies/s?lng=en", 200, written(catalogue("marketing:A,B")));
  }

  void take(const std::string& step) {
    const std::string verb = words(step).front(), object = words(step).back();
    if (verb == "create") {
      const std::string site = object == "implicit" ? R"({"implicitConsent":true})"
                               : object == "plain"  ? "{}"
                                                    : object;
      platform.session->answer("GET", root + "cookies/s/configurations", 200, site);
      client = CookiesSDK::createInstance("https://service.example/", "s");
      EXPECT_THAT(newRequests(), IsEmpty()) << "sent before the call returned";
      noteEvents(*client);
      for (const auto& [name, category, vendor] : gated) gates.push_back(watched(name, category, vendor));
    }
    if (verb == "erase") note(client->eraseConsent() ? "erased" : "not erased");
    if (verb == "identify") client->identify(object);
    if (verb == "removeIdentity") client->removeIdentity();
    if (verb == "submit")
      client->submitConsent(parsed<BasicConsent>(object),
                            [this](const auto& r) { note(r ? "sent" : failure(r)); });
    if (verb == "await")
      spawn<void>(platform.mainActor, awaited(client->submitConsent(parsed<BasicConsent>(object))),
                  [this](const auto& end) { note(end ? "sent" : failure(end)); });
    if (verb == "consent") note(textOf(client->getConsent()));
    if (verb == "observe")
      gates.push_back(client->observeConsent([this](const std::optional<BasicConsent>& now) {
        note(textOf(now));
        client->getConsent();  // may notice the next change
      }));
    if (verb == "gates") {
      const std::string open = joined(Texts(checkedGates().begin(), running.end()), ", ");
      note("runs " + (open.empty() ? "nothing" : open));
    }
    if (verb == "show" || (verb == "tap" && platform.scene->windows().empty())) {
      client->showBanner([this] { note("accepted"); }, [this] { note("rejected"); },
                         [this] { note("saved"); }, [this](const Error& error) { note(error.what()); });
      platform.settle();
    }
    if (verb == "tap") {
      HostingController& banner = *platform.scene->windows().at(0)->controller;
      if (object == "Save") tap(banner, "button Manage") && tap(banner, "switch");
      EXPECT_TRUE(tap(banner, "button " + object));
    }
    if (verb == "answer")
      for (const char* method : {"POST", "PUT"})
        answer(method, "cookie-consent/s", std::stoi(object),
               object == "200"   ? R"({"id":"n"})"
               : object == "201" ? "{}"
                                 : "down");
    if (verb == "unreadable") unreadable = object;
    if (verb == "unread") failingRead = std::stoi(object);
    if (verb == "unwritable") unwritable = object;
    if (verb == "durable") platform.userDefaults->failsToSynchronize = object == "no";
    if (verb == "synchronizations") note(std::to_string(platform.store->synchronizations()));
    if (verb == "inside") {
      untilInside = std::stoi(words(step).at(1));
      inside = step.substr(step.find(':') + 2);
    }
    if (verb == "stored") store("basicConsent", object);
    if (verb == "gone") platform.store->remove(prefix + object + ".s").value();
    if (verb == "until")  // runs jobs until a request with this method has been sent
      while (newRequests().empty() || !platform.session->requests().back().method.starts_with(object))
        if (platform.mainActor->runAll() + platform.background->runAll() == 0)
          platform.sessionThread->runAll();
    if (verb == "throw") throws = true;
    if (verb == "settle") platform.settle();
  }

  static std::string textOf(const std::optional<BasicConsent>& consent) {
    return consent ? written(*consent) : "none";
  }

  // Registers a gate that keeps `name` in `running` while it is open.
  Subscription watched(const std::string& name, ConsentCategory category, const std::string& vendor) {
    const auto start = [this, name] { EXPECT_TRUE(running.insert(name).second) << name << " started twice"; };
    const auto stop = [this, name] { EXPECT_EQ(running.erase(name), 1U) << name << " stopped twice"; };
    return vendor.empty() ? client->gate().on(category, start, stop)
                          : client->gate().on(category, vendor, start, stop);
  }

  // The names of the gates that are open, which must be those that the client reports as allowed.
  const std::set<std::string>& checkedGates() {
    platform.mainActor->runAll();
    for (const auto& [name, category, vendor] : gated) {
      const ConsentGate gate = client->gate();
      const bool isAllowed = vendor.empty() ? gate.isAllowed(category) : gate.isAllowed(category, vendor);
      EXPECT_EQ(running.contains(name), isAllowed) << name;
      EXPECT_TRUE(gate.isAllowed(ConsentCategory::necessary));
    }
    return running;
  }

  // The names of the gates that are open under the consent that the client returns.
  std::set<std::string> open() const {
    std::set<std::string> names;
    const auto consent = client->getConsent().value_or(BasicConsent());
    for (const auto& [name, category, vendor] : gated) {
      const auto& value = category == ConsentCategory::preferences  ? consent.preferences
                          : category == ConsentCategory::statistics ? consent.statistics
                                                                    : consent.marketing;
      const bool isListed = value && std::ranges::count(value->items(), vendor) > 0;
      if (value && consent.optedIn != false && (value->isAll() || isListed)) names.insert(name);
    }
    return names;
  }

  struct Gated {
    std::string name;
    ConsentCategory category;
    std::string vendor;
  };
  const std::vector<Gated> gated{{"preferences", ConsentCategory::preferences, ""},
                                 {"statistics", ConsentCategory::statistics, ""},
                                 {"statistics of a", ConsentCategory::statistics, "a"},
                                 {"marketing", ConsentCategory::marketing, ""},
                                 {"marketing of A", ConsentCategory::marketing, "A"}};
  std::vector<Subscription> gates;
  std::set<std::string> running;

  std::shared_ptr<CookiesSDK> client;
  std::string unreadable, unwritable;  // the failing key, "all" or "nothing"
  int reads = 0, failingRead = 0;      // reads of the consent, counted from 1
  std::string inside;                  // a step to take inside an operation of the store
  int untilInside = 0;                 // the number of operations until then, or 0
};

TEST_P(PrecedenceTest, KeepsTheRightChoice) {
  const auto& [name, before, steps, requested, after, reported] = GetParam();
  const Texts keys{"basicConsent", "originalConsent", "userId"};
  const auto state = [&] {
    Texts values;
    for (const std::string& key : keys) values.push_back(stored(key));
    return joined(values);
  };
  const Texts values = split(before, ';');
  for (std::size_t i = 0; i < values.size(); ++i) store(keys[i], values[i]);
  for (const std::string& step : split(steps, ';')) take(step);
  EXPECT_EQ(state(), after);
  Texts requests = newRequests();
  std::erase_if(requests, [](const std::string& each) {
    return each.starts_with("GET ") && each.find("identified") == std::string::npos;
  });
  EXPECT_EQ(joined(requests), requested);
  for (const std::string& line : platform.printer->take()) {
    trace.push_back(line.substr(0, line.find(" UserDefaults: ")));
    if (trace.back().starts_with("⚠️ ")) trace.back().erase(0, std::string("⚠️ ").size());
  }
  EXPECT_EQ(joined(trace), reported);

  unreadable.clear();
  failingRead = 0;
  const std::set<std::string> allowed = open();  // reads what other processes have stored
  EXPECT_EQ(checkedGates(), allowed) << "what runs is what is stored";
}

INSTANTIATE_TEST_SUITE_P(Client, PrecedenceTest, ValuesIn(tableOf<6>("precedence.txt")), byFirstCell);

}  // namespace
}  // namespace TalvoConsentSDK
