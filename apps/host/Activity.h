#pragma once

// Wraps the SDK's executors and its URL session, to find out whether the SDK is busy and what it has loaded.

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/platform/Platform.h"
#include "TalvoConsentSDK/platform/URLSession.h"

namespace TalvoConsentHost {

/// The replies to GET requests, in the order of their arrival. Thread-safe.
class LoadedReplies {
 public:
  void add(std::string url, TalvoConsentSDK::platform::ReplySource source);

  /// URL and source ("network", "cache" or "revalidated") of the replies since the last call.
  std::vector<std::pair<std::string, std::string>> take();

 private:
  std::mutex lock_;
  std::vector<std::pair<std::string, std::string>> replies_;
};

/// Counts the jobs and requests that have been started and have not ended. Thread-safe.
class Activity {
 public:
  /// Wraps a platform's executors and session so that this object counts their work.
  void watch(TalvoConsentSDK::Platform& platform);

  /// Returns an executor that runs jobs on `executor` and counts them.
  std::shared_ptr<TalvoConsentSDK::platform::Executor> counting(
      std::shared_ptr<TalvoConsentSDK::platform::Executor> executor) const;

  bool isIdle() const { return *count_ == 0; }

  LoadedReplies& loaded() const { return *loaded_; }

 private:
  std::shared_ptr<std::atomic<int>> count_ = std::make_shared<std::atomic<int>>(0);
  std::shared_ptr<LoadedReplies> loaded_ = std::make_shared<LoadedReplies>();
};

}  // namespace TalvoConsentHost
