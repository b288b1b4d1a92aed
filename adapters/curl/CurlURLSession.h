#pragma once

// HTTP on libcurl. All requests of a session share one worker thread and its pool of connections.

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/URLSession.h"

#include "adapters/threads/ParkedThread.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// What a host may change about a `CurlURLSession`.
struct CurlOptions {
  CurlOptions() {}

  std::optional<std::filesystem::path> certificates;  // PEM file of authorities trusted besides the system's
  bool allowsPlainHTTP = false;                       // to every host; the loopback host needs no permission
  std::size_t maxReply = 64U << 20U;                  // of a body, in bytes, once decompressed
};

/// Runs requests on libcurl and calls completions on its worker thread, one at a time: one that blocks holds
/// up all others, one that throws is contained.
///
/// A request ends with an error when nothing has moved for its `timeout`: no address found, connection made,
/// handshake done, byte sent or received. Certificate and host are verified, with TLS 1.2 or later. Up to 20
/// redirects are followed, never from https to anything else; to another origin the headers Authorization,
/// Proxy-Authorization and Cookie do not go along, and a POST or PUT ends instead. A POST or PUT goes out
/// once, on a fresh connection, and again only with a redirect of 307 or 308; other requests share
/// connections, and a GET may be repeated. Proxies come from the environment, as libcurl has it, but the
/// loopback host is always reached directly.
///
/// Errors are `PlatformError`s of the domain "CURL" whose code is libcurl's (a `CURLcode`), also where the
/// session itself ends a request: plain http or another scheme (1), a request that cannot be sent as it is
/// (3, 43), a reply with two lengths (8) or cut off in its header (18), no progress (28), a closed session
/// (42), too many redirects or one to another origin (47), a reply that is too large, or its header larger
/// than 256 KiB (63), a POST or PUT that would have to be sent again (65). Their texts hold nothing of a
/// body, a header's value, a path or a query.
class CurlURLSession : public platform::URLSession {
 public:
  /// Throws a `PlatformError` when libcurl cannot be initialised, the process is out of descriptors, or
  /// `certificates` cannot be read.
  explicit CurlURLSession(const CurlOptions& options = {});

  /// Ends what is in flight: those completions hear of a closed session before the destructor returns. May
  /// wait for a completion that is running; when called by one, it does not wait, and the others hear later.
  ~CurlURLSession() override;

  void run(platform::URLRequest request, Completion completion) override;

 private:
  class Worker;

  const std::shared_ptr<Worker> worker_;
  std::unique_ptr<ParkedThread> thread_;
};

}  // namespace TalvoConsentSDK
