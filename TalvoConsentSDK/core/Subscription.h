#pragma once

// The handle of a registration: of a gate's closures, an observer or a listener.

#include <memory>
#include <utility>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Keeps a registration alive. `end` ends it, and so does the destructor. If it ends on the thread that runs
/// the closures (the main actor, unless the registration says otherwise), no call follows; if it ends on
/// another thread, a call may still be running. The closures are released on the thread where it ends, or
/// after the call that is running.
class [[nodiscard]] Subscription {
 public:
  /// A handle of nothing.
  Subscription() {}

  /// For implementations: releases `registration` when the subscription ends.
  explicit Subscription(std::shared_ptr<void> registration) : registration_(std::move(registration)) {}

  Subscription(Subscription&&) noexcept = default;
  Subscription& operator=(Subscription&&) noexcept = default;

  void end() { registration_.reset(); }

 private:
  std::shared_ptr<void> registration_;
};

}  // namespace TalvoConsentSDK
