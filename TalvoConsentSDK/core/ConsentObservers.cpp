#include "TalvoConsentSDK/core/ConsentObservers.h"

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

bool isReleased(const std::weak_ptr<ConsentObserver>& observer) {
  return observer.expired();
}

}  // namespace

Subscription ConsentObservers::add(std::shared_ptr<ConsentObserver> observer) {
  const std::scoped_lock guard(lock_);
  std::erase_if(observers_, isReleased);
  observers_.push_back(observer);
  return Subscription(std::move(observer));
}

void ConsentObservers::notify(const std::shared_ptr<ConsentObservers>& observers) {
  {
    const std::scoped_lock guard(observers->lock_);
    std::erase_if(observers->observers_, isReleased);
    if (observers->observers_.empty()) return;
  }
  postOrRun(observers->mainActor_, [observers] {
    std::vector<std::weak_ptr<ConsentObserver>> all;
    {
      const std::scoped_lock guard(observers->lock_);
      all = observers->observers_;
    }
    for (const auto& each : all) {
      callHost([&] {
        if (const auto observer = each.lock()) observer->consentMayHaveChanged();
      });
    }
  });
}

}  // namespace TalvoConsentSDK
