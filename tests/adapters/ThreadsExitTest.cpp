#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <future>
#include <list>
#include <memory>
#include <string>
#include <system_error>
#include <thread>

#include <gtest/gtest.h>
#include <unistd.h>

#include "TalvoConsentSDK/base/NeverDestroyed.h"

#include "adapters/threads/BackgroundThread.h"

#include "testing/ChildProcess.h"

// A process that exits while its background thread is busy.
namespace TalvoConsentSDK {
namespace {

// Posts 100 jobs, each of which posts itself again whenever it runs. Returns once the thread runs jobs.
void keepBusy(const std::shared_ptr<BackgroundThread>& thread) {
  struct Again {
    std::weak_ptr<BackgroundThread> thread;
    std::shared_ptr<std::string> work = std::make_shared<std::string>();
    void operator()() const {
      work->append(100, 'x').clear();
      if (const auto alive = thread.lock()) alive->post(*this);
    }
  };
  std::promise<void> running;
  thread->post([&] { running.set_value(); });
  for (int job = 0; job < 100; ++job) thread->post(Again{thread});
  running.get_future().wait();
}

struct Ending {
  const char* name;
  std::function<void()> leave;
};

// A new thread that is never destroyed, like the threads of a process-wide platform.
std::shared_ptr<BackgroundThread>& leaked() {
  static auto& threads = neverDestroyed<std::list<std::shared_ptr<BackgroundThread>>>();
  return threads.emplace_back(std::make_shared<BackgroundThread>());
}

class ThreadsExitTest : public ::testing::TestWithParam<Ending> {};

TEST_P(ThreadsExitTest, EndsQuicklyAndWithoutACrash) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (int run = 0; run < 5; ++run) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EXIT(GetParam().leave(), ::testing::ExitedWithCode(0), "");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  }
}

const Ending endings[] = {
    {"Idle",
     [] {
       std::promise<void> ran;
       leaked()->post([&] { ran.set_value(); });
       ran.get_future().wait();
       std::exit(0);
     }},
    {"Busy",
     [] {
       keepBusy(leaked());
       keepBusy(leaked());
       std::exit(0);
     }},
    {"InAJobThatNeverReturns",
     [] {
       std::promise<void> running;
       leaked()->post([&] {
         running.set_value();
         for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
       });
       running.get_future().wait();
       std::exit(0);
     }},
    {"CalledByAJob",
     [] {
       leaked()->post([] { std::exit(0); });
       for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
     }},
    {"AfterTheThreadIsDestroyed",
     [] {
       auto thread = std::make_shared<BackgroundThread>();
       keepBusy(thread);
       thread = nullptr;
       std::exit(0);
     }},
};
INSTANTIATE_TEST_SUITE_P(Exit, ThreadsExitTest, ::testing::ValuesIn(endings),
                         [](const auto& each) { return each.param.name; });

TEST(ParkedThreadTest, RestoresTheSignalMaskIfNoThreadCanStart) {
  pthread_attr_t usual;
  pthread_getattr_default_np(&usual);
  pthread_attr_t huge = usual;
  pthread_attr_setstacksize(&huge, ~std::size_t{0} / 4 * 3);
  pthread_setattr_default_np(&huge);
  EXPECT_THROW(ParkedThread([](const auto&) {}, [] {}), std::system_error);
  pthread_setattr_default_np(&usual);
  sigset_t blocked;
  pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
  EXPECT_EQ(sigismember(&blocked, SIGTERM), 0);
}

// A child has its parent's exit handlers and objects, but not its threads, so it must not wait for them.
TEST(ParkedThreadTest, IsNotWaitedForInAForkedChild) {
  for (const bool isDestroyed : {true, false}) {
    std::promise<void> stopped;
    const auto wake = [&stopped, parent = ::getpid()] {
      if (::getpid() != parent) ::_exit(9);
      stopped.set_value();
    };
    auto thread = std::make_unique<ParkedThread>([&](const auto&) { stopped.get_future().wait(); }, wake);
    ChildProcess child([&](const ProcessChannel&) {
      if (isDestroyed) thread.reset();
      std::exit(0);
    });
    EXPECT_EQ(child.wait(), 0) << isDestroyed;
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
