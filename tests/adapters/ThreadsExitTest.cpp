// A process that exits while its background thread is busy.

#include <chrono>
#include <csignal>
#include <future>
#include <list>
#include <system_error>
#include <thread>

#include <unistd.h>

#include "TalvoConsentSDK/base/NeverDestroyed.h"

#include "adapters/threads/BackgroundThread.h"

#include "testing/ChildProcess.h"
#include "tests/support/Testing.h"

// A forked child does not have its parent's threads, so the leak checker cannot see what only they refer to.
const pid_t testProcess = ::getpid();
extern "C" int __lsan_is_turned_off();
extern "C" int __lsan_is_turned_off() {
  return ::getpid() != testProcess;
}

namespace TalvoConsentSDK {
namespace {

// Posts a job and waits until the thread runs it.
void start(BackgroundThread& thread, const std::function<void()>& job) {
  const auto running = std::make_shared<std::promise<void>>();
  thread.post([=] {
    running->set_value();
    job();
  });
  running->get_future().wait();
}

// Posts 100 jobs, each of which posts itself again whenever it runs.
void keepBusy(const std::shared_ptr<BackgroundThread>& thread) {
  struct Again {
    std::weak_ptr<BackgroundThread> thread;
    std::shared_ptr<std::string> work = std::make_shared<std::string>();
    void operator()() const {
      work->append(100, 'x').clear();
      if (const auto alive = thread.lock()) alive->post(*this);
    }
  };
  start(*thread, [] {});
  for (int job = 0; job < 100; ++job) thread->post(Again{thread});
}

// A new thread that is never destroyed, like the threads of a process-wide platform.
std::shared_ptr<BackgroundThread>& leaked() {
  static auto& threads = neverDestroyed<std::list<std::shared_ptr<BackgroundThread>>>();
  return threads.emplace_back(std::make_shared<BackgroundThread>());
}

void sleepForever() {
  for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}

TEST(ThreadsExitTest, EndsQuicklyAndWithoutACrash) {
  constexpr int status = 3;
  // What happens before the process exits.
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"an idle thread", [] { start(*leaked(), [] {}); }},
      {"busy threads",
       [] {
         keepBusy(leaked());
         keepBusy(leaked());
       }},
      {"a job that never returns", [] { start(*leaked(), sleepForever); }},
      {"a job that calls exit",
       [] {
         leaked()->post([] { std::exit(status); });
         sleepForever();
       }},
      {"a thread that was destroyed", [] { keepBusy(std::make_shared<BackgroundThread>()); }},
  };
  for (int run = 0; run < 5; ++run) {
    for (const auto& [name, prepare] : cases) {
      SCOPED_TRACE(name);
      const auto began = std::chrono::steady_clock::now();
      ChildProcess child([&work = prepare](const ProcessChannel&) {
        work();
        std::exit(status);
      });
      EXPECT_EQ(child.wait(), status);
      EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(10));
    }
  }
}

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
