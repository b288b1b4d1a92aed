#pragma once

// Checks and collects the header of a reply line by line as it arrives.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "TalvoConsentSDK/base/Error.h"
#include "TalvoConsentSDK/platform/URLSession.h"

namespace TalvoConsentSDK {

/// The header of one reply, including the headers of interim replies (1xx) before it.
class CurlHeader {
 public:
  /// `maxBody` is the session's limit in bytes. Pass nothing for a reply that never has a body, whatever
  /// length its header declares.
  explicit CurlHeader(std::optional<std::size_t> maxBody = std::nullopt) : maxBody_(maxBody) {}
  CurlHeader(CurlHeader&&) = default;
  CurlHeader& operator=(CurlHeader&&) = default;

  /// Whether libcurl may parse this piece of a line, which it has not parsed yet. A folded first line is not
  /// allowed: libcurl 7.88 would append it to a line of the previous reply, which has been freed.
  bool allows(std::string_view piece);

  /// Adds a line as libcurl passes it on; trailer lines count too. Returns an error if the reply must be
  /// refused.
  std::optional<PlatformError> add(std::string_view line);

  /// The number of bytes received, including interim replies and trailers.
  std::size_t bytes() const noexcept { return bytes_; }

  /// Whether the empty line that ends the header has arrived. libcurl itself accepts a header that was cut
  /// off.
  bool isWhole() const noexcept { return isWhole_; }

  /// The latest status, which is the final one once the header is whole; 0 if it is not a number.
  int status() const noexcept { return status_; }

  /// Moves out the headers of the latest status, without trailers. Lines that are not headers are left out.
  platform::HTTPHeaders takeHeaders() { return std::move(headers_); }

 private:
  void keep(std::string_view line);
  std::optional<PlatformError> checkLength(std::string_view value);

  std::optional<std::size_t> maxBody_;
  std::size_t bytes_ = 0;
  int status_ = 0;
  std::string length_;  // as declared
  platform::HTTPHeaders headers_;
  std::string* last_ = nullptr;  // the value that a folded line continues
  bool isWhole_ = false;
  bool isAtStart_ = true;      // the next line is the status line
  bool isWithinLine_ = false;  // the next piece continues a line
  bool hasLine_ = false;       // a line other than a status line has arrived
};

/// Whether a header can have this name.
bool isHeaderName(std::string_view name);

/// An error of the domain "CURL"; `code` is a `CURLcode`.
PlatformError curlError(int code, std::string text);

PlatformError tooLargeError(std::size_t maxBody);
PlatformError tooLargeHeaderError();
PlatformError tooWellCompressedError(std::size_t maxDecompression);

}  // namespace TalvoConsentSDK
