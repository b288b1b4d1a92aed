#pragma once

// Observers that are notified whenever their client may have changed the stored consent. Changes made by
// other processes are not noticed.

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

  /// Calls all observers on the main actor, soon; one that has been removed by then is not called.
  static void notify(const std::shared_ptr<ConsentObservers>& observers);

 private:
  const std::shared_ptr<platform::Executor> mainActor_;
  std::mutex lock_;
  std::map<int, std::shared_ptr<const std::function<void()>>> observers_;
  int next_ = 0;
};

/// Wraps a client's store: passes everything on to it, and notifies `observers` whenever `key` may have
/// changed.
std::shared_ptr<platform::UserDefaults> observed(std::shared_ptr<platform::UserDefaults> store,
                                                 std::string key,
                                                 std::shared_ptr<ConsentObservers> observers);

/// Calls `observer` on the main actor after each change that `client` makes to the stored consent, until the
/// returned handle is released. If the handle is released on the main actor, no call follows; after a release
/// on another thread, a call may still be running. For bindings.
TALVO_EXPORT std::shared_ptr<void> observeStoredConsent(const CookiesSDK& client,
                                                        std::function<void()> observer);

}  // namespace TalvoConsentSDK
