#include "TalvoConsentSDK/core/ConsentObservers.h"

#include <utility>

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

using namespace platform;

Subscription ConsentObservers::add(const std::shared_ptr<ConsentObservers>& observers,
                                   std::function<void()> observer) {
  auto added = std::make_shared<const std::function<void()>>(std::move(observer));
  const std::scoped_lock guard(observers->lock_);
  const int number = observers->next_++;
  observers->observers_[number] = std::move(added);
  return Subscription({nullptr, [observers, number](void*) { observers->remove(number); }});
}

// The removed observer is released outside the lock, because its destructor is host code.
void ConsentObservers::remove(int number) {
  decltype(observers_)::node_type removed;
  const std::scoped_lock guard(lock_);
  removed = observers_.extract(number);
}

void ConsentObservers::notify(const std::shared_ptr<ConsentObservers>& observers) {
  {
    const std::scoped_lock guard(observers->lock_);
    if (observers->observers_.empty()) return;
  }
  platform::postOrRun(observers->mainActor_, [observers] {
    std::unique_lock guard(observers->lock_);
    auto& all = observers->observers_;
    const int end = observers->next_;  // observers added from here on see the changed consent anyway
    for (auto entry = all.begin(); entry != all.end() && entry->first < end;) {
      const auto [number, observer] = *entry;
      guard.unlock();
      callHost(*observer);
      guard.lock();
      entry = all.upper_bound(number);
    }
  });
}

}  // namespace TalvoConsentSDK
