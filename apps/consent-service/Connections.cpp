#include "Connections.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "Connection.h"

namespace TalvoConsentSDK::service {

void Connections::serve(std::function<void()> job) {
  std::unique_lock guard(lock_);
  changed_.wait(guard, [this] { return queue_.size() < maxQueued || isEnding_; });
  queue_.push_back(std::move(job));
  if (queue_.size() > idle_ && threads_.size() < maxThreads) {
    try {
      threads_.emplace_back([this] { work(); });
    } catch (const std::system_error&) {  // the system is out of threads: use those that run
      if (threads_.empty()) throw;
    }
  }
  makeRoom();
  changed_.notify_all();
}

void Connections::work() {
  std::unique_lock guard(lock_);
  for (;;) {
    ++idle_;
    changed_.wait(guard, [this] { return !queue_.empty() || isFinishing_; });
    --idle_;
    if (queue_.empty()) return;
    const auto job = std::move(queue_.front());
    queue_.pop_front();
    changed_.notify_all();
    guard.unlock();
    job();
    guard.lock();
  }
}

void Connections::finish() {
  {
    const std::scoped_lock guard(lock_);
    isFinishing_ = true;
  }
  changed_.notify_all();
  for (std::thread& each : threads_) each.join();
}

void Connections::end() {
  {
    const std::scoped_lock guard(lock_);
    isEnding_ = true;
    for (Connection* each : open_) each->end(false);
  }
  changed_.notify_all();
}

void Connections::enter(Connection& connection) {
  const std::scoped_lock guard(lock_);
  open_.insert(&connection);
  if (isEnding_) connection.end(false);
}

void Connections::leave(Connection& connection) {
  const std::scoped_lock guard(lock_);
  open_.erase(&connection);
}

void Connections::waits() {
  const std::scoped_lock guard(lock_);
  makeRoom();
}

// Ends one waiting connection for each queued job that lacks a thread. Idle threads take one job each, and so
// do threads whose connection has been ended.
void Connections::makeRoom() {
  if (threads_.size() < maxThreads) return;
  auto wanted = queue_.size() - std::min(queue_.size(), idle_);
  std::vector<std::pair<Connection::Clock::time_point, Connection*>> waiting;
  for (Connection* each : open_) {
    if (each->isEnded()) {
      wanted -= std::min<std::size_t>(wanted, 1);
    } else if (const auto since = each->waitingForClientSince()) {
      waiting.emplace_back(*since, each);
    }
  }
  std::ranges::sort(waiting);
  waiting.resize(std::min(waiting.size(), wanted));
  for (const auto& [since, each] : waiting) each->end(true);
}

}  // namespace TalvoConsentSDK::service
