#include <thread>

#include "tests/core/ClientTest.h"

namespace TalvoConsentSDK {
namespace {

const std::string configurations = "GET cookies/s/configurations";
const std::string implicitly = R"({"implicitConsent":true})";

TEST_F(ClientTest, IsOneInstanceForEver) {
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
  EXPECT_EQ(platform.background->runAll(), 1u) << "replies are decoded off the main thread";
  platform.settle();
  EXPECT_THAT(newRequests(), ElementsAre(configurations));
}

TEST_F(ClientTest, SendsTheImplicitPayloadAndReportsItsFailure) {
  answer("POST", "cookie-consent/s", 503, "busy");
  create(implicitly);
  platform.settle();
  EXPECT_EQ(canonical(*platform.session->requests().back().body),
            canonical(R"({"status":"accepted","categories":{"necessary":true,"unclassified":true,
                          "preferences":true,"marketing":true,"statistics":true},"consentDataAnalytics":{},
                          "typeConsent":"implicit","siteId":"s"})"));
  EXPECT_EQ(stored("basicConsent"), "none");
  EXPECT_THAT(platform.printer->take(),
              ElementsAre("Failed to submit implicit consent: HTTP error 503: busy"));
}

// A printer is the host's: it may ask for the client, and throw.
struct HostilePrinter : CapturingPrinter {
  void print(std::string_view line) override {
    CapturingPrinter::print(line);
    CookiesSDK::getInstance();
    throw 1;
  }
};

TEST_F(ClientTest, LivesWithAStoreThatFailsAndAPrinterThatThrows) {
  platform.printer = std::make_shared<HostilePrinter>();
  platform.install();
  platform.userDefaults->failsToRead = platform.userDefaults->failsToWrite = true;
  const auto client = create(implicitly);
  platform.settle();
  Texts lines;
  for (const char* what : {"consent", "user identifier", "original consent"}) {
    lines.push_back("⚠️ Failed to load "s + what + " from UserDefaults: The store is out of order");
  }
  lines.insert(lines.end(), {lines[0], lines[1], lines[2]});  // at creation, and once the site is known
  EXPECT_EQ(platform.printer->take(), lines);
  EXPECT_THAT(newRequests(), ElementsAre(configurations)) << "nothing is given that might have been refused";
  EXPECT_FALSE(client->getConsent());
}

TEST_F(ClientTest, WarmsUpForANewLanguage) {
  for (const char* language : {"de", "en"}) {
    answer("GET", "banner-customization/s?lng="s + language, 200, R"({"bannerType":"x"})");
    answer("GET", "cookies/s?lng="s + language, 200, language == "de"s ? "{}" : "[]");
  }
  answer("GET", "banner-customization/s?lng=fr", 500, "down");
  const std::string failure = "Failed to pre-fetch data with new language: ";
  const std::tuple<std::string, Texts, Texts> changes[] = {
      {"en", {}, {}},
      {"de", {"GET banner-customization/s?lng=de", "GET cookies/s?lng=de"}, {}},
      {"de", {}, {}},
      {"fr", {"GET banner-customization/s?lng=fr"}, {failure + "HTTP error 500: down"}},
      {"en",
       {"GET banner-customization/s?lng=en", "GET cookies/s?lng=en"},
       {failure + "Failed to decode response: Type mismatch: expected an object, found an array"}},
      {"a b", {}, {failure + "Invalid URL"}},
  };
  store("basicConsent", "{}");
  const auto client = created();
  for (const auto& [language, requests, lines] : changes) {
    client->setLanguage(language);
    EXPECT_THAT(newRequests(), IsEmpty());
    platform.settle();
    EXPECT_EQ(newRequests(), requests) << language;
    EXPECT_EQ(platform.printer->take(), lines) << language;
  }
  EXPECT_TRUE(platform.store->values().size() == 1u && stored("basicConsent") == "{}");
}

}  // namespace
}  // namespace TalvoConsentSDK
