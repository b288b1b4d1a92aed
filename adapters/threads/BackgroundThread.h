#pragma once

// The background executor of the ready-made platforms.

#include <memory>
#include <mutex>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Executor.h"

#include "adapters/threads/ParkedThread.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Runs jobs one after another on a thread that starts with the first one. Jobs still waiting when the
/// executor is destroyed or the process exits are dropped.
class BackgroundThread : public platform::Executor {
 public:
  BackgroundThread();
  ~BackgroundThread() override;

  void post(std::function<void()> job) override;

 private:
  struct Queue;

  const std::shared_ptr<Queue> queue_;
  std::once_flag started_;
  std::unique_ptr<ParkedThread> thread_;
};

}  // namespace TalvoConsentSDK
