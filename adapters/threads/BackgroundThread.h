#pragma once

// The background executor of the platforms that the SDK provides.

#include <memory>
#include <mutex>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Executor.h"

#include "adapters/threads/ParkedThread.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Runs jobs one after another on its own thread, which starts with the first job. Drops the jobs that are
/// still waiting when the executor is destroyed or the process exits.
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
