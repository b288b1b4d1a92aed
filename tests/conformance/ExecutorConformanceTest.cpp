#include <atomic>
#include <future>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TalvoConsentSDK/platform/Platform.h"

#include "adapters/memory/CapturingPrinter.h"
#include "adapters/memory/ManualExecutor.h"
#include "adapters/threads/BackgroundThread.h"
#include "adapters/threads/MainQueue.h"

// What every executor must do. A `Driver` owns one and lets it work until it is idle.
namespace TalvoConsentSDK {
namespace {

struct ManualDriver {
  ManualExecutor executor;
  void settle() { executor.runAll(); }
};

struct MainQueueDriver {
  MainQueue executor;
  void settle() {
    while (executor.wait(std::chrono::milliseconds(0))) executor.drain();
  }
};

struct BackgroundDriver {
  BackgroundThread executor;
  void settle() {
    // What a job posts stands behind the first mark, so each mark waits for one generation of jobs.
    for (int generation = 0; generation < 3; ++generation) {
      std::promise<void> reached;
      executor.post([&] { reached.set_value(); });
      reached.get_future().wait();
    }
  }
};

template <class Driver>
class ExecutorConformance : public ::testing::Test {
 protected:
  static constexpr bool isBackground = std::is_same_v<Driver, BackgroundDriver>;

  ExecutorConformance() {
    Platform platform;
    platform.printer = printer;
    Platform::install(platform);
  }

  std::shared_ptr<CapturingPrinter> printer = std::make_shared<CapturingPrinter>();
  Driver driver;
};
using Drivers = ::testing::Types<ManualDriver, MainQueueDriver, BackgroundDriver>;
TYPED_TEST_SUITE(ExecutorConformance, Drivers);

TYPED_TEST(ExecutorConformance, RunsEveryJobOnceInOrder) {
  constexpr int threadCount = 4;
  constexpr int jobCount = 500;
  std::vector<std::vector<int>> ran(threadCount);  // written by the executor's jobs alone
  std::vector<std::thread> posters;
  for (int poster = 0; poster < threadCount; ++poster) {
    posters.emplace_back([&, poster] {
      for (int job = 0; job < jobCount; ++job) {
        this->driver.executor.post(
            [&mine = ran[static_cast<std::size_t>(poster)], job] { mine.push_back(job); });
      }
    });
  }
  for (std::thread& poster : posters) poster.join();
  this->driver.settle();
  std::vector<int> inOrder(jobCount);
  for (int job = 0; job < jobCount; ++job) inOrder[static_cast<std::size_t>(job)] = job;
  EXPECT_THAT(ran, ::testing::Each(inOrder));
}

TYPED_TEST(ExecutorConformance, ContainsWhatJobsThrow) {
  std::atomic<int> ran = 0;
  this->driver.executor.post([&] { throw std::runtime_error("first"); });
  this->driver.executor.post([&] { ++ran; });
  this->driver.executor.post([&] { throw 7; });
  this->driver.executor.post([&] { ++ran; });
  this->driver.settle();
  EXPECT_EQ(ran, 2);
  EXPECT_THAT(this->printer->take(),
              ::testing::ElementsAre("⚠️ A callback threw: first", "⚠️ A callback threw: Unknown error"));
}

TYPED_TEST(ExecutorConformance, TakesJobsFromJobsAndNeverRunsThemInsidePost) {
  std::mutex lock;
  std::vector<int> order;
  const auto note = [&](int step) {
    const std::scoped_lock guard(lock);
    order.push_back(step);
  };
  const auto caller = std::this_thread::get_id();
  std::atomic<bool> onCaller = false;
  this->driver.executor.post([&] {
    note(1);
    onCaller = std::this_thread::get_id() == caller;
    this->driver.executor.post([&] {
      note(3);
      this->driver.executor.post([&] { note(4); });
    });
    note(2);
  });
  EXPECT_TRUE(this->isBackground || order.empty());
  this->driver.settle();
  EXPECT_THAT(order, ::testing::ElementsAre(1, 2, 3, 4));
  EXPECT_NE(onCaller, this->isBackground);
}

TEST(MainQueue, WakesTheHostAndLetsItsLoopGoOn) {
  int wakes = 0;
  MainQueue queue([&] { ++wakes; });
  int rounds = 0;
  std::function<void()> again = [&] {
    ++rounds;
    queue.post(again);
  };
  queue.post(again);
  EXPECT_EQ(wakes, 1);
  EXPECT_EQ(queue.drain(), 1u) << "what a job posts waits for the next drain";
  EXPECT_EQ(rounds, 1);
  EXPECT_EQ(wakes, 2);
  EXPECT_TRUE(queue.wait(std::chrono::hours(1)));

  MainQueue idle;
  EXPECT_FALSE(idle.wait(std::chrono::milliseconds(1)));
  std::thread poster([&] { idle.post([] {}); });
  EXPECT_TRUE(idle.wait(std::chrono::hours(1)));
  poster.join();
}

}  // namespace
}  // namespace TalvoConsentSDK
