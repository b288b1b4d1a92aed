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

// Where no thread can be started.
struct NoThread : Executor {
  void post(std::function<void()>) override { throw std::runtime_error("no thread"); }
};

// Runs a task to its end, unless told otherwise with no executor of its own.
template <class T>
Result<T> outcome(Task<T> task, const std::shared_ptr<Executor>& executor = nullptr) {
  std::promise<Result<T>> promise;
  spawn<T>(executor, std::move(task), [&](Result<T> result) { promise.set_value(std::move(result)); });
  return promise.get_future().get();
}

TEST(TaskTest, ReturnsOrThrowsOnceItIsAwaited) {
  (void)value(std::make_unique<int>(1));  // dropped with what it holds
  EXPECT_EQ(*outcome(sum(100'000)), 300'000) << "more waits than a stack holds, were each to deepen it";
  EXPECT_EQ(*outcome(caughtFrom(failing(true))) + ", " + *outcome(caughtFrom(failing(false))),
            "ours, not ours");
  EXPECT_TRUE(outcome(failing(true)).error().as<PlatformError>());
  EXPECT_EQ(failure(outcome(failing(false))), "not ours");
  EXPECT_EQ(failure(outcome(value(1), std::make_shared<NoThread>())), "no thread");
}

std::string where(const MemoryPlatform& threads) {
  return threads.mainActor->isCurrent()    ? " main"
         : threads.background->isCurrent() ? " background"
                                           : " caller";
}

Task<std::string> whereItRuns(const MemoryPlatform& threads) {
  co_return where(threads);
}

Task<void> visit(const MemoryPlatform& threads, std::string& trace) {
  trace += where(threads);
  auto inherited = whereItRuns(threads);
  trace += co_await std::move(inherited);
  auto moved = whereItRuns(threads).on(threads.background);
  trace += co_await std::move(moved);
  trace += where(threads);
  CallbackAwaiter<int> callback([&threads](const std::function<void(int)>& report) {
    threads.sessionThread->post([report] { report(1); });
  });
  co_await std::move(callback);
  trace += where(threads);
}

TEST(TaskTest, GoesOnOnItsExecutorAfterEveryWait) {
  MemoryPlatform threads;
  std::string bound, unbound;
  spawn(threads.mainActor, visit(threads, bound));
  spawn(nullptr, visit(threads, unbound));
  EXPECT_EQ(bound, "");
  threads.settle();
  EXPECT_EQ(bound, " main main background main main");
  EXPECT_EQ(unbound, " caller caller background background caller") << "goes on where its last wait ended";
}

// Another thread that has always finished its job before `post` returns.
class QuickThread : public Executor {
 public:
  void post(std::function<void()> job) override { std::thread(std::move(job)).join(); }
};

TEST(TaskTest, EndsOnItsExecutorHoweverQuickThatIs) {
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

}  // namespace
}  // namespace TalvoConsentSDK
