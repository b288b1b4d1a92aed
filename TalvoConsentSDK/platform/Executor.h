#pragma once

// Where work runs. The library owns no threads: it posts to the executors of its Platform.

#include <functional>
#include <memory>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// A place that runs jobs. The main actor runs its jobs one at a time on the main thread, in the order posted
/// and never inside `post`; a background executor runs them on threads other than the main one.
class Executor {
 public:
  virtual ~Executor() = default;

  /// Hands over one job; may be called from any thread. Every job runs exactly once, unless the process ends
  /// first. An executor contains what a job throws (see `callHost`): its thread goes on. One that cannot take
  /// the job throws. Also called while a client is being created, so `post` must not create one.
  virtual void post(std::function<void()> job) = 0;
};

/// Posts a job that must run: here, should the executor throw instead of taking it. It runs once, and what it
/// holds is released where it has run. What it throws is contained.
TALVO_EXPORT void postOrRun(const std::shared_ptr<Executor>& executor, std::function<void()> job) noexcept;

}  // namespace platform
}  // namespace TalvoConsentSDK
