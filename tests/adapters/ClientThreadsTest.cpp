// Calls every operation of both clients from many threads at once, with the real session, store and threads.

#include <atomic>
#include <thread>

#include "TalvoConsentSDK/TalvoConsentSDK.h"

#include "adapters/posix/PosixPlatform.h"

#include "testing/LoopbackServer.h"
#include "testing/fakes/CapturingPrinter.h"
#include "testing/fakes/FakeApplication.h"
#include "tests/support/Repetitions.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK {
namespace {

class CountingScene : public FakeScene {
 public:
  std::shared_ptr<Window> makeWindow() override {
    ++banners;
    return FakeScene::makeWindow();
  }

  int banners = 0;
};

TEST(ClientThreads, SixteenThreadsUseEverythingAtOnce) {
  constexpr int threadCount = 16;
  const int rounds = repetitions("TALVO_TEST_ROUNDS", 5);
  const int submissions = threadCount * rounds;
  std::atomic<int> received = 0;
  const std::string banner = contentOf(TALVO_TEST_DATA "/golden/BannerCustomization/normal.json");
  LoopbackServer server([&](const LoopbackServer::Request& request, LoopbackServer::Connection& connection) {
    const bool isTopics = request.body.find("requesterId") != std::string::npos;
    if (request.method != "GET" && !isTopics) ++received;
    const bool isBanner = request.target.find("banner") != std::string::npos;
    connection.reply(200, isBanner ? banner : request.method == "GET" ? "{}" : R"({"id":"c"})");
  });
  const TemporaryFolder folder;
  const auto mainQueue = std::make_shared<MainQueue>();
  const auto application = std::make_shared<FakeApplication>();
  const auto scene = std::make_shared<CountingScene>();
  application->scenes = {scene};
  const auto printer = std::make_shared<CapturingPrinter>();
  Platform platform = makePosixPlatform(mainQueue, folder.path / "consent.sqlite");
  platform.application = application;
  platform.printer = printer;
  Platform::install(platform);

  std::atomic<int> submitted = 0, answered = 0, heard = 0;
  bool isRunning = false;  // what the gate below runs; on the main thread only
  Subscription gate;
  const auto work = [&, url = server.url("")](int number) {
    const auto client = CookiesSDK::createInstance(url, "s");
    EXPECT_EQ(CookiesSDK::getInstance(), client);
    const auto topics = TalvoConsent::getInstance("t", "p", std::nullopt, url);
    for (int round = 0; round < rounds; ++round) {
      const auto listener = std::make_shared<ConsentEventClosureCallback>(
          [&, client] {
            ++heard;
            client->removeEventListener(ConsentEvent::rejectAll);
            if (heard % 3 == 0) throw std::runtime_error("listener");
          },
          [] {});
      client->addEventListener(ConsentEvent::consentSent, listener);
      client->addEventListener(ConsentEvent::rejectAll, listener);
      client->submitConsent(number % 2 ? BasicConsent::acceptAll() : BasicConsent(),
                            [&, client](const Result<ConsentResponse>& outcome) {
                              if (outcome) ++submitted;
                              client->getConsent();
                              if (++answered % 2 == 0) throw std::runtime_error("completion");
                            });
      topics->submitConsent("me@x.example", {{1, true}}, [&](const Result<JSONObject>& outcome) {
        EXPECT_TRUE(outcome);
        ++answered;
      });
      client->setLanguage(round % 2 ? "de" : "en");
      client->showBanner([] {}, [] {}, [] {}, [](const Error& error) { ADD_FAILURE() << error.what(); });
      if (number == 0) client->removeAllEventListeners();
      const Subscription brief = client->gate().on(ConsentCategory::marketing, [] {}, [] {});
      const Subscription listening = client->addEventListener(ConsentEvent::acceptAll, [&] { ++heard; });
      const Subscription observing = client->observeConsent([&](const auto&) { ++heard; });
      if (number == 0 && round == 0) {
        gate = client->gate().on(
            ConsentCategory::marketing, [&] { EXPECT_FALSE(std::exchange(isRunning, true)); },
            [&] { EXPECT_TRUE(std::exchange(isRunning, false)); });
      }
      if (number == 2) client->eraseConsent();
      client->gate().isAllowed(ConsentCategory::marketing, "vendor");
      if (number == 1) round % 2 ? client->removeIdentity() : client->identify("u");
      client->getConsent();
    }
  };
  std::vector<std::thread> threads;
  for (int number = 0; number < threadCount; ++number) threads.emplace_back(work, number);
  const auto patience = std::chrono::steady_clock::now() + 60s;
  while ((answered < 2 * submissions || scene->banners < submissions) &&
         std::chrono::steady_clock::now() < patience) {
    mainQueue->wait(1ms);
    mainQueue->drain();
  }
  for (const auto& window : scene->windows()) window->finishAnimations();
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(answered, 2 * submissions) << "each is answered once";
  EXPECT_EQ(submitted, submissions) << ::testing::PrintToString(printer->take());
  EXPECT_EQ(received, submissions);
  EXPECT_EQ(scene->banners, submissions);
  const auto stored = CookiesSDK::getInstance()->getConsent();
  mainQueue->drain();
  EXPECT_EQ(isRunning, stored && stored->marketing && stored->marketing->isAll());
}

}  // namespace
}  // namespace TalvoConsentSDK
