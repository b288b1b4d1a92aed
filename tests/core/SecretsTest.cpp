#include "tests/core/ClientTest.h"

namespace TalvoConsentSDK {

namespace {

class Answering : public URLSession {
 public:
  void run(URLRequest, Completion completion) override { completion(outcome); }

  Result<URLResponse> outcome = PlatformError("net", 1, "offline");
};

// No printed line and no error contains the user's identifier, whatever fails.
TEST(SecretsTest, PrintsAndReportsNoSecrets) {
  MemoryPlatform fakes;
  fakes.install();
  const auto session = std::make_shared<Answering>();
  replaceSeam(&Platform::urlSession, session);
  const auto client = CookiesSDK::createInstance("https://service.example/", "s");
  const auto topics = TalvoConsent::getInstance("t", "p", "secret-token", "https://service.example/");
  Texts reported;
  const auto note = [&](const auto& result) { reported.push_back(failure(result)); };
  std::vector<Result<URLResponse>> outcomes{session->outcome};
  for (const auto& [status, body, typed, untyped] : tableOf<4>("network/replies.txt"))
    outcomes.emplace_back(replyOf(status, body));
  for (const auto& outcome : outcomes) {
    session->outcome = outcome;
    for (const bool storeFails : {false, true}) {
      fakes.userDefaults->failsToRead = fakes.userDefaults->failsToWrite = storeFails;
      // The second cannot be part of a URL, and the third cannot be encoded as JSON.
      for (const std::string user : {"secret", "secret user", "secret\xFF"}) {
        client->identify(user);
        fakes.settle();
        client->submitConsent(BasicConsent::acceptAll(), note);
        client->showBanner({}, {}, {}, [&](const Error& error) { reported.push_back(error.what()); });
        topics->submitConsent(user + "@x.example", {{1, true}}, note);
        fakes.settle();
        client->removeIdentity();
        fakes.settle();
      }
    }
  }
  const Texts printed = fakes.printer->take();
  EXPECT_GT(reported.size(), 100u);
  EXPECT_GT(printed.size(), 100u);
  reported.insert(reported.end(), printed.begin(), printed.end());
  EXPECT_THAT(reported, Each(::testing::Not(HasSubstr("secret"))));
}

}  // namespace
}  // namespace TalvoConsentSDK
