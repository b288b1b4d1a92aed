#pragma once

// Knows whether the SDK has anything under way, by wrapping what it works with.

#include <atomic>
#include <memory>

#include "TalvoConsentSDK/platform/Platform.h"

namespace TalvoConsentHost {

/// Counts the jobs and requests that have begun and not ended. Any thread.
class Activity {
 public:
  /// Wraps a platform's executors and session so that they are counted here.
  void watch(TalvoConsentSDK::Platform& platform);

  bool isIdle() const { return *count_ == 0; }

 private:
  std::shared_ptr<std::atomic<int>> count_ = std::make_shared<std::atomic<int>>(0);
};

}  // namespace TalvoConsentHost
