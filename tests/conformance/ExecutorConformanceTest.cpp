// Runs the conformance suite on the executors that need no toolkit.

#include <future>

#include "adapters/threads/BackgroundThread.h"
#include "adapters/threads/MainQueue.h"

#include "testing/ExecutorConformance.h"
#include "testing/fakes/ManualExecutor.h"

namespace TalvoConsentSDK {
namespace {

struct ManualDriver {
  static constexpr bool isBackground = false;
  ManualExecutor executor;
  void settle() { executor.runAll(); }
};

struct MainQueueDriver {
  static constexpr bool isBackground = false;
  MainQueue executor;
  void settle() {
    while (executor.wait(std::chrono::milliseconds(0))) executor.drain();
  }
};

struct BackgroundDriver {
  static constexpr bool isBackground = true;
  BackgroundThread executor;
  void settle() {
    // The job posted here runs after all jobs that are already queued. Jobs that those post may be queued
    // behind it, so each turn waits for at least one generation of jobs.
    for (int generation = 0; generation < 3; ++generation) {
      std::promise<void> reached;
      executor.post([&] { reached.set_value(); });
      reached.get_future().wait();
    }
  }
};

using Drivers = ::testing::Types<ManualDriver, MainQueueDriver, BackgroundDriver>;
INSTANTIATE_TYPED_TEST_SUITE_P(Portable, ExecutorConformance, Drivers);

TEST(MainQueue, KeepsTheOrderIfAJobDrainsOrWakeThrows) {
  MainQueue queue([] { throw std::runtime_error("the host's"); });
  std::vector<int> order;
  queue.post([&] {
    order.push_back(1);
    queue.post([&] { order.push_back(4); });
    EXPECT_EQ(queue.drain(), 3u);
    order.push_back(5);
  });
  for (const int job : {2, 3}) queue.post([&order, job] { order.push_back(job); });
  EXPECT_EQ(queue.drain(), 1u);
  EXPECT_THAT(order, ::testing::ElementsAre(1, 2, 3, 4, 5));
  EXPECT_FALSE(queue.wait(std::chrono::milliseconds(0)));
}

TEST(MainQueue, WakesTheHostAndDoesNotBlockItsLoop) {
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
  EXPECT_TRUE(idle.wait(std::chrono::milliseconds::max()));
  poster.join();
}

}  // namespace
}  // namespace TalvoConsentSDK
