#pragma once

// Knows whether the SDK is busy, by wrapping its executors and its URL session.

#include <atomic>
#include <memory>

#include "TalvoConsentSDK/platform/Platform.h"

namespace TalvoConsentHost {

/// Counts the jobs and requests that have been started and have not ended. Thread-safe.
class Activity {
 public:
  /// Wraps a platform's executors and session so that this object counts their work.
  void watch(TalvoConsentSDK::Platform& platform);

  bool isIdle() const { return *count_ == 0; }

 private:
  std::shared_ptr<std::atomic<int>> count_ = std::make_shared<std::atomic<int>>(0);
};

}  // namespace TalvoConsentHost
