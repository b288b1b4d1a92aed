#pragma once

// The threads that serve connections, and the policy for more connections than threads.

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

namespace TalvoConsentSDK::service {

class Connection;

/// Each connection holds a thread. If all threads are in use, a new connection replaces the one that has
/// waited longest for its client, so that slow and idle clients never keep others out. Thread-safe.
class Connections {
 public:
  static constexpr std::size_t maxThreads = 256;
  static constexpr std::size_t maxQueued = 64;  // beyond this, connections wait in the system's backlog

  /// Runs `job`, which serves one connection, on a thread. Waits while too many jobs are queued.
  void serve(std::function<void()> job);

  /// Waits until all jobs passed to `serve` have ended. Call it once.
  void finish();

  /// Ends reading on every connection, including future ones.
  void end();

  void enter(Connection& connection);
  void leave(Connection& connection);

  /// Call this when a connection begins to wait for its client: it may have to make room for another.
  void waits();

 private:
  void work();
  void makeRoom();

  std::mutex lock_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> queue_;
  std::vector<std::thread> threads_;
  std::size_t idle_ = 0;  // number of threads without a job
  std::set<Connection*> open_;
  bool isEnding_ = false;
  bool isFinishing_ = false;
};

}  // namespace TalvoConsentSDK::service
