#pragma once

// One request on its way through libcurl, including redirects. It decides what may be sent where and what
// counts as an answer; it knows nothing about threads or other requests.

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "TalvoConsentSDK/platform/URLSession.h"

#include "adapters/curl/CurlBody.h"
#include "adapters/curl/CurlHeader.h"
#include "adapters/curl/CurlShared.h"
#include "adapters/curl/CurlTarget.h"

struct curl_slist;

namespace TalvoConsentSDK {

/// A request and its libcurl easy handle. Not thread-safe.
class CurlTransfer {
 public:
  using Clock = std::chrono::steady_clock;
  using Outcome = Result<platform::URLResponse>;

  /// The total limit of `request` counts from `start`. `handle` is the handle of an earlier transfer of the
  /// same session, to be reused, or null.
  CurlTransfer(CurlShared& shared, platform::URLRequest request, Clock::time_point start, CurlHandle handle);
  CurlTransfer(const CurlTransfer&) = delete;
  CurlTransfer& operator=(const CurlTransfer&) = delete;

  void* handle() const noexcept { return handle_.get(); }

  /// Moves the handle out once the transfer has ended.
  CurlHandle takeHandle();

  /// Whether another transfer may use the handle.
  bool isHandleReusable() const noexcept { return !wasRepeated_ && !isHandleRemembered(); }

  /// Whether the handle must not be freed before its connection is closed. If an HTTP/2 request ends before
  /// its reply begins, it may still wait to be sent. libcurl 7.88 then keeps a pointer to its handle.
  bool isHandleRemembered() const noexcept { return isHTTP2_ && header_.bytes() == 0; }

  /// Prepares the handle for its run. Returns an error if the request is refused.
  std::optional<PlatformError> prepare();

  /// Evaluates the handle's run, which ended with the `CURLcode` `code`. Returns nothing if the handle must
  /// run again, because of a redirect or a connection that must not be reused. The handle is then ready for
  /// its next run.
  std::optional<Outcome> finish(int code);

  /// Before 8.0, libcurl may read part of a reply over HTTP/2 and not process it until something else
  /// happens. If there has been no progress for `reminder`, this makes libcurl look again. Call it every
  /// `reminder`.
  void remind();
  static constexpr std::chrono::milliseconds reminder{500};

  /// Makes libcurl look for input at once and send what it has buffered, if the transfer uses HTTP/2.
  void wakeUp();

  bool isCancelled() const { return request_.cancellation && request_.cancellation->isCancelled(); }

  /// Whether there has been no progress for so long that the connection may be dead.
  bool isSilent() const { return Clock::now() - lastProgress_ >= std::chrono::seconds(2); }

  /// The time at which the transfer times out if it makes no progress until then.
  Clock::time_point deadline() const noexcept { return std::min(lastProgress_ + idleLimit_, end_); }

  /// The error to report when the deadline has passed.
  PlatformError timeoutError() const;

  /// Call this when the deadline has passed. If the transfer still has no connection, it may have waited for
  /// one that another request began to open and that hangs. The next requests to its origin then do not wait.
  void noteWaitInVain();

  /// The local port of the current run's latest connection; 0 before the run has one.
  int localPort() const noexcept { return localPort_; }

 private:
  struct ListDeleter {
    void operator()(curl_slist* list) const noexcept;
  };

  // Any change to these values counts as progress.
  struct Progress {
    std::int64_t steps = 0;  // sum of the times to resolve, connect and secure, in microseconds
    std::size_t headerBytes = 0;
    std::int64_t received = 0, sent = 0;

    bool operator==(const Progress&) const = default;
  };

  static CurlHandle makeHandle(CurlShared& shared);

  std::optional<PlatformError> follow(int status, const char* location);
  std::optional<PlatformError> configure();
  void configureConnection();
  void configureMessage();
  bool maySend(int localPort);
  const SSL* tlsConnection() const;
  std::int64_t timeOf(int step) const;  // a CURLINFO
  bool noteProgress(std::int64_t received, std::int64_t sent);
  std::size_t refuse(PlatformError reason);
  std::size_t receive(std::string_view bytes);
  bool isCompressedTooWell(std::size_t size, std::size_t uncounted) const;
  std::size_t receiveHeader(std::string_view line);

  CurlShared& shared_;
  const CurlRules& rules_;
  platform::URLRequest request_;
  const std::chrono::milliseconds idleLimit_;
  const std::optional<std::chrono::milliseconds> totalLimit_;
  const Clock::time_point end_;
  const bool keepsOrigin_;  // it began as a POST or PUT, so no redirect may lead to another origin
  CurlHandle handle_;

  std::optional<CurlTarget> target_;
  int redirects_ = 0;
  bool leftOrigin_ = false;
  bool avoidsPool_ = false;
  bool wasRepeated_ = false;  // libcurl repeated the request; the handle counts repeats, so do not reuse it

  // The state of the current run.
  std::unique_ptr<curl_slist, ListDeleter> headers_;
  std::array<char, 256> errorText_{};  // CURL_ERROR_SIZE
  CurlBody body_;
  CurlHeader header_;
  int localPort_ = 0;
  bool isNewConnection_ = false;
  bool isConnected_ = false;
  bool isHTTP2_ = false;
  bool isSecondAttempt_ = false;
  bool isStaleConnection_ = false;
  std::optional<PlatformError> rejection_;  // why the reply is refused
  Progress progress_;
  Clock::time_point lastProgress_;
};

}  // namespace TalvoConsentSDK
