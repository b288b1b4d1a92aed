#pragma once

// Tests that every executor must pass. A `Driver` has
//   an `executor`,
//   void settle(): returns once no job is left, also none that a job has posted,
//   static constexpr bool isBackground: whether jobs run on a thread of the executor's own.

#include <atomic>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TalvoConsentSDK/platform/Platform.h"

#include "testing/fakes/CapturingPrinter.h"

namespace TalvoConsentSDK {

template <class Driver>
class ExecutorConformance : public ::testing::Test {
 protected:
  ExecutorConformance() {
    Platform platform;
    platform.printer = printer;
    Platform::install(platform);
  }

  std::shared_ptr<CapturingPrinter> printer = std::make_shared<CapturingPrinter>();
  Driver driver;
};
TYPED_TEST_SUITE_P(ExecutorConformance);

TYPED_TEST_P(ExecutorConformance, RunsEveryJobOnceInOrder) {
  constexpr int threadCount = 4;
  constexpr int jobCount = 500;
  std::vector<std::vector<int>> ran(threadCount);  // only the executor's jobs write to it
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

TYPED_TEST_P(ExecutorConformance, CatchesWhatJobsThrow) {
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

TYPED_TEST_P(ExecutorConformance, TakesJobsFromJobsAndNeverRunsThemInsidePost) {
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
  EXPECT_TRUE(TypeParam::isBackground || order.empty());
  this->driver.settle();
  EXPECT_THAT(order, ::testing::ElementsAre(1, 2, 3, 4));
  EXPECT_NE(onCaller, TypeParam::isBackground);
}

REGISTER_TYPED_TEST_SUITE_P(ExecutorConformance, RunsEveryJobOnceInOrder, CatchesWhatJobsThrow,
                            TakesJobsFromJobsAndNeverRunsThemInsidePost);

}  // namespace TalvoConsentSDK
