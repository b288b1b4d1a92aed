#include "adapters/threads/ParkedThread.h"

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <list>
#include <mutex>
#include <utility>
#include <vector>

#include <unistd.h>

#include "TalvoConsentSDK/base/NeverDestroyed.h"

namespace TalvoConsentSDK {

struct ParkedThread::Shared {
  const pid_t process = getpid();
  std::function<void()> wake;
  std::atomic<bool> stop = false;
  std::thread thread;  // moved out by the caller that joins it
  std::thread::id id;
  std::mutex lock;
  std::condition_variable changed;
  bool ended = false;

  // A forked child does not have the thread, and must not take its locks: they may be held there forever.
  bool isElsewhere() const { return process != getpid(); }

  void park() {
    constexpr std::chrono::milliseconds exitWait(250);
    if (isElsewhere()) return;
    stop = true;
    wake();
    std::unique_lock guard(lock);
    if (std::this_thread::get_id() == id) return;  // the host called exit() in one of our callbacks
    if (!changed.wait_for(guard, exitWait, [this] { return ended; })) return;
    std::thread taken = std::move(thread);
    guard.unlock();
    if (taken.joinable()) taken.join();  // so that libraries release the thread's data before they shut down
  }
};

// The threads to park. Exit handlers take no arguments, so each one parks the newest thread that is left.
struct ParkedThread::ExitList {
  std::mutex lock;
  std::vector<std::weak_ptr<Shared>> threads;

  static ExitList& instance() {
    static ExitList& list = neverDestroyed<ExitList>();
    return list;
  }

  void add(const std::shared_ptr<Shared>& shared) {
    const std::scoped_lock guard(lock);
    std::erase_if(threads, [](const auto& thread) { return thread.expired(); });
    threads.push_back(shared);
    std::atexit(&ExitList::parkLast);
  }

  static void parkLast() {
    if (const auto last = instance().takeLast()) last->park();
  }

  std::shared_ptr<Shared> takeLast() {
    const std::scoped_lock guard(lock);
    std::shared_ptr<Shared> last;
    for (; !last && !threads.empty(); threads.pop_back()) last = threads.back().lock();
    return last;
  }
};

namespace {

// Blocks all signals on the calling thread. Threads started while it exists inherit that.
class BlockedSignals {
 public:
  BlockedSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous_);
  }
  ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
  BlockedSignals(const BlockedSignals&) = delete;

 private:
  sigset_t previous_;
};

}  // namespace

ParkedThread::ParkedThread(Loop loop, std::function<void()> wake) : shared_(std::make_shared<Shared>()) {
  shared_->wake = std::move(wake);
  // First, since it can throw. If the thread then does not start, the entry expires.
  ExitList::instance().add(shared_);
  const BlockedSignals blocked;
  const std::scoped_lock guard(shared_->lock);
  shared_->thread = std::thread([shared = shared_, loop = std::move(loop)] {
    loop(shared->stop);
    const std::scoped_lock ending(shared->lock);
    shared->ended = true;
    shared->changed.notify_all();
  });
  shared_->id = shared_->thread.get_id();
}

ParkedThread::~ParkedThread() {
  if (shared_->isElsewhere()) {
    static auto& left = neverDestroyed<std::list<std::thread>>();  // a child can neither join nor detach them
    left.push_back(std::move(shared_->thread));
    return;
  }
  shared_->stop = true;
  shared_->wake();
  std::unique_lock guard(shared_->lock);
  std::thread taken = std::move(shared_->thread);
  guard.unlock();
  if (!taken.joinable()) return;  // the exit handler has joined it
  taken.get_id() == std::this_thread::get_id() ? taken.detach() : taken.join();
}

}  // namespace TalvoConsentSDK
