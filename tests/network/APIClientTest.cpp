#include "TalvoConsentSDK/network/APIClient.h"
#include "TalvoConsentSDK/network/URLSessionHTTPClient.h"
#include "TalvoConsentSDK/platform/Spawn.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {
namespace {

struct Endpoint {
  std::string method;
  std::string path;
  std::string reply;
  std::function<Task<void>(const APIClient&)> call;
};

template <class Reply>
Task<void> done(Task<Reply> request) {
  (void)co_await std::move(request);
}

const FullConsent payload = parsed<FullConsent>(R"({"status":"partial"})");
const Endpoint endpoints[] = {
    {"GET", "/public/cookies/s-1/configurations", "{}",
     [](auto& api) { return done(api.fetchConfiguration()); }},
    {"GET", "/public/banner-customization/s-1?lng=pt-BR", R"({"bannerType":"popup"})",
     [](auto& api) { return done(api.fetchBannerCustomization("pt-BR")); }},
    {"GET", "/public/cookies/s-1?lng=de", "{}", [](auto& api) { return done(api.fetchServices("de")); }},
    {"POST", "/public/cookie-consent/s-1", R"({"id":"c"})",
     [](auto& api) { return done(api.createConsent(payload)); }},
    {"PUT", "/public/cookie-consent/s-1", R"({"id":"c"})",
     [](auto& api) { return done(api.updateConsent(payload)); }},
    {"GET", "/public/cookie-consent/s-1/identified/me@x.example", "null",
     [](auto& api) { return done(api.fetchIdentifiedConsent("me@x.example", std::nullopt)); }},
    {"GET", "/public/cookie-consent/s-1/identified/u%20v?consentId=a/b?c", "{}",
     [](auto& api) { return done(api.fetchIdentifiedConsent("u%20v", "a/b?c")); }},
    {"GET", "/public/cookie-consent/s-1/identified/?consentId=", "{}",
     [](auto& api) { return done(api.fetchIdentifiedConsent("", "")); }},
};

class APIClientTest : public ::testing::Test {
 protected:
  std::string end(const std::string& baseUrl, const std::string& siteId, const Endpoint& endpoint) {
    const APIClient api(baseUrl, siteId, std::make_shared<URLSessionHTTPClient>(platform.session));
    std::string text = "no end";
    spawn<void>(nullptr, endpoint.call(api), [&](const Result<void>& result) { text = failure(result); });
    platform.settle();
    return text;
  }

  MemoryPlatform platform;
};

TEST_F(APIClientTest, AddressesEveryEndpoint) {
  const std::string base = "https://service.example:8443/v1";
  for (const Endpoint& endpoint : endpoints) {
    for (const auto& [given, root] : {std::pair(base, base), {base + "/", base}, {base + "//", base + "/"}}) {
      platform.session->answer(endpoint.method, root + endpoint.path, 200, endpoint.reply);
      EXPECT_EQ(end(given, "s-1", endpoint), "") << endpoint.path;
      const URLRequest sent = platform.session->requests().back();
      EXPECT_EQ(sent.headers.at("X-Client-Name"), "mobile-consent-sdk-ios");
      EXPECT_EQ(sent.headers.size(), sent.body ? 2u : 1u);
      EXPECT_EQ(sent.body.value_or("none"), endpoint.method == "GET" ? "none" : R"({"status":"partial"})");
    }
  }
}

TEST_F(APIClientTest, SendsNothingToWhatIsNoURL) {
  for (const Endpoint& endpoint : endpoints) {
    for (const char* baseUrl : {"", "/", "service.example:65536", "https://a.b:65536", "https://a .b"}) {
      EXPECT_EQ(end(baseUrl, "s-1", endpoint), "Invalid URL") << baseUrl;
    }
    for (const char* siteId : {"my site", "{site}", "50%", "sit\xC3\xA9"}) {
      EXPECT_EQ(end("https://service.example", siteId, endpoint), "Invalid URL") << siteId;
    }
  }
  EXPECT_THAT(platform.session->requests(), IsEmpty());
}

}  // namespace
}  // namespace TalvoConsentSDK
