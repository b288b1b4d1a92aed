#pragma once

// HTTP through libcurl. All requests of a session share one worker thread and its connection pool.

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/URLSession.h"

#include "adapters/threads/ParkedThread.h"

namespace TalvoConsentSDK TALVO_EXPORT {

struct CurlOptions {
  CurlOptions() {}

  std::optional<std::filesystem::path> certificates;  // PEM file; added to the system's authorities
  bool allowsPlainHTTP = false;                       // to every host; loopback is always allowed
  std::size_t maxReply = 64U << 20U;                  // limit of a decompressed body, in bytes

  /// Upper limits for the `timeout` and the `totalTimeout` of every request. A request may set lower ones.
  std::optional<std::chrono::milliseconds> maxTimeout, maxTotalTimeout;
};

/// Runs requests through libcurl and calls completions on its worker thread, one at a time. A completion that
/// blocks delays all other requests; exceptions from completions are caught.
///
/// A request fails when it makes no progress for its `timeout`, and when its `totalTimeout` has passed since
/// `run`. Progress is a resolved name, a connection, a handshake, or a byte sent or received. TLS is 1.2 or
/// later, and certificate and host name are verified. Up to 20 redirects are followed, but never from https
/// to another scheme. A redirect to another origin drops the headers Authorization, Proxy-Authorization and
/// Cookie, and makes a POST or PUT fail. A POST or PUT is sent once, on a fresh connection, and again only
/// for a redirect with status 307 or 308. libcurl may repeat other requests. libcurl takes proxies from the
/// environment; loopback hosts are always reached directly.
///
/// Over HTTP/2, requests to one origin share a connection; requests that start together wait until the first
/// one has opened it. Over HTTP/1.1, each request that finds no free connection opens one at once. But as
/// long as it is unknown which version an https origin supports, requests wait for its first handshake. If
/// that handshake hangs, they wait until the request that began it ends, or until their own limits. Once one
/// of them has reached its limit, later requests open connections at once. New connections resume
/// TLS sessions. As libcurl does by default, a session uses a connection again if it was idle for at most 118
/// seconds, and keeps a resolved name for 60 seconds. libcurl's clock may stand still while the device
/// sleeps. So a request after a sleep may get a connection that the network has dropped, and wait there until
/// it times out. The next request then opens a new connection.
///
/// If a request is cancelled, an HTTP/1.1 connection is closed. Over HTTP/2 only the stream is reset, and the
/// connection is used again, unless the request was alone on it and had made no progress for two seconds.
///
/// A reply's headers are as the service sent them, although its body is decompressed. The URL of a reply is
/// the request's own unless a redirect was followed. It is absent if the class `URL` cannot parse the URL
/// that a redirect led to.
///
/// Errors are `PlatformError`s of the domain "CURL" with a `CURLcode` as their code. The session itself also
/// ends requests with these codes: 1 for plain http or another scheme, 2 for a request that libcurl does not
/// accept, 3 and 43 for a request or redirect that cannot be sent as it is, 8 for a reply whose header cannot
/// be read or declares two lengths, 18 for a reply cut off in its header, 27 if there is no memory to
/// return the reply, 28 for no progress or a reply that took too long, 42 for a closed session, 47 for too
/// many redirects or a POST or PUT redirected to another origin, 63 for a reply that is too large, has a
/// header of more than 256 KiB, or decompresses to more than both 1 MB and 50 times the bytes received, and
/// 65 for a POST or PUT that would have to be sent again. Error texts contain no part of a body, header
/// value, path or query.
class CurlURLSession : public platform::URLSession {
 public:
  /// Throws a `PlatformError` if libcurl cannot be initialised, the process is out of file descriptors, or
  /// `certificates` cannot be read.
  explicit CurlURLSession(const CurlOptions& options = {});

  /// Ends all requests in flight: their completions receive the error of a closed session before the
  /// destructor returns. Waits for a completion that is running. When a completion calls the destructor, the
  /// destructor does not wait, and the remaining completions are called later.
  ~CurlURLSession() override;

  void run(platform::URLRequest request, Completion completion) override;

 private:
  class Worker;

  const std::shared_ptr<Worker> worker_;
  std::unique_ptr<ParkedThread> thread_;
};

}  // namespace TalvoConsentSDK
