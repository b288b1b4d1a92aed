#pragma once

// Observers that are notified whenever the consent that the ledger knows has changed.

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/core/Subscription.h"
#include "TalvoConsentSDK/platform/Executor.h"

namespace TalvoConsentSDK {

/// Called on the main actor. Several changes may be reported as one, and a call may report none. A call never
/// begins within another call of the same observer: it follows when that one has ended.
class ConsentObserver {
 public:
  virtual ~ConsentObserver() = default;
  virtual void consentMayHaveChanged() = 0;
};

/// A client's observers. Safe from any thread.
class ConsentObservers {
 public:
  explicit ConsentObservers(std::shared_ptr<platform::Executor> mainActor)
      : mainActor_(std::move(mainActor)) {}

  /// Adds an observer, which is first called soon. The subscription owns it, and its end releases it.
  static Subscription add(const std::shared_ptr<ConsentObservers>& observers,
                          std::shared_ptr<ConsentObserver> observer);

  /// Calls all observers on the main actor, soon; one that has been released by then is not called.
  static void notify(const std::shared_ptr<ConsentObservers>& observers);

 private:
  // Owned by the subscription alone, so that a call that is running cannot be followed by another one after
  // the subscription has ended.
  struct Registration {
    const std::shared_ptr<ConsentObserver> observer;
    bool isBeingCalled = false;
    bool isDue = false;  // notified during the call
  };

  void call(const std::weak_ptr<Registration>& registered);

  const std::shared_ptr<platform::Executor> mainActor_;
  std::mutex lock_;  // guards all that follows, and the registrations
  std::vector<std::weak_ptr<Registration>> registrations_;
};

}  // namespace TalvoConsentSDK
