#include "TalvoConsentSDK/platform/Task.h"

namespace TalvoConsentSDK::detail {

void resume(const std::shared_ptr<Executor>& executor, std::coroutine_handle<> coroutine) {
  if (executor) {
    executor->post([coroutine] { coroutine.resume(); });
  } else {
    coroutine.resume();
  }
}

bool TaskPromise::start(std::coroutine_handle<> task, std::coroutine_handle<> awaiter,
                        std::shared_ptr<Executor> awaiterExecutor) {
  continuation = awaiter;
  continueOn = std::move(awaiterExecutor);
  if (!executor || executor == continueOn) {
    executor = continueOn;
    task.resume();
    return !rendezvous.arriveSecond();
  }
  // An awaiter without an executor goes on where the task ends, however soon that is; it, and this with it,
  // may then be gone before the task's executor has returned from `post`.
  const auto own = executor;
  const bool goesOnThere = !continueOn;
  if (goesOnThere) rendezvous.arriveSecond();
  resume(own, task);
  return goesOnThere || !rendezvous.arriveSecond();
}

void TaskPromise::deliver() noexcept {
  if (!rendezvous.arriveSecond()) return;
  // The awaiter destroys the task as it goes on.
  const auto awaiter = continuation;
  const auto awaiterExecutor = continueOn == executor ? nullptr : continueOn;
  resume(awaiterExecutor, awaiter);
}

}  // namespace TalvoConsentSDK::detail
