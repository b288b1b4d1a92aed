#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <thread>

#include "adapters/threads/BackgroundThread.h"

#include "tests/core/ClientTest.h"
#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

constexpr auto opening = 400ms;

// A store whose first read is slow, because it has to open the store.
class SlowStore : public InMemoryUserDefaults {
 public:
  Result<std::optional<Data>> data(std::string_view key) override {
    std::call_once(opened_, [] { std::this_thread::sleep_for(opening); });
    return InMemoryUserDefaults::data(key);
  }

 private:
  std::once_flag opened_;
};

// A session that does not answer while the main actor is busy, so that code that waits on it for a reply
// fails.
class HeldSession : public URLSession {
 public:
  explicit HeldSession(std::shared_ptr<URLSession> inner) : inner_(std::move(inner)) {}

  void run(URLRequest request, Completion completion) override {
    thread_.post([this, request, completion] {
      std::unique_lock guard(lock_);
      const bool isFree =
          freed_.wait_for(guard, 20s, [this, before = count_] { return count_ != before || !isHeld_; });
      EXPECT_TRUE(isFree) << "the main actor is waiting for a reply";
      guard.unlock();
      inner_->run(request, completion);
    });
  }

  template <class Work>
  void during(Work work) {
    hold(true);
    work();
    hold(false);
  }

 private:
  void hold(bool isHeld) {
    const std::scoped_lock guard(lock_);
    isHeld_ = isHeld;
    ++count_;
    freed_.notify_all();
  }

  const std::shared_ptr<URLSession> inner_;
  std::mutex lock_;
  std::condition_variable freed_;
  bool isHeld_ = false;
  int count_ = 0;
  BackgroundThread thread_;
};

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
  const auto session = std::make_shared<HeldSession>(platform.session);
  installed.urlSession = session;
  installed.background = std::make_shared<BackgroundThread>();
  installed.callbacks = nullptr;
  Platform::install(installed);

  std::shared_ptr<CookiesSDK> client;
  const auto start = std::chrono::steady_clock::now();
  session->during([&] { client = CookiesSDK::createInstance("https://service.example/", "s"); });
  EXPECT_GE(std::chrono::steady_clock::now() - start, opening);
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
  for (const auto& call : calls) session->during(call);

  const auto patience = std::chrono::steady_clock::now() + 30s;
  while ((!isSubmitted || platform.scene->windows().empty()) && std::chrono::steady_clock::now() < patience) {
    platform.sessionThread->runAll();
    session->during([&] { platform.mainActor->runAll(); });
    std::this_thread::sleep_for(1ms);
  }
  EXPECT_TRUE(isSubmitted);
  EXPECT_EQ(platform.scene->windows().size(), 1u);
  for (const auto& window : platform.scene->windows()) window->finishAnimations();
}

// A store whose first save blocks, as if waiting for another process, until the test releases it.
struct WaitingStore : InMemoryUserDefaults {
  Result<void> commit(const std::vector<StoreChange>& changes) override {
    std::call_once(first, [this] {
      entered.set_value();
      released.get_future().wait();
    });
    return InMemoryUserDefaults::commit(changes);
  }

  std::once_flag first;
  std::promise<void> entered, released;
};

TEST_F(ClientTest, ReturnsFromIdentifyWhileASaveWaitsAndRepeatsItAfterwards) {
  answer("POST", "cookie-consent/s", 200, R"({"id":"new"})");
  answer("GET", "cookie-consent/s/identified/u", 200, "null");
  const auto waiting = std::make_shared<WaitingStore>();
  platform.userDefaults = std::make_shared<FailingUserDefaults>(waiting);
  platform.install();
  const auto client = created();
  client->submitConsent(BasicConsent::rejectAll(), nullptr);
  std::thread saving([&] { platform.settle(); });
  waiting->entered.get_future().wait();
  client->identify("u");
  client->removeIdentity();
  client->identify("u");
  EXPECT_TRUE(waiting->values().empty());
  waiting->released.set_value();
  saving.join();
  // The thread that saved has also stored what arrived meanwhile.
  EXPECT_EQ(waiting->string(prefix + "userId.s").value(), "u");
  EXPECT_EQ(waiting->data(prefix + "originalConsent.s").value(), Data(written(BasicConsent::rejectAll())));
  platform.settle();
}

}  // namespace
}  // namespace TalvoConsentSDK
