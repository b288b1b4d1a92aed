#pragma once

// How long the device's store may keep a thread waiting. The caller knows whether a person waits; the store
// knows what it waits for.

#include <chrono>
#include <optional>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// Limits what all store operations on the calling thread may wait together, from its creation to its
/// destruction. When two are nested, the earlier deadline holds. Create and destroy it on the same thread.
class StoreDeadline {
 public:
  explicit StoreDeadline(std::chrono::milliseconds limit);
  ~StoreDeadline();
  StoreDeadline(const StoreDeadline&) = delete;
  StoreDeadline& operator=(const StoreDeadline&) = delete;

  /// How long an operation that would wait at most `otherwise` may wait on the calling thread: less when a
  /// deadline is nearer, and zero when it has passed.
  static std::chrono::milliseconds remaining(std::chrono::milliseconds otherwise);

 private:
  const std::optional<std::chrono::steady_clock::time_point> outer_;
};

}  // namespace platform
}  // namespace TalvoConsentSDK
