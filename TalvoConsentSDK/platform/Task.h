#pragma once

// The library's asynchronous operations: a lazy coroutine that returns a value or throws an Error.
//
// A task runs on one executor, which it takes from the task that awaits it unless `on` gave it one of its
// own, and goes on there after every wait. Without an executor it goes on where its last wait ended. Any
// coroutine can await a task; one that is not itself a Task is resumed where the awaited task ends.

#include <atomic>
#include <coroutine>
#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "TalvoConsentSDK/platform/Executor.h"
#include "TalvoConsentSDK/platform/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

namespace detail {

// On the executor, or here when there is none.
TALVO_EXPORT void resume(const std::shared_ptr<Executor>& executor, std::coroutine_handle<> coroutine);

// The two sides of a wait: the one that suspends and the one that delivers. Whoever arrives second goes on,
// so that a wait that is over before it began neither suspends nor deepens the stack (symmetric transfer
// would overflow it in builds without optimisation).
class Rendezvous {
 public:
  bool arriveSecond() noexcept { return arrived_.exchange(true, std::memory_order_acq_rel); }

 private:
  std::atomic<bool> arrived_ = false;
};

struct TaskPromise {
  std::shared_ptr<Executor> executor;    // where this task runs; null: anywhere
  std::shared_ptr<Executor> continueOn;  // where its awaiter runs; null: anywhere
  std::coroutine_handle<> continuation;  // the awaiter
  Rendezvous rendezvous;
  std::exception_ptr exception;

  struct FinalAwaiter {
    bool await_ready() const noexcept { return false; }
    template <class Promise>
    void await_suspend(std::coroutine_handle<Promise> finished) const noexcept {
      finished.promise().deliver();
    }
    void await_resume() const noexcept {}
  };

  std::suspend_always initial_suspend() const noexcept { return {}; }
  FinalAwaiter final_suspend() const noexcept { return {}; }
  void unhandled_exception() noexcept { exception = std::current_exception(); }

  // Starts the task that this is the promise of, for an awaiter that has suspended; false: it is over, and
  // the awaiter goes on at once.
  bool start(std::coroutine_handle<> task, std::coroutine_handle<> awaiter,
             std::shared_ptr<Executor> awaiterExecutor);

 private:
  void deliver() noexcept;
};

template <class T>
struct TaskResult {
  std::optional<T> value;

  void return_value(T result) { value.emplace(std::move(result)); }
  T take() { return std::move(*value); }
};

template <>
struct TaskResult<void> {
  void return_void() const noexcept {}
  void take() const noexcept {}
};

template <class Promise>
std::shared_ptr<Executor> executorOf(std::coroutine_handle<Promise> coroutine) {
  if constexpr (std::is_base_of_v<TaskPromise, Promise>) return coroutine.promise().executor;
  return nullptr;
}

}  // namespace detail

/// A lazy operation that ends in a `T` or throws. It starts when it is awaited, at most once; dropping it
/// before that drops the work. Movable, not copyable.
template <class T>
class [[nodiscard]] Task {
 public:
  struct promise_type : detail::TaskPromise, detail::TaskResult<T> {
    Task get_return_object() { return Task(std::coroutine_handle<promise_type>::from_promise(*this)); }
  };

  class Awaiter {
   public:
    explicit Awaiter(std::coroutine_handle<promise_type> task) : task_(task) {}

    bool await_ready() const noexcept { return false; }

    template <class Promise>
    bool await_suspend(std::coroutine_handle<Promise> awaiter) {
      return task_.promise().start(task_, awaiter, detail::executorOf(awaiter));
    }

    T await_resume() {
      promise_type& promise = task_.promise();
      if (promise.exception) std::rethrow_exception(promise.exception);
      return promise.take();
    }

   private:
    std::coroutine_handle<promise_type> task_;
  };

  Task(Task&& other) noexcept : coroutine_(std::exchange(other.coroutine_, nullptr)) {}
  Task& operator=(Task&& other) noexcept {
    std::swap(coroutine_, other.coroutine_);
    return *this;
  }
  ~Task() {
    if (coroutine_) coroutine_.destroy();
  }

  /// The same task, run on `executor` wherever it is awaited from.
  Task on(std::shared_ptr<Executor> executor) && {
    coroutine_.promise().executor = std::move(executor);
    return std::move(*this);
  }

  Awaiter operator co_await() && noexcept { return Awaiter(coroutine_); }

 private:
  explicit Task(std::coroutine_handle<promise_type> coroutine) : coroutine_(coroutine) {}

  std::coroutine_handle<promise_type> coroutine_;
};

}  // namespace TalvoConsentSDK
