#include "adapters/threads/ParkedThread.h"

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <utility>
#include <vector>

namespace TalvoConsentSDK {

struct ParkedThread::Shared {
  std::function<void()> wake;
  std::atomic<bool> stop = false;
  std::thread thread;  // taken by whoever joins it
  std::thread::id id;
  std::mutex lock;
  std::condition_variable changed;
  bool ended = false;

  void park() {
    constexpr std::chrono::milliseconds patience(250);
    stop = true;
    wake();
    std::unique_lock guard(lock);
    if (std::this_thread::get_id() == id) return;  // the host calls exit() in one of our callbacks
    if (!changed.wait_for(guard, patience, [this] { return ended; })) return;
    std::thread taken = std::move(thread);
    guard.unlock();
    if (taken.joinable()) taken.join();  // what libraries keep for each thread has to go before they do
  }

  static void parkAtExit(std::weak_ptr<Shared> shared);
};

namespace {

// Exit handlers take no arguments; each takes the last entry. Never destroyed: it is read while exiting.
struct ExitList {
  std::mutex lock;
  std::vector<std::function<void()>> handlers;

  static ExitList& instance() {
    static ExitList& list = *new ExitList;
    return list;
  }

  static void runLast() {
    ExitList& list = instance();
    std::function<void()> handler;
    {
      const std::scoped_lock guard(list.lock);
      handler = std::move(list.handlers.back());
      list.handlers.pop_back();
    }
    handler();
  }
};

}  // namespace

void ParkedThread::Shared::parkAtExit(std::weak_ptr<Shared> shared) {
  ExitList& list = ExitList::instance();
  const std::scoped_lock guard(list.lock);
  list.handlers.push_back([shared = std::move(shared)] {
    if (const auto alive = shared.lock()) alive->park();
  });
  std::atexit(&ExitList::runLast);
}

ParkedThread::ParkedThread(Loop loop, std::function<void()> wake) : shared_(std::make_shared<Shared>()) {
  shared_->wake = std::move(wake);
  Shared::parkAtExit(shared_);

  sigset_t all;
  sigset_t previous;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &previous);
  {
    const std::scoped_lock guard(shared_->lock);
    shared_->thread = std::thread([shared = shared_, loop = std::move(loop)] {
      loop(shared->stop);
      const std::scoped_lock ending(shared->lock);
      shared->ended = true;
      shared->changed.notify_all();
    });
    shared_->id = shared_->thread.get_id();
  }
  pthread_sigmask(SIG_SETMASK, &previous, nullptr);
}

ParkedThread::~ParkedThread() {
  shared_->stop = true;
  shared_->wake();
  std::unique_lock guard(shared_->lock);
  std::thread taken = std::move(shared_->thread);
  guard.unlock();
  if (!taken.joinable()) return;  // the process exits and has joined it
  taken.get_id() == std::this_thread::get_id() ? taken.detach() : taken.join();
}

}  // namespace TalvoConsentSDK
