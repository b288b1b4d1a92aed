#pragma once

// The library's asynchronous operations: a lazy coroutine that returns a value or throws an Error.
//
// A task runs on one executor, and resumes there after every wait. It takes the executor from the task that
// awaits it, unless `on` has given it one of its own. A task without an executor resumes on the thread that
// ends its wait. Any coroutine can await a task; a coroutine that is not a Task resumes on the thread where
// the awaited task ends.

#include <atomic>
#include <coroutine>
#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Executor.h"
#include "TalvoConsentSDK/platform/Wait.h"

namespace TalvoConsentSDK TALVO_EXPORT {

namespace detail {

/// A task's promise, which is also the wait of the coroutine that awaits the task. It owns itself while the
/// task runs.
struct TaskPromise : Wait {
  std::shared_ptr<platform::Executor> executor;    // where this task runs; null: anywhere
  std::shared_ptr<platform::Executor> continueOn;  // where its awaiter runs; null: anywhere
  std::exception_ptr exception;

  using Wait::Wait;

  struct FinalAwaiter {
    bool await_ready() const noexcept { return false; }
    template <class Promise>
    void await_suspend(std::coroutine_handle<Promise> finished) const noexcept {
      finished.promise().finish();
    }
    void await_resume() const noexcept {}
  };

  std::suspend_always initial_suspend() const noexcept { return {}; }
  FinalAwaiter final_suspend() const noexcept { return {}; }
  void unhandled_exception() noexcept { exception = std::current_exception(); }

  /// Starts this promise's task for an awaiter that has suspended. Returns false if the task has already
  /// ended; the awaiter then goes on at once. If the task's executor throws without having begun the task,
  /// lets the exception through.
  bool start(std::coroutine_handle<> task, std::coroutine_handle<> awaiter,
             std::shared_ptr<platform::Executor> awaiterExecutor);

 private:
  void run(std::coroutine_handle<> task);
  void finish() noexcept;

  std::atomic<bool> hasBegun_ = false;
};

template <class T>
struct TaskResult {
  std::optional<T> value;

  template <class U = T>
  void return_value(U&& result) {
    value.emplace(std::forward<U>(result));
  }
  T take() { return std::move(*value); }
};

template <>
struct TaskResult<void> {
  void return_void() const noexcept {}
  void take() const noexcept {}
};

template <class Promise>
std::shared_ptr<platform::Executor> executorOf(std::coroutine_handle<Promise> coroutine) {
  if constexpr (std::is_base_of_v<TaskPromise, Promise>) return coroutine.promise().executor;
  return nullptr;
}

}  // namespace detail

/// A lazy operation that returns a `T` or throws. It starts when it is awaited, at most once; if it is
/// dropped before that, the work is never done. Once started it runs to its end, even if the coroutine that
/// awaits it is destroyed. That coroutine may only be destroyed on the thread on which it would resume. If an
/// executor throws instead of taking a job, the wait ends with that exception, on the thread that called the
/// executor. Movable, not copyable.
template <class T>
class [[nodiscard]] Task {
 public:
  struct promise_type;

  class Awaiter {
   public:
    explicit Awaiter(detail::Share<promise_type> task) : task_(std::move(task)) {}
    Awaiter(const Awaiter&) = delete;
    Awaiter& operator=(const Awaiter&) = delete;
    ~Awaiter() { task_->abandon(); }

    bool await_ready() const noexcept { return false; }

    template <class Promise>
    bool await_suspend(std::coroutine_handle<Promise> awaiter) {
      return task_->start(task_->coroutine(), awaiter, detail::executorOf(awaiter));
    }

    T await_resume() {
      task_->rethrowRefusal();
      if (task_->exception) std::rethrow_exception(task_->exception);
      return task_->take();
    }

   private:
    const detail::Share<promise_type> task_;
  };

  struct promise_type : detail::TaskPromise, detail::TaskResult<T> {
    promise_type() noexcept : detail::TaskPromise(destroy) {}
    Task get_return_object() noexcept { return Task(detail::Share<promise_type>::ofNew(*this)); }
    std::coroutine_handle<promise_type> coroutine() noexcept {
      return std::coroutine_handle<promise_type>::from_promise(*this);
    }

   private:
    static void destroy(detail::Wait& task) noexcept {
      static_cast<promise_type&>(task).coroutine().destroy();
    }
  };

  Task(Task&&) noexcept = default;
  Task& operator=(Task&&) noexcept = default;

  /// Returns the same task, which will run on `executor` wherever it is awaited from.
  Task on(std::shared_ptr<platform::Executor> executor) && {
    task_->executor = std::move(executor);
    return std::move(*this);
  }

  Awaiter operator co_await() && noexcept { return Awaiter(std::move(task_)); }

 private:
  explicit Task(detail::Share<promise_type> task) noexcept : task_(std::move(task)) {}

  detail::Share<promise_type> task_;
};

}  // namespace TalvoConsentSDK
