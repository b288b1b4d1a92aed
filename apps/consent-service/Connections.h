#pragma once

// The threads that serve connections, and who gets one when there are not enough.

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

/// Each connection holds a thread. When all are taken, the connection that has been waiting for its client
/// for the longest is ended in favour of a new one, so that slow and idle clients never keep others out. Safe
/// from any thread.
class Connections {
 public:
  static constexpr std::size_t maxThreads = 256;
  static constexpr std::size_t maxQueued = 64;  // then the system queues what is not yet accepted

  /// Has a thread serve a connection; waits while too many are queued.
  void serve(std::function<void()> job);

  /// Waits until all that were given to `serve` have been served. Call it once.
  void finish();

  /// Ends the waiting for clients on every connection, those to come included.
  void end();

  void enter(Connection& connection);
  void leave(Connection& connection);

  /// Called when a connection begins to wait for its client: it may have to make room.
  void waits();

 private:
  void work();
  void makeRoom();

  std::mutex lock_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> queue_;
  std::vector<std::thread> threads_;
  std::size_t idle_ = 0;  // threads
  std::set<Connection*> open_;
  bool isEnding_ = false;
  bool isFinishing_ = false;
};

}  // namespace TalvoConsentSDK::service
