#include "TalvoConsentSDK/platform/Task.h"

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK::detail {

void Wait::end(Share<Wait> wait, const std::shared_ptr<platform::Executor>& executor) noexcept {
  if (wait->advance(Phase::starting, Phase::over)) return;  // the awaiter will not suspend
  if (!executor) return wait->resume(nullptr);
  try {
    executor->post([wait] { wait->resume(nullptr); });
  } catch (...) {
    wait->resume(std::current_exception());
  }
}

// Only the first call resumes the awaiter: an executor may take the job and also throw.
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
  // An awaiter without an executor resumes on the thread where the task ends. The awaiter may resume there
  // and be destroyed before `post` returns, so it must count as suspended before `post` is called.
  const auto target = executor;
  const bool resumesWhereTaskEnds = !continueOn;
  if (resumesWhereTaskEnds) suspend();
  try {
    target->post([own, task] { own->run(task); });
  } catch (...) {
    if (!hasBegun_.exchange(true)) throw;  // otherwise the executor threw after it began the task
  }
  return resumesWhereTaskEnds || suspend();
}

void TaskPromise::run(std::coroutine_handle<> task) {
  if (hasBegun_.exchange(true)) return;
  retain();  // until `finish`, because the awaiter may be destroyed
  task.resume();
}

void TaskPromise::finish() noexcept {
  end(Share<Wait>(*this), continueOn == executor ? nullptr : continueOn);
  release();
}

}  // namespace TalvoConsentSDK::detail
