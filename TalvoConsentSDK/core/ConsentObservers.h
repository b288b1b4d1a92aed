#pragma once

// Observers that are notified whenever the consent that the ledger knows has changed.

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include "TalvoConsentSDK/core/Subscription.h"
#include "TalvoConsentSDK/platform/Executor.h"

namespace TalvoConsentSDK {

/// A client's observers. Safe from any thread.
class ConsentObservers {
 public:
  explicit ConsentObservers(std::shared_ptr<platform::Executor> mainActor)
      : mainActor_(std::move(mainActor)) {}

  /// Adds an observer until the subscription ends.
  static Subscription add(const std::shared_ptr<ConsentObservers>& observers, std::function<void()> observer);

  /// Calls all observers on the main actor, soon; one that has been removed by then is not called.
  static void notify(const std::shared_ptr<ConsentObservers>& observers);

 private:
  void remove(int number);

  const std::shared_ptr<platform::Executor> mainActor_;
  std::mutex lock_;
  std::map<int, std::shared_ptr<const std::function<void()>>> observers_;
  int next_ = 0;
};

}  // namespace TalvoConsentSDK
