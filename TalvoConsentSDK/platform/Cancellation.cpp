#include "TalvoConsentSDK/platform/Cancellation.h"

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {
namespace platform {

void Cancellation::cancel() {
  std::vector<std::function<void()>> observers;
  {
    const std::scoped_lock guard(lock_);
    isCancelled_ = true;
    observers.swap(observers_);
  }
  for (const auto& observer : observers) callHost(observer);
}

bool Cancellation::isCancelled() const {
  const std::scoped_lock guard(lock_);
  return isCancelled_;
}

void Cancellation::observe(std::function<void()> observer) {
  {
    const std::scoped_lock guard(lock_);
    if (!isCancelled_) return observers_.push_back(std::move(observer));
  }
  observer();
}

}  // namespace platform
}  // namespace TalvoConsentSDK
