#pragma once

// The worker thread's side of a session.

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "adapters/curl/CurlShared.h"
#include "adapters/curl/CurlTransfer.h"
#include "adapters/curl/CurlURLSession.h"

namespace TalvoConsentSDK {

/// The state shared by the session and its thread. `add`, `noteCancellation`, `wake` and `close` may be
/// called on any thread; the rest belongs to the worker thread.
///
/// When the process exits, the TLS library is shut down while the thread may still be running. So the thread
/// holds `inCurl_` whenever it is inside libcurl, and checks `stop` before it enters. Once `wake` has held
/// `inCurl_` with `stop` set, the thread does not enter libcurl again, except in `end`, which runs only if
/// the session was closed. Completions run without `inCurl_`, so a completion that never returns does not
/// delay the exit.
class CurlURLSession::Worker {
 public:
  explicit Worker(CurlRules rules);

  // `end` has freed libcurl's handle, unless the process is exiting.
  ~Worker() = default;

  void add(platform::URLRequest request, Completion completion);

  /// Call this after a request has been cancelled, whether or not it is still running.
  void noteCancellation();

  /// Call this with `stop` set: when it returns, the thread has left libcurl. That can take seconds on a busy
  /// device, because the thread may be reading certificates or making a TLS handshake. If the process ended
  /// meanwhile, it would crash. The limit of a minute is only for a libcurl that never returns.
  void wake();

  /// Makes `run` end all requests when `stop` is set. Without this call, `run` leaves them unanswered, as
  /// when the process exits.
  void close() { closed_ = true; }

  void run(const std::atomic<bool>& stop);

 private:
  using Clock = CurlTransfer::Clock;
  static constexpr std::size_t maxSpare = 32;  // about 6 KB each

  struct Arrival {
    platform::URLRequest request;
    Completion completion;
    Clock::time_point time;
  };
  struct Running {
    std::unique_ptr<CurlTransfer> transfer;
    Completion completion;
  };
  struct Remembered {  // see `CurlTransfer::isHandleRemembered`
    int port;
    CurlHandle handle;
  };
  struct Ending {
    Completion completion;
    CurlTransfer::Outcome outcome;
  };

  bool setWaits(bool waits);
  bool takeCancellation();
  std::vector<Arrival> takeArrivals();
  void begin(std::vector<Ending>& endings);
  void enter(void* handle, std::vector<Ending>& endings);
  void finish(std::vector<Ending>& endings);
  void leaveConnection(void* failed);
  std::vector<void*> handlesWhere(const std::function<bool(const CurlTransfer&)>& isMeant) const;
  void endCancelled(std::vector<Ending>& endings);
  void endOverdue(std::vector<Ending>& endings);
  void endEarly(void* handle, PlatformError reason, std::vector<Ending>& endings);
  void remind();
  int untilNextDeadline() const;
  void retire(void* handle, CurlTransfer::Outcome outcome, std::vector<Ending>& endings);
  void freeRemembered();
  CurlHandle takeSpare();
  void end(std::vector<Ending>& endings);
  void report(std::vector<Ending>& endings, const std::atomic<bool>& stop);

  std::atomic<bool> closed_ = false;
  CurlShared shared_;
  std::timed_mutex inCurl_;
  std::unordered_map<void*, Running> running_;  // by easy handle
  std::vector<CurlHandle> spare_;
  std::vector<Remembered> remembered_;
  std::mutex lock_;  // guards the members below; held only briefly
  std::vector<Arrival> arrivals_;
  bool hasCancellation_ = false;
  bool waits_ = false;  // the thread must be woken to see an arrival or a cancellation
  void* multi_;         // a CURLM; null once freed
};

}  // namespace TalvoConsentSDK
