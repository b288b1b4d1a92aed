#include <future>
#include <stdexcept>
#include <thread>

#include "TalvoConsentSDK/platform/Spawn.h"
#include "TalvoConsentSDK/platform/Task.h"

#include "adapters/threads/BackgroundThread.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {
namespace {

template <class T>
Task<T> value(T result) {
  co_return result;
}

Task<int> failing(bool withOurs) {
  if (withOurs) throw Error(PlatformError("test", 1, "ours"));
  throw std::runtime_error("not ours");
  co_return 0;
}

Task<std::string> caughtFrom(Task<int> child) {
  try {
    co_await std::move(child);
  } catch (const std::exception& error) {
    co_return error.what();
  }
  co_return "nothing was thrown";
}

Task<int> sum(int count) {
  int total = 0;
  for (int n = 0; n < count; ++n) {
    auto child = value(1);
    total += co_await std::move(child);
    CallbackAwaiter<int> callback([](const std::function<void(int)>& report) { report(2); });
    total += co_await std::move(callback);
  }
  co_return total;
}

// Runs a task until it ends, by default without an executor.
template <class T>
Result<T> outcome(Task<T> task, const std::shared_ptr<Executor>& executor = nullptr) {
  std::promise<Result<T>> promise;
  spawn<T>(executor, std::move(task), [&](Result<T> result) { promise.set_value(std::move(result)); });
  return promise.get_future().get();
}

TEST(TaskTest, ReturnsOrThrowsWhenAwaited) {
  (void)value(std::make_unique<int>(1));  // a task that is never awaited releases its arguments
  EXPECT_EQ(*outcome(sum(100'000)), 300'000) << "would overflow the stack if each wait used some of it";
  EXPECT_EQ(*outcome(caughtFrom(failing(true))), "ours");
  EXPECT_EQ(*outcome(caughtFrom(failing(false))), "not ours");
  EXPECT_TRUE(outcome(failing(true)).error().as<PlatformError>());
  EXPECT_EQ(failure(outcome(failing(false))), "not ours");
}

// Runs each job on another thread and waits for it before `post` returns.
class QuickThread : public Executor {
 public:
  void post(std::function<void()> job) override { std::thread(std::move(job)).join(); }
};

TEST(TaskTest, EndsOnItsExecutorEvenIfItEndsAtOnce) {
  std::thread::id end;
  spawn<int>(std::make_shared<QuickThread>(), value(1),
             [&](const Result<int>&) { end = std::this_thread::get_id(); });
  EXPECT_TRUE(end != std::thread::id() && end != std::this_thread::get_id());
}

Task<std::thread::id> threadOf(std::shared_ptr<const int>) {
  co_return std::this_thread::get_id();
}

Task<int> strays(std::shared_ptr<Executor> other, int hops) {
  const auto home = std::this_thread::get_id();
  int count = 0;
  for (int n = 0; n < hops; ++n) {
    auto away = threadOf(std::make_shared<int>(n)).on(other);
    const auto id = co_await std::move(away);
    if (id == home || std::this_thread::get_id() != home) ++count;
  }
  co_return count;
}

TEST(TaskTest, HopsBetweenThreads) {
  const auto one = std::make_shared<BackgroundThread>();
  EXPECT_EQ(*outcome(strays(std::make_shared<BackgroundThread>(), 500).on(one)), 0);
}

Task<void> note(Texts& trace, std::string what) {
  trace.push_back(what);
  co_return;
}

// Waits once on `first` and once on `second`, then ends.
Task<void> twoSteps(Texts& trace, std::shared_ptr<Executor> first, std::shared_ptr<Executor> second) {
  auto one = note(trace, "one").on(first);
  co_await std::move(one);
  auto two = note(trace, "two").on(second);
  co_await std::move(two);
  trace.push_back("end");
}

// Executors that refuse a job when a wait begins or ends, or that throw after taking it.
TEST(TaskTest, EndsOnceWhateverItsExecutorsThrow) {
  for (const auto& [what, expected] : tableOf<2>("platform/executors.txt")) {
    const auto jobs = std::make_shared<ManualExecutor>();
    const auto home = std::make_shared<FailingExecutor>(jobs);
    const auto away = std::make_shared<FailingExecutor>(jobs);
    Texts trace;
    spawn<void>(home, twoSteps(trace, away, away),
                [&](const Result<void>& end) { trace.push_back(end ? "ended" : end.error().what()); });
    home->refuses = what == "home refuses";
    home->throwsAfterwards = what == "home throws";
    away->refuses = what == "away refuses";
    away->throwsAfterwards = what == "away throws";
    jobs->runAll();
    EXPECT_EQ(joined(trace), expected) << what;
  }
  const auto late = std::make_shared<FailingExecutor>(Platform().background);
  late->throwsAfterwards = true;  // after running the job
  EXPECT_EQ(*outcome(value(1), late), 1);
}

TEST(TaskTest, CountsTheFirstReportOnly) {
  using Report = std::function<void(int)>;
  const std::pair<std::string, std::function<void(const Report&)>> table[] = {
      {"1", [](const Report& report) { report(1), report(2); }},
      {"1", [](const Report& report) { report(1), throw std::runtime_error("late"); }},
      {"early", [](const Report&) { throw std::runtime_error("early"); }},
      {"1", [](const Report& report) {
         std::vector<std::future<void>> all;
         for (int n = 0; n < 3; ++n) all.push_back(std::async(std::launch::async, report, 1));
       }}};
  for (const auto& [expected, start] : table) {
    Report late;
    const auto waiting = [](CallbackAwaiter<int>& wait) -> Task<int> { co_return co_await wait; };
    CallbackAwaiter<int> wait([&](const Report& report) { start(late = report); });
    const auto end = outcome(waiting(wait));
    late(3);
    EXPECT_EQ(end ? std::to_string(*end) : failure(end), expected);
  }
}

// A host's own coroutine type, which the host can destroy while it is suspended.
struct HostCoroutine {
  struct promise_type {
    HostCoroutine get_return_object() { return {std::coroutine_handle<promise_type>::from_promise(*this)}; }
    std::suspend_never initial_suspend() { return {}; }
    std::suspend_always final_suspend() noexcept { return {}; }
    void return_void() {}
    void unhandled_exception() { std::terminate(); }
  };
  std::coroutine_handle<promise_type> handle;
};

template <class Awaitable>
HostCoroutine await(Awaitable& awaitable, bool& wentOn) {
  co_await std::move(awaitable);
  wentOn = true;
}

TEST(TaskTest, RunsToItsEndWithoutItsAwaiter) {
  MemoryPlatform threads;
  for (const bool isDestroyed : {true, false}) {
    for (const bool isDropped : {true, false}) {
      Texts trace;
      bool wentOn = false, hasReported = false;
      std::function<void(int)> report;
      CallbackAwaiter<int> wait([&](const auto& given) { report = given; });
      auto task = std::make_unique<Task<void>>(
          twoSteps(trace, threads.background, threads.sessionThread).on(threads.mainActor));
      HostCoroutine first = await(*task, wentOn);
      HostCoroutine second = await(wait, hasReported);
      if (isDropped) task.reset();
      if (isDestroyed) first.handle.destroy(), second.handle.destroy();
      threads.settle();
      if (!isDestroyed) report(1);
      EXPECT_EQ(joined(trace), "one; two; end");
      EXPECT_TRUE(wentOn != isDestroyed && hasReported != isDestroyed);
      if (!isDestroyed) first.handle.destroy(), second.handle.destroy();
    }
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
