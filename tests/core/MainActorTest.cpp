#include <chrono>
#include <thread>

#include "adapters/threads/BackgroundThread.h"

#include "tests/core/ClientTest.h"
#include "tests/support/Repetitions.h"
#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {
namespace {

// A fifth of what a slow device and a slow network take. A task that waited for either would take at least
// `opening`; one that does not takes a few milliseconds, and longer only where everything is slow.
constexpr auto opening = 400ms;
constexpr auto answering = 1s;
const auto longestTask = 50ms * repetitions("TALVO_TEST_SLOWNESS", 1);

// A store whose first reading has to open it.
class SlowStore : public InMemoryUserDefaults {
 public:
  Result<std::optional<Data>> data(std::string_view key) override {
    std::call_once(opened_, [] { std::this_thread::sleep_for(opening); });
    return InMemoryUserDefaults::data(key);
  }

 private:
  std::once_flag opened_;
};

class SlowSession : public URLSession {
 public:
  explicit SlowSession(std::shared_ptr<URLSession> inner) : inner_(std::move(inner)) {}

  void run(URLRequest request, Completion completion) override {
    thread_.post([this, due = std::chrono::steady_clock::now() + answering, request, completion] {
      std::this_thread::sleep_until(due);
      inner_->run(request, completion);
    });
  }

 private:
  const std::shared_ptr<URLSession> inner_;
  BackgroundThread thread_;
};

template <class Work>
auto duration(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::steady_clock::now() - start;
}

TEST_F(ClientTest, WaitsForTheStoreAtCreationOnlyAndNeverForTheNetwork) {
  const auto store = std::make_shared<SlowStore>();
  store->set(prefix + "userId.s", "u"s).value();
  for (const char* path : {"cookies/s/configurations", "cookies/s?lng=de", "cookie-consent/s/identified/u",
                           "cookie-consent/s/identified/v"}) {
    answer("GET", path, 200, "{}");
  }
  BannerCustomization document;
  document.customization = customization("buttons:acceptAll", "tabs:marketing");
  answer("GET", "banner-customization/s?lng=de", 200, written(document));
  answer("POST", "cookie-consent/s", 200, R"({"id":"new"})");

  Platform installed = Platform::current();
  installed.userDefaults = store;
  installed.urlSession = std::make_shared<SlowSession>(platform.session);
  installed.background = std::make_shared<BackgroundThread>();
  installed.callbacks = nullptr;
  Platform::install(installed);

  std::shared_ptr<CookiesSDK> client;
  EXPECT_GE(duration([&] { client = CookiesSDK::createInstance("https://service.example/", "s"); }), opening);
  std::atomic<bool> isSubmitted = false;
  const std::function<void()> calls[] = {
      [&] { client->setLanguage("de"); },
      [&] { client->getConsent(); },
      [&] { client->submitConsent(BasicConsent::acceptAll(), [&](const auto&) { isSubmitted = true; }); },
      [&] { client->identify("v"); },
      [&] {
        client->showBanner([] {}, [] {}, [] {}, [](const Error& error) { ADD_FAILURE() << error.what(); });
      },
      [&] { client->removeIdentity(); },
  };
  for (std::size_t i = 0; i < std::size(calls); ++i) EXPECT_LT(duration(calls[i]), longestTask) << i;

  const auto patience = std::chrono::steady_clock::now() + 30s;
  while ((!isSubmitted || platform.scene->windows().empty()) && std::chrono::steady_clock::now() < patience) {
    platform.sessionThread->runAll();
    EXPECT_LT(duration([&] { platform.mainActor->runAll(); }), longestTask);
    std::this_thread::sleep_for(1ms);
  }
  EXPECT_TRUE(isSubmitted);
  EXPECT_EQ(platform.scene->windows().size(), 1u);
  for (const auto& window : platform.scene->windows()) window->finishAnimations();
}

}  // namespace
}  // namespace TalvoConsentSDK
