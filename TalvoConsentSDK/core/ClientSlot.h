#pragma once

// Holds the process's single instance of a client class.

#include <memory>
#include <mutex>

#include "TalvoConsentSDK/base/NeverDestroyed.h"

namespace TalvoConsentSDK {

/// The slot for one client class. The first `create` fills it, and nothing empties it. Creation runs host
/// code: the store, the printer and the executors. If that code calls `get` on the creating thread, it gets
/// null. Other threads wait until creation ends.
template <class Client>
class ClientSlot {
 public:
  /// Threads may still ask for the client while the process exits.
  static ClientSlot& shared() {
    static ClientSlot& slot = neverDestroyed<ClientSlot>();
    return slot;
  }

  /// Returns the client, calling `make` if there is none yet. A call from inside `make` returns null.
  template <class Make>
  std::shared_ptr<Client> create(Make make) {
    const std::scoped_lock guard(lock_);
    if (client_ || isCreating_) return client_;
    isCreating_ = true;
    try {
      client_ = make();
    } catch (...) {
      isCreating_ = false;
      throw;
    }
    isCreating_ = false;
    return client_;
  }

  std::shared_ptr<Client> get() {
    const std::scoped_lock guard(lock_);
    return client_;
  }

 private:
  std::recursive_mutex lock_;
  bool isCreating_ = false;
  std::shared_ptr<Client> client_;
};

}  // namespace TalvoConsentSDK
