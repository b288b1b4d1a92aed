#include "TalvoConsentSDK/platform/Task.h"

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK::detail {

void Wait::end(Share<Wait> wait, const std::shared_ptr<platform::Executor>& executor) noexcept {
  if (wait->advance(Phase::starting, Phase::over)) return;  // the awaiter sees it before it suspends
  if (!executor) return wait->resume(nullptr);
  try {
    executor->post([wait] { wait->resume(nullptr); });
  } catch (...) {
    wait->resume(std::current_exception());
  }
}

// Whoever gets here first resumes: an executor that throws may have taken the job all the same.
void Wait::resume(std::exception_ptr refusal) noexcept {
  if (!advance(Phase::suspended, Phase::over)) return;
  refusal_ = std::move(refusal);
  platform::callHost([awaiter = awaiter_] { awaiter.resume(); });  // a host's coroutine may throw
}

bool TaskPromise::start(std::coroutine_handle<> task, std::coroutine_handle<> awaiter,
                        std::shared_ptr<platform::Executor> awaiterExecutor) {
  const Share<TaskPromise> own(*this);
  begin(awaiter);
  continueOn = std::move(awaiterExecutor);
  if (!executor || executor == continueOn) {
    executor = continueOn;
    run(task);
    return suspend();
  }
  // An awaiter without an executor goes on where the task ends, however soon that is; it may then be gone
  // before the task's executor has returned from `post`.
  const auto target = executor;
  const bool goesOnThere = !continueOn;
  if (goesOnThere) suspend();
  try {
    target->post([own, task] { own->run(task); });
  } catch (...) {
    if (!hasBegun_.exchange(true)) throw;  // else the executor has taken it all the same
  }
  return goesOnThere || suspend();
}

void TaskPromise::run(std::coroutine_handle<> task) {
  if (hasBegun_.exchange(true)) return;
  retain();  // until `finish`: whoever awaits the task may go
  task.resume();
}

void TaskPromise::finish() noexcept {
  end(Share<Wait>(*this), continueOn == executor ? nullptr : continueOn);
  release();
}

}  // namespace TalvoConsentSDK::detail
