#include "TalvoConsentSDK/platform/Executor.h"

#include <atomic>
#include <utility>

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK::platform {

namespace {

struct Once {
  std::function<void()> job;
  std::atomic<bool> hasRun = false;

  void run() noexcept {
    if (hasRun.exchange(true)) return;
    const std::function<void()> taken = std::move(job);
    callHost(taken);
  }
};

}  // namespace

void postOrRun(const std::shared_ptr<Executor>& executor, std::function<void()> job) noexcept {
  std::shared_ptr<Once> once;
  try {
    once = std::make_shared<Once>();
    once->job = std::move(job);
    executor->post([once] { once->run(); });
  } catch (...) {
    once ? once->run() : callHost(job);
  }
}

}  // namespace TalvoConsentSDK::platform
