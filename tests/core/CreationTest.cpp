#include <thread>

#include "tests/core/ClientTest.h"

namespace TalvoConsentSDK {

namespace {

const std::string configurations = "GET cookies/s/configurations";

TEST_F(ClientTest, IsOneInstanceForTheWholeProcess) {
  EXPECT_EQ(CookiesSDK::getInstance(), nullptr);
  answer("GET", "cookies/s/configurations", 200, "{}");
  std::vector<std::shared_ptr<CookiesSDK>> instances(4);
  std::vector<std::thread> threads;
  for (auto& instance : instances) {
    threads.emplace_back([&] { instance = CookiesSDK::createInstance("https://service.example", "s"); });
  }
  for (auto& thread : threads) thread.join();
  instances.push_back(CookiesSDK::createInstance("https://elsewhere.example", "other"));
  EXPECT_THAT(instances, Each(CookiesSDK::getInstance()));
  platform.mainActor->runAll();
  platform.background->runAll();
  platform.sessionThread->runAll();
  EXPECT_EQ(platform.background->runAll(), 1u) << "replies are decoded in the background";
  platform.settle();
  EXPECT_THAT(newRequests(), ElementsAre(configurations));
}

// A tracker that must start early asks the gate before the main loop runs.
TEST_F(ClientTest, KnowsTheStoredConsentOnceCreated) {
  store("basicConsent", R"({"statistics":true})");
  EXPECT_TRUE(create()->gate().isAllowed(ConsentCategory::statistics));
  platform.settle();
}

TEST_F(ClientTest, SendsTheImplicitPayload) {
  answer("POST", "cookie-consent/s", 200, R"({"id":"n"})");
  create(R"({"implicitConsent":true})");
  platform.settle();
  EXPECT_EQ(canonical(*platform.session->requests().back().body),
            canonical(R"({"status":"accepted","categories":{"necessary":true,"unclassified":true,
                          "preferences":true,"marketing":true,"statistics":true},"consentDataAnalytics":{},
                          "typeConsent":"implicit","siteId":"s"})"));
}

TEST_F(ClientTest, PrefetchesDocumentsForANewLanguage) {
  for (const char* language : {"de", "en"}) {
    answer("GET", "banner-customization/s?lng="s + language, 200, R"({"bannerType":"x"})");
    answer("GET", "cookies/s?lng="s + language, 200, language == "de"s ? "{}" : "[]");
  }
  answer("GET", "banner-customization/s?lng=fr", 500, "down");
  store("basicConsent", "{}");
  const auto client = created();
  for (const auto& [language, requests, reported] : tableOf<3>("languages.txt")) {
    client->setLanguage(language);
    EXPECT_THAT(newRequests(), IsEmpty());
    platform.settle();
    EXPECT_EQ(joined(newRequests()), requests) << language;
    EXPECT_EQ(joined(platform.printer->take()), reported) << language;
  }
  EXPECT_TRUE(platform.store->values().size() == 1u && stored("basicConsent") == "{}");
}

// Clients of a host that installs its platform late or never.
TEST(UnboundClientTest, SaysWhatIsMissingAndStartsOnceInstalled) {
  ::testing::internal::CaptureStdout();
  const auto client = CookiesSDK::createInstance("https://service.example", "s");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "⚠️ No platform is installed; call Platform::install\n");
  const auto topics = TalvoConsent::getInstance("", "", std::nullopt, "https://service.example");
  Texts ends;
  const auto use = [&] {
    client->submitConsent(BasicConsent(), [&](const auto& reply) { ends.push_back(failure(reply)); });
    topics->submitConsent("", {}, [&](const auto& reply) { ends.push_back(failure(reply)); });
    client->showBanner({}, {}, {}, [&](const Error& error) { ends.push_back(error.what()); });
  };
  ::testing::internal::CaptureStdout();
  use();
  EXPECT_FALSE(client->getConsent());
  EXPECT_THAT(::testing::internal::GetCapturedStdout(), EndsWith("call Platform::install first\n"));
  EXPECT_THAT(ends,
              ::testing::AllOf(SizeIs(3),
                               Each(EndsWith("No URL session is installed; call Platform::install first"))));

  MemoryPlatform platform;
  const std::string root = "https://service.example/public/";
  platform.store->set("com.talvo.consent.basicConsent.s", Data(R"({"id":"c"})")).value();
  platform.store->set("com.talvo.consent.userId.s", "u"s).value();
  platform.session->answer("GET", root + "cookies/s/configurations", 200, R"({"implicitConsent":true})");
  platform.session->answer("GET", root + "cookie-consent/s/identified/u?consentId=c", 200, "null");
  platform.session->answer("PUT", root + "cookie-consent/s", 200, R"({"id":"n"})");
  platform.session->answer("POST", root + "consent", 200, "{}");
  platform.session->answer("GET", root + "banner-customization/s?lng=en", 500, "down");
  platform.install();
  MemoryPlatform().install();  // too late: the clients keep the first platform
  platform.settle();
  EXPECT_EQ(platform.session->requests().size(), 2u) << "the configuration and the user's consent";
  EXPECT_EQ(client->getConsent()->id, "c");
  ends.clear();
  use();
  platform.settle();
  EXPECT_THAT(ends, ::testing::UnorderedElementsAre("", "", "HTTP error 500: down"));
  const auto sent = platform.session->requests();
  EXPECT_TRUE(std::ranges::any_of(sent, [](const URLRequest& each) {
    return each.method == "PUT" && each.body->find(R"("userId":"u")") != std::string::npos;
  }));
}

// Creating a client calls the host's store and printer, which may ask for the client meanwhile.
TEST_F(ClientTest, IsVisibleToOtherThreadsOnceCreated) {
  std::thread other;
  std::shared_ptr<CookiesSDK> seenElsewhere;
  std::atomic<bool> hasBegun = false;
  platform.userDefaults->before = [&](std::string_view) {
    EXPECT_FALSE(CookiesSDK::getInstance() || CookiesSDK::createInstance("https://other.example", "o"));
    if (other.joinable()) return;
    other = std::thread([&] {
      hasBegun = true;
      seenElsewhere = CookiesSDK::getInstance();
    });
    while (!hasBegun) std::this_thread::yield();
  };
  const auto client = create();
  other.join();
  EXPECT_TRUE(client && seenElsewhere == client);
  platform.userDefaults->before = [](auto) {};
  platform.settle();
}

TEST_F(ClientTest, WorksWithoutSomeSeams) {
  Platform nothing;
  for (const auto member : {&Platform::mainActor, &Platform::background}) nothing.*member = nullptr;
  nothing.urlSession = nullptr;
  nothing.userDefaults = nullptr;
  nothing.application = nullptr;
  nothing.localization = nullptr;
  nothing.printer = nullptr;
  Platform::install(nothing);
  ::testing::internal::CaptureStdout();
  const auto client = CookiesSDK::createInstance("https://service.example/", "s");
  int ends = 0;
  client->submitConsent({}, [&](const auto& result) { ends += !result; });
  client->showBanner({}, {}, {}, [&](const Error&) { ++ends; });
  client->identify("u");
  client->removeIdentity();
  EXPECT_EQ(ends, 2);
  EXPECT_THAT(::testing::internal::GetCapturedStdout(), HasSubstr("No user-defaults store is installed"));
}

}  // namespace
}  // namespace TalvoConsentSDK
