#include "TalvoConsentSDK/models/FullConsent.h"
#include "TalvoConsentSDK/platform/Spawn.h"

#include "tests/core/ClientTest.h"
#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {

namespace {

std::string document() {
  return bannerDocument(
      customization("buttons:acceptAll,rejectAll,preferences closeButton",
                    "tabs:statistics,marketing,doNotSell buttons:savePreferences,preferences",
                    R"(,"doNotSellLabelText":"Sell","savePreference":"Save","preferencesButton":"Manage")"));
}

// Returns a customization with 100 copies of an item whose texts have 40 KB each, more than 4 MB together. An
// unknown item draws no text and is repeated 40,001 times.
std::string documentWithMany(const std::string& item) {
  const std::string text(40'000, 'x');
  Customization site =
      customization("", "", R"(,"doNotSellURLText":")" + text + R"(","statistics":")" + text + "\"");
  auto& messages = site.messages.bannerMessages;
  messages.title = messages.mainMessage = messages.acceptButton = text;
  site.components->secondaryScreen->resize(item == "unknown" ? 40'001 : 100, components(item).front());
  return bannerDocument(site);
}

const Texts documents{document(), written(catalogue("Marketing:A marketing:B statistics:S")), "{}"};
const Texts paths{"banner-customization/s?lng=en", "cookies/s?lng=en", "cookies/s/configurations"};

class ShowBannerTest : public ClientTest {
 protected:
  ~ShowBannerTest() override {
    for (const auto& window : platform.scene->windows()) window->finishAnimations();
  }

  /// Prepares the replies to each fetch: its wrong replies in turn, then the right one. "500" is a failure.
  void prepare(const std::array<Texts, 3>& wrong = {}) {
    for (std::size_t i = 0; i < 3; ++i) {
      for (const std::string& reply : wrong[i]) answer("GET", paths[i], reply == "500" ? 500 : 200, reply);
      answer("GET", paths[i], 200, documents[i]);
    }
  }

  /// Shows a banner and returns the requests and what was called.
  std::string show(CookiesSDK& client) {
    newRequests();
    const auto recording = [this](const char* what) { return [this, what] { note(what); }; };
    client.showBanner(recording("accepted"), recording("rejected"), recording("managed"),
                      [this](const Error& error) { note((reported = error)->what()); });
    EXPECT_THAT(newRequests(), IsEmpty()) << "showBanner returns before it fetches anything";
    platform.settle();
    return joined(newRequests()) + " " + joined(std::exchange(trace, {}));
  }

  std::shared_ptr<FakeWindow> window() const { return platform.scene->windows().at(0); }

  std::optional<Error> reported;
};

const std::string sameInAll = R"(,"consentDataAnalytics":{"bannerType":"popup","positioning":"bottom",
    "blurred":false,"poweredBy":true},"typeConsent":"explicit","userId":"u","siteId":"s"})";
const std::string fetched = "GET " + joined(paths, "; GET ");

TEST_F(ShowBannerTest, SubmitsAndStoresDecisionsAndCallsTheHost) {
  prepare();
  answer("POST", "cookie-consent/s", 422, "refused");
  for (const char* method : {"POST", "PUT"}) answer(method, "cookie-consent/s", 200, R"({"id":"new"})");
  answer("GET", "cookie-consent/s/identified/u", 200, "null");
  store("userId", "u");
  const auto client = created();
  noteEvents(*client);
  const auto table = tableOf<9>("banner/decisions.txt");
  for (const auto& [before, taps, method, status, given, optedIn, sentId, storedId, called] : table) {
    platform.store->remove(prefix + "basicConsent.s").value();
    store("basicConsent", before);
    EXPECT_EQ(show(*client), fetched + " ") << "each banner fetches everything again";
    if (before == "none") store("basicConsent", R"({"id":"late"})");  // too late: ignored
    for (const std::string& each : split(taps, ';')) EXPECT_TRUE(tap(*window()->controller, each)) << each;
    platform.mainActor->runAll();
    EXPECT_THAT(newRequests(), IsEmpty()) << "requests are not sent on the main actor";
    platform.settle();
    EXPECT_EQ(joined(newRequests()), method.empty() ? "" : method + " cookie-consent/s for u");
    EXPECT_EQ(joined(std::exchange(trace, {})), called) << "and no events are sent";
    const std::string held = before == "none" ? R"({"id":"late"})" : before;
    const std::string values = R"("preferences":)" + given;
    EXPECT_EQ(stored("basicConsent"), storedId == "-" ? held : "{" + values + storedId + optedIn + "}");
    const std::string sent = R"({"status":")" + status +
                             R"(","categories":{"necessary":true,"unclassified":true,)" + values + optedIn +
                             "}" + sentId + sameInAll;
    if (!method.empty()) {
      EXPECT_EQ(canonical(*platform.session->requests().back().body), canonical(sent));
    }
    window()->finishAnimations();
  }
  EXPECT_THAT(platform.printer->take(), IsEmpty());
}

TEST_F(ShowBannerTest, ReportsWhatCannotBeFetchedAndShowsNothing) {
  const auto table = tableOf<3>("banner/failures.txt");
  std::array<Texts, 3> replies{{{}, {}, {documents[2]}}};  // creating the client fetches a configuration
  for (const auto& [path, reply, error] : table) {
    const std::string wrong = reply.starts_with("many") ? documentWithMany(words(reply).back()) : reply;
    for (std::size_t i = 0; i < 3; ++i)
      replies[i].push_back(paths[i].starts_with(path) ? wrong : documents[i]);
  }
  prepare(replies);
  const auto client = created();
  for (const auto& [path, reply, error] : table) EXPECT_EQ(show(*client), fetched + " " + error) << reply;
  const auto* missing = reported ? reported->as<PlatformError>() : nullptr;
  ASSERT_TRUE(missing && missing->domain() == "TalvoConsentSDK" && missing->code() == -5);
  EXPECT_THAT(missing->userInfo(), ElementsAre(Pair("NSLocalizedDescription", missing->what())));
  EXPECT_TRUE(platform.scene->windows().empty() && platform.store->values().empty());
  EXPECT_EQ(show(*client), fetched + " ");
  EXPECT_TRUE(window()->isVisible);
}

// Every way in which a banner ends, told by closures and by a task. Each banner reports one end, and releases
// its closures on the main actor.
TEST_F(ShowBannerTest, EndsInOneWay) {
  prepare({{{"500", "500"}, {}, {}}});
  for (const int status : {422, 422, 200}) answer("POST", "cookie-consent/s", status, R"({"id":"c"})");
  answer("PUT", "cookie-consent/s", 200, R"({"id":"c"})");
  const auto client = created();
  const auto handlers = [this] {
    const std::shared_ptr<void> host(nullptr, [this](void*) { note("released"); });
    const auto recording = [this, host](const char* what) { return [this, host, what] { note(what); }; };
    return BannerHandlers{.onAcceptAll = recording("accepted"),
                          .onRejectAll = recording("rejected"),
                          .onSaved = recording("saved"),
                          .onClosed = recording("closed"),
                          .onReplaced = recording("replaced"),
                          .onNotShown = recording("not shown"),
                          .onError = [this, host](const Error& error) { note(error.what()); },
                          .onManagePreferences = recording("managed"),
                          .onShown = recording("shown")};
  };
  const auto awaitOne = [](CookiesSDK& sdk) -> Task<std::string> {
    const Texts names{"accepted", "rejected", "saved", "closed", "replaced", "not shown"};
    auto banner = sdk.showBanner();
    const BannerOutcome outcome = co_await std::move(banner);
    co_return names.at(static_cast<std::size_t>(outcome));
  };
  for (const auto& [taps, called] : tableOf<2>("banner/ends.txt")) {
    for (const bool isAwaited : {false, true}) {
      SCOPED_TRACE(taps + (isAwaited ? " awaited" : ""));
      endBanner(taps, [&] {
        if (!isAwaited) return client->showBanner(handlers());
        spawn<std::string>(platform.mainActor, awaitOne(*client),
                           [this](const Result<std::string>& end) { note(end ? *end : end.error().what()); });
      });
      Texts expected = split(called, ';');
      if (expected.back() == "no surface") expected = {"not shown"};  // told apart only in C
      if (isAwaited) expected = {expected.back()};
      if (!isAwaited) expected.push_back("released");
      for (std::string& each : expected) each += " on main";
      EXPECT_EQ(std::exchange(trace, {}), expected);
    }
  }
}

struct Throwing : FakeApplication, Localization {
  OperatingSystemVersion operatingSystemVersion() const override { throw WithoutText(); }
  void open(const URL&) override { throw WithoutText(); }
  bool reducesMotion() const override { throw WithoutText(); }
  std::string text(std::string_view) override { throw WithoutText(); }
};

TEST_F(ShowBannerTest, ContinuesIfTheHostsSeamsThrow) {
  prepare();
  answer("POST", "cookie-consent/s", 200, R"({"id":"new"})");
  const auto throwing = std::make_shared<Throwing>();
  throwing->scenes = platform.application->scenes;
  replaceSeam(&Platform::localization, throwing);
  replaceSeam(&Platform::application, throwing);
  EXPECT_EQ(show(*created()), fetched + " ");
  for (const char* each : {"button Manage", "button Save"}) EXPECT_TRUE(tap(*window()->controller, each));
  platform.settle();
  EXPECT_THAT(window()->fades, ElementsAre(300ms, 300ms)) << "fades in, then out";
  EXPECT_THAT(trace, ElementsAre("managed on main"));
}

TEST_F(ShowBannerTest, ReadsTheInstanceWhenCalledAndNeedsNoClosures) {
  prepare({{{}, {}, Texts(2, R"({"returnSecondaryView":true})")}});
  answer("GET", "banner-customization/s?lng=de", 500, "");
  answer("PUT", "cookie-consent/s", 200, R"({"id":"c"})");
  const auto client = created();
  client->showBanner({}, {}, {}, {});
  client->setLanguage("de");
  store("basicConsent", "{}");  // early enough: the task has not read it yet
  platform.settle();
  // The banner starts with the second screen if there is a consent and the site asks for it.
  for (const char* each : {"button Manage", "button Save"}) EXPECT_TRUE(tap(*window()->controller, each));
  platform.settle();
  EXPECT_EQ(newRequests().back(), "PUT cookie-consent/s");
}

}  // namespace
}  // namespace TalvoConsentSDK
