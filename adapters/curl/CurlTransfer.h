#pragma once

// One request on its way through libcurl, redirects included. It knows what may be sent where and what counts
// as an answer; it does not know of threads or of other requests.

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
#include "adapters/curl/CurlSockets.h"
#include "adapters/curl/CurlTLS.h"

struct curl_slist;
struct Curl_URL;

namespace TalvoConsentSDK {

/// A session's rules for its transfers.
struct CurlRules {
  bool allowsPlainHTTP = false;
  std::size_t maxReply = 0;
  std::string certificates;         // PEM text of the authorities to trust; empty: those of the system
  bool hasCertificateFile = false;  // the system keeps its authorities in one file
  bool usesOpenSSL = false;         // libcurl does, for TLS
  bool mayForgetReplies = false;    // libcurl does, over HTTP/2
};

/// A libcurl easy handle.
struct CurlHandleDeleter {
  void operator()(void* handle) const noexcept;
};
using CurlHandle = std::unique_ptr<void, CurlHandleDeleter>;

/// A request and its libcurl easy handle. Used by one thread.
class CurlTransfer {
 public:
  using Clock = std::chrono::steady_clock;
  using Outcome = Result<platform::URLResponse>;

  /// `rules`, `sockets` and `tls` outlive the transfer. `handle` is a spare one of an earlier transfer of the
  /// same session, or null.
  CurlTransfer(const CurlRules& rules, CurlSockets& sockets, CurlTLS& tls, platform::URLRequest request,
               CurlHandle handle);
  CurlTransfer(const CurlTransfer&) = delete;
  CurlTransfer& operator=(const CurlTransfer&) = delete;

  /// The easy handle.
  void* handle() const noexcept { return handle_.get(); }

  /// Gives the handle away once the transfer has ended; null when it is not to be used again.
  CurlHandle takeHandle() { return wasRepeated_ ? nullptr : std::move(handle_); }

  /// Makes the handle ready to be run. Nothing, or why the request is refused.
  std::optional<PlatformError> prepare();

  /// Judges the end of the handle's run, given its `CURLcode`. Nothing when that was a redirect, or a
  /// connection that must not be used again: the handle is then ready for its next run.
  std::optional<Outcome> finish(int code);

  /// Before 8.0, libcurl may have read a part of a reply over HTTP/2 and forget it until something else
  /// moves. This has it look again when nothing has moved for some time. Call it every `reminder`.
  void remind();
  static constexpr std::chrono::milliseconds reminder{500};

  /// When the transfer has gone without progress for too long, unless something moves before.
  Clock::time_point deadline() const noexcept { return lastProgress_ + patience_; }

  /// What to report when the deadline has passed.
  PlatformError idleError() const;

  /// The local port of the connection that it uses or used last; 0 as long as there is none.
  int localPort() const noexcept { return localPort_; }

 private:
  struct ListDeleter {
    void operator()(curl_slist* list) const noexcept;
  };

  // A URL as libcurl reads it, so that what is judged is what is contacted.
  struct Target {
    struct Deleter {
      void operator()(Curl_URL* parsed) const noexcept;
    };
    std::unique_ptr<Curl_URL, Deleter> url;
    std::string scheme, host;

    std::string part(int name) const;  // a CURLUPart
    static std::optional<Target> parse(const char* url);
    bool isLoopback() const;
    bool sharesOrigin(const Target& other) const;
  };

  // Whatever changes here is progress: times in microseconds, 0 until reached, and bytes.
  struct Progress {
    std::int64_t steps = 0;  // the times at which names were resolved, connections made and secured, added
    std::size_t headerBytes = 0;
    std::int64_t received = 0, sent = 0;

    bool operator==(const Progress&) const = default;
  };

  static CurlHandle makeHandle(const CurlRules& rules, CurlTLS& tls);

  std::optional<PlatformError> follow(int status, const char* location);
  std::optional<PlatformError> configure();
  void configureConnection();
  void configureMessage();
  bool maySend(int localPort);
  const SSL* tlsConnection() const;
  std::int64_t timeOf(int step) const;  // a CURLINFO
  bool noteProgress(std::int64_t received, std::int64_t sent);
  std::size_t refuse(PlatformError flaw);
  std::size_t receive(std::string_view bytes);
  bool isCompressedTooWell(std::size_t size, std::size_t uncounted) const;
  std::size_t receiveHeader(std::string_view line);

  const CurlRules& rules_;
  CurlSockets& sockets_;
  CurlTLS& tls_;
  platform::URLRequest request_;
  const Clock::duration patience_;
  const bool keepsOrigin_;  // through all redirects: it began as a POST or PUT
  CurlHandle handle_;

  std::optional<Target> target_;
  int redirects_ = 0;
  bool leftOrigin_ = false;
  bool avoidsPool_ = false;
  bool wasRepeated_ = false;  // by libcurl, whose handle never forgets how often it was

  // Of the current run.
  std::unique_ptr<curl_slist, ListDeleter> headers_;
  std::array<char, 256> errorText_{};  // CURL_ERROR_SIZE
  CurlBody body_;
  CurlHeader header_;
  int localPort_ = 0;
  bool isNewConnection_ = false;
  bool isConnected_ = false;
  bool isSecondAttempt_ = false;
  bool isStaleConnection_ = false;
  std::optional<PlatformError> flaw_;  // for which the reply is refused
  Progress progress_;
  Clock::time_point lastProgress_;
};

}  // namespace TalvoConsentSDK
