#include "TalvoConsentSDK/core/ConsentObservers.h"

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

using namespace platform;

Subscription ConsentObservers::add(const std::shared_ptr<ConsentObservers>& observers,
                                   std::shared_ptr<ConsentObserver> observer) {
  {
    const std::scoped_lock guard(observers->lock_);
    observers->observers_.push_back(observer);
  }
  notify(observers);
  return Subscription(std::move(observer));
}

void ConsentObservers::notify(const std::shared_ptr<ConsentObservers>& observers) {
  {
    const std::scoped_lock guard(observers->lock_);
    std::erase_if(observers->observers_, [](const auto& each) { return each.expired(); });
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
