// The C interface of the platform: the main loop, the device's store, requests, texts and printed lines.

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "TalvoConsentSDK/base/NeverDestroyed.h"
#include "TalvoConsentSDK/platform/Platform.h"

#include "adapters/posix/PosixPlatform.h"
#include "adapters/texts/TranslatedTexts.h"

#include "bindings/c/Boundary.h"

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::c;

namespace {

struct MainLoop {
  std::mutex lock;
  std::shared_ptr<MainQueue> queue;
  std::size_t maxCacheBytes = 10'000'000;
  CurlOptions options;

  static MainLoop& shared() {
    static MainLoop& loop = neverDestroyed<MainLoop>();
    return loop;
  }

  std::shared_ptr<MainQueue> installed() {
    const std::scoped_lock guard(lock);
    if (!queue) throw Error(InvalidArgument("talvo_install has not been called"));
    return queue;
  }
};

// The texts that a host in C replaces.
class OwnTexts : public platform::Localization {
 public:
  OwnTexts(talvo_text_callback lookUp, std::shared_ptr<void> userData)
      : lookUp_(lookUp), userData_(std::move(userData)) {}

  std::string text(std::string_view key) override {
    const std::string copy(key);
    const char* const own = lookUp_ ? lookUp_(copy.c_str(), userData_.get()) : nullptr;
    return own ? own : copy;
  }

 private:
  const talvo_text_callback lookUp_;
  const std::shared_ptr<void> userData_;
};

// Receives the lines that the library prints.
class OwnPrinter : public platform::Printer {
 public:
  OwnPrinter(talvo_text_receiver receive, std::shared_ptr<void> userData)
      : receive_(receive), userData_(std::move(userData)) {}

  void print(std::string_view line) override { receive_(std::string(line).c_str(), userData_.get()); }

 private:
  const talvo_text_receiver receive_;
  const std::shared_ptr<void> userData_;
};

Platform installedPlatform() {
  if (!Platform::isInstalled()) throw Error(InvalidArgument("no platform is installed"));
  return Platform::current();
}

void beforeInstalling(const std::function<void(MainLoop&)>& change) {
  MainLoop& loop = MainLoop::shared();
  const std::scoped_lock guard(loop.lock);
  if (loop.queue) throw Error(InvalidArgument("talvo_install has been called before"));
  change(loop);
}

}  // namespace

talvo_status talvo_install(const char* store, talvo_callback wake, void* user_data) {
  return guarded([&] {
    const auto queue = std::make_shared<MainQueue>(closure(wake, owned(user_data, nullptr)));
    MainLoop& loop = MainLoop::shared();
    const std::scoped_lock guard(loop.lock);
    if (loop.queue) throw Error(InvalidArgument("talvo_install has been called before"));
    Platform::install(makePosixPlatform(queue, store ? std::filesystem::path(store) : defaultStoreFile(),
                                        loop.options, loop.maxCacheBytes));
    loop.queue = queue;
  });
}

talvo_status talvo_set_cache_size(size_t bytes) {
  return guarded([&] { beforeInstalling([&](MainLoop& loop) { loop.maxCacheBytes = bytes; }); });
}

talvo_status talvo_set_time_limits(long without_progress, long total) {
  return guarded([&] {
    beforeInstalling([&](MainLoop& loop) {
      loop.options.maxTimeout = timeLimit(without_progress);
      loop.options.maxTotalTimeout = timeLimit(total);
    });
  });
}

talvo_status talvo_set_printer(talvo_text_receiver print, void* user_data, talvo_callback release) {
  return guarded([&] {
    Platform platform = installedPlatform();
    platform.printer = print ? std::make_shared<OwnPrinter>(print, owned(user_data, release)) : nullptr;
    Platform::install(std::move(platform));
  });
}

talvo_status talvo_translate_texts(talvo_text_callback own, void* user_data, talvo_callback release) {
  return guarded([&] {
    Platform platform = installedPlatform();
    platform.localization =
        std::make_shared<TranslatedTexts>(std::make_shared<OwnTexts>(own, owned(user_data, release)));
    Platform::install(std::move(platform));
  });
}

size_t talvo_drain(void) {
  size_t count = 0;
  guarded([&] { count = MainLoop::shared().installed()->drain(); });
  return count;
}

int talvo_wait(unsigned milliseconds) {
  bool isReady = false;
  guarded([&] { isReady = MainLoop::shared().installed()->wait(std::chrono::milliseconds(milliseconds)); });
  return isReady ? 1 : 0;
}
