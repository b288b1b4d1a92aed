#pragma once

// Who is told that the stored consent may have changed, whatever changed it.

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Executor.h"
#include "TalvoConsentSDK/platform/UserDefaults.h"

namespace TalvoConsentSDK {

class CookiesSDK;

/// A client's observers. Safe from any thread.
class ConsentObservers {
 public:
  explicit ConsentObservers(std::shared_ptr<platform::Executor> mainActor)
      : mainActor_(std::move(mainActor)) {}

  int add(std::function<void()> observer);
  void remove(int number);

  /// Calls everybody on the main actor, soon; nobody who is removed before.
  static void notify(const std::shared_ptr<ConsentObservers>& observers);

 private:
  const std::shared_ptr<platform::Executor> mainActor_;
  std::mutex lock_;
  std::map<int, std::shared_ptr<const std::function<void()>>> observers_;
  int next_ = 0;
};

/// The store that a client works on: passes everything on, and tells `observers` of each change of `key`.
std::shared_ptr<platform::UserDefaults> observed(std::shared_ptr<platform::UserDefaults> store,
                                                 std::string key,
                                                 std::shared_ptr<ConsentObservers> observers);

/// Calls `observer` on the main actor after each change of the stored consent, until what this returns is
/// released; after a release on the main actor, never. For bindings.
TALVO_EXPORT std::shared_ptr<void> observeStoredConsent(const CookiesSDK& client,
                                                        std::function<void()> observer);

}  // namespace TalvoConsentSDK
