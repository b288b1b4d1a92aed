#pragma once

// Where a process keeps its one client of a kind.

#include <memory>
#include <mutex>

namespace TalvoConsentSDK {

/// Made by the first `create`, kept for ever. Creating calls the host's store, printer and executors: on the
/// creating thread these find no client yet, while other threads wait for it.
template <class Client>
class ClientSlot {
 public:
  /// Never destroyed: threads may still ask for the client while the process exits.
  static ClientSlot& shared() {
    static ClientSlot& slot = *new ClientSlot;
    return slot;
  }

  /// The client, made by `make` if there is none; null when called while it is being made, on that thread.
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
