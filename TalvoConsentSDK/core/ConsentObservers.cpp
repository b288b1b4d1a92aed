#include "TalvoConsentSDK/core/ConsentObservers.h"

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

using namespace platform;

Subscription ConsentObservers::add(const std::shared_ptr<ConsentObservers>& observers,
                                   std::shared_ptr<ConsentObserver> observer) {
  const std::shared_ptr<Registration> registration(new Registration{std::move(observer)});
  {
    const std::scoped_lock guard(observers->lock_);
    observers->registrations_.push_back(registration);
  }
  notify(observers);
  return Subscription(registration);
}

void ConsentObservers::notify(const std::shared_ptr<ConsentObservers>& observers) {
  {
    const std::scoped_lock guard(observers->lock_);
    std::erase_if(observers->registrations_, [](const auto& each) { return each.expired(); });
    if (observers->registrations_.empty()) return;
  }
  postOrRun(observers->mainActor_, [observers] {
    std::vector<std::weak_ptr<Registration>> all;
    {
      const std::scoped_lock guard(observers->lock_);
      all = observers->registrations_;
    }
    for (const auto& each : all) observers->call(each);
  });
}

// A closure of the host may run an event loop, end its own subscription, or be called on another thread by an
// executor that takes no jobs.
void ConsentObservers::call(const std::weak_ptr<Registration>& registered) {
  for (bool isDue = true; isDue;) {
    std::shared_ptr<ConsentObserver> observer;
    if (const auto registration = registered.lock()) {
      const std::scoped_lock guard(lock_);
      if (std::exchange(registration->isBeingCalled, true)) {
        registration->isDue = true;
        return;
      }
      observer = registration->observer;
    }
    if (!observer) return;
    callHost([&] { observer->consentMayHaveChanged(); });
    isDue = false;
    if (const auto registration = registered.lock()) {
      const std::scoped_lock guard(lock_);
      registration->isBeingCalled = false;
      isDue = std::exchange(registration->isDue, false);
    }
  }
}

}  // namespace TalvoConsentSDK
