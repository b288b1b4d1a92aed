#pragma once

// Where work runs. The library owns no threads: it posts to the executors of its Platform.

#include <functional>
#include <memory>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// Runs jobs. The main actor runs them one at a time on the main thread, in the order posted and never inside
/// `post`; a background executor runs them on threads other than the main one.
class Executor {
 public:
  virtual ~Executor() = default;

  /// Schedules a job; safe from any thread. Every job runs exactly once, unless the process ends first. If a
  /// job throws, the executor catches the exception (see `callHost`), and its thread goes on. If the executor
  /// cannot take the job, `post` throws. The library also calls `post` while it creates a client, so `post`
  /// must not create one.
  virtual void post(std::function<void()> job) = 0;
};

/// Posts a job that must run. If the executor throws instead of taking the job, runs it on the calling
/// thread. The job runs once, and its captures are released on the thread where it ran. If the job throws,
/// the exception is caught.
TALVO_EXPORT void postOrRun(const std::shared_ptr<Executor>& executor, std::function<void()> job) noexcept;

}  // namespace platform
}  // namespace TalvoConsentSDK
