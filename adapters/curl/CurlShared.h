#pragma once

// What the transfers of a session have in common.

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "adapters/curl/CurlOrigins.h"
#include "adapters/curl/CurlSockets.h"
#include "adapters/curl/CurlTLS.h"

namespace TalvoConsentSDK {

/// A session's rules for its transfers.
struct CurlRules {
  bool allowsPlainHTTP = false;
  std::size_t maxReply = 0;
  std::optional<std::chrono::milliseconds> maxTimeout, maxTotalTimeout;
  std::string certificates;         // PEM text of the authorities to trust; empty for the system's
  bool hasCertificateFile = false;  // the system keeps its authorities in one file
  bool usesOpenSSL = false;         // libcurl uses it for TLS
  bool mayForgetReplies = false;    // libcurl before 8.0, over HTTP/2; see `remind`
};

/// A libcurl easy handle.
struct CurlHandleDeleter {
  void operator()(void* handle) const noexcept;
};
using CurlHandle = std::unique_ptr<void, CurlHandleDeleter>;

/// What the transfers of a session share. Not thread-safe. Must outlive their handles.
struct CurlShared {
  explicit CurlShared(CurlRules rules);

  struct Deleter {
    void operator()(void* share) const noexcept;
  };

  const CurlRules rules;
  CurlSockets sockets;
  CurlTLS tls;
  CurlOrigins origins;
  std::unique_ptr<void, Deleter> tlsSessions;
};

}  // namespace TalvoConsentSDK
