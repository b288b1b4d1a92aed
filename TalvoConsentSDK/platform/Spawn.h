#pragma once

// Where tasks meet callbacks: starting a task without waiting for it, and awaiting what reports by a
// callback.

#include <coroutine>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "TalvoConsentSDK/platform/Export.h"
#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/platform/Result.h"
#include "TalvoConsentSDK/platform/Task.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Awaits an operation that reports through a callback: `start` receives a `std::function<void(T)>` and calls
/// it once, on any thread. In a task the wait ends on the task's executor, elsewhere on the callback's
/// thread, or on the caller's when the callback comes at once.
template <class T>
class [[nodiscard]] CallbackAwaiter {
 public:
  using Start = std::function<void(std::function<void(T)>)>;

  explicit CallbackAwaiter(Start start) : start_(std::move(start)) {}

  bool await_ready() const noexcept { return false; }

  template <class Promise>
  bool await_suspend(std::coroutine_handle<Promise> awaiter) {
    const Start start = std::move(start_);  // the awaiter may be gone before `start` returns
    const auto wait = wait_;
    start([wait, awaiter, executor = detail::executorOf(awaiter)](T value) {
      wait->value.emplace(std::move(value));
      if (wait->rendezvous.arriveSecond()) detail::resume(executor, awaiter);
    });
    return !wait->rendezvous.arriveSecond();
  }

  T await_resume() { return std::move(*wait_->value); }

 private:
  struct Wait {
    std::optional<T> value;
    detail::Rendezvous rendezvous;
  };

  Start start_;
  std::shared_ptr<Wait> wait_ = std::make_shared<Wait>();
};

namespace detail {

struct Detached {
  struct promise_type {
    Detached get_return_object() const noexcept { return {}; }
    std::suspend_never initial_suspend() const noexcept { return {}; }
    std::suspend_never final_suspend() const noexcept { return {}; }
    void return_void() const noexcept {}
    [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }
  };
};

template <class T>
Task<Result<T>> outcome(Task<T> task) {
  try {
    if constexpr (std::is_void_v<T>) {
      co_await std::move(task);
      co_return Result<T>();
    } else {
      T value = co_await std::move(task);
      co_return Result<T>(std::move(value));
    }
  } catch (...) {
    co_return Result<T>(Error::current());
  }
}

template <class T>
Detached run(Task<Result<T>> task, std::function<void(Result<T>)> done) {
  std::optional<Result<T>> end;
  try {
    Result<T> result = co_await std::move(task);
    end.emplace(std::move(result));
  } catch (...) {  // the executor has not taken it
    end.emplace(Error::current());
  }
  callHost([&] {
    if (done) done(*std::move(end));
  });
}

}  // namespace detail

/// Starts a task on `executor` without waiting for it. `done` hears of its end, once, on the executor; on the
/// caller's thread, should that throw instead of taking the task.
template <class T>
void spawn(const std::shared_ptr<Executor>& executor, Task<T> task, std::function<void(Result<T>)> done) {
  detail::run(detail::outcome(std::move(task)).on(executor), std::move(done));
}

/// Starts a task whose end nobody waits for, one that reports its own failures.
inline void spawn(const std::shared_ptr<Executor>& executor, Task<void> task) {
  spawn<void>(executor, std::move(task), nullptr);
}

}  // namespace TalvoConsentSDK
