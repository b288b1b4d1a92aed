#pragma once

// Connects tasks with callbacks: starts a task without waiting for it, and awaits operations that report
// through a callback.

#include <atomic>
#include <coroutine>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Result.h"
#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/platform/Task.h"
#include "TalvoConsentSDK/platform/Wait.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Awaits an operation that reports through a callback: `start` receives a `std::function<void(T)>` and calls
/// it on any thread. Only the first call counts: later calls, and an exception that `start` throws after
/// the first call, are ignored. If `start` throws before the first call, the await throws that exception and
/// ignores all calls. A task resumes on its executor. Any other coroutine resumes on the callback's
/// thread, or goes on at once on its own thread if the callback was called before `start` returned. The
/// coroutine may be destroyed while it waits, but only on the thread on which it would resume.
template <class T>
class [[nodiscard]] CallbackAwaiter {
 public:
  using Start = std::function<void(std::function<void(T)>)>;

  explicit CallbackAwaiter(Start start) : start_(std::move(start)) {}
  CallbackAwaiter(CallbackAwaiter&&) noexcept = default;  // g++ 12 moves an awaiter before it awaits it
  ~CallbackAwaiter() {
    if (report_) report_->abandon();
  }

  bool await_ready() const noexcept { return false; }

  template <class Promise>
  bool await_suspend(std::coroutine_handle<Promise> awaiter) {
    const Start start = std::move(start_);  // so that its captures are released when this function ends
    const auto report = report_;
    report->begin(awaiter);
    try {
      start([report, executor = detail::executorOf(awaiter)](T value) {
        if (report->hasArrived.exchange(true)) return;
        report->value.emplace(std::move(value));
        detail::Wait::end(detail::Share<detail::Wait>(*report.operator->()), executor);
      });
    } catch (...) {
      if (!report->hasArrived.exchange(true)) throw;
    }
    return report->suspend();
  }

  T await_resume() {
    report_->rethrowRefusal();
    return std::move(*report_->value);
  }

 private:
  struct Report : detail::Wait {
    std::atomic<bool> hasArrived = false;
    std::optional<T> value;

    Report() noexcept : Wait([](Wait& report) noexcept { delete static_cast<Report*>(&report); }) {}
  };

  Start start_;
  detail::Share<Report> report_ = detail::Share<Report>::ofNew(*new Report);
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
  } catch (...) {  // the executor has not taken the task
    end.emplace(Error::current());
  }
  platform::callHost([&] {
    if (done) done(*std::move(end));
  });
}

}  // namespace detail

/// Starts a task on `executor` without waiting for it. `done` is called once with its result, on the
/// executor; or on the caller's thread, if the executor throws instead of taking the task.
template <class T>
void spawn(const std::shared_ptr<platform::Executor>& executor, Task<T> task,
           std::function<void(Result<T>)> done) {
  detail::run(detail::outcome(std::move(task)).on(executor), std::move(done));
}

/// Starts a task that reports its own failures, without waiting for its end. If it cannot be run, or
/// throws all the same, prints a line.
inline void spawn(const std::shared_ptr<platform::Executor>& executor, Task<void> task) {
  spawn<void>(executor, std::move(task), [](const Result<void>& end) {
    if (!end) platform::print(std::string("⚠️ A task could not be run: ") + end.error().what());
  });
}

}  // namespace TalvoConsentSDK
