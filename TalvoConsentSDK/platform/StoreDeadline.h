#pragma once

// Limits how long the device's store may make a thread wait. The caller sets the limit, because only the
// caller knows whether a person is waiting; the store applies it, because only the store knows what its
// operations wait for.

#include <chrono>
#include <optional>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// While this object exists, store operations on the thread that created it stop waiting once `limit` has
/// passed since its creation. If deadlines are nested, the earliest one counts. Create and destroy it on the
/// same thread.
class StoreDeadline {
 public:
  explicit StoreDeadline(std::chrono::milliseconds limit);
  ~StoreDeadline();
  StoreDeadline(const StoreDeadline&) = delete;
  StoreDeadline& operator=(const StoreDeadline&) = delete;

  /// Returns how long an operation may wait on the calling thread: `otherwise`, or less if a deadline is
  /// nearer; zero once it has passed.
  static std::chrono::milliseconds remaining(std::chrono::milliseconds otherwise);

 private:
  const std::optional<std::chrono::steady_clock::time_point> outer_;
};

}  // namespace platform
}  // namespace TalvoConsentSDK
