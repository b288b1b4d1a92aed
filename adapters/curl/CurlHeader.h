#pragma once

// What a reply says before its body, judged line by line as it arrives.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/Error.h"

namespace TalvoConsentSDK {

/// The header of one reply, after those of any interim replies.
class CurlHeader {
 public:
  /// `maxBody` is a session's limit; there is none for a reply that has no body whatever its header says.
  explicit CurlHeader(std::optional<std::size_t> maxBody = std::nullopt) : maxBody_(maxBody) {}

  /// Whether libcurl may read this piece of a line, of which it has said nothing yet. A first line that is
  /// folded may not: to libcurl 7.88 it goes on with a line of the reply before, which is freed.
  bool allows(std::string_view piece);

  /// Takes a line as libcurl hands it over, also of what trails a body. Gives why the reply is refused.
  std::optional<PlatformError> add(std::string_view line);

  /// How many bytes have arrived, interim replies and what trails the body included.
  std::size_t bytes() const noexcept { return bytes_; }

  /// Whether the line that ends it has arrived. libcurl takes a header that was cut off for a whole one.
  bool isWhole() const noexcept { return isWhole_; }

  /// The reply's own, after those of interim replies; 0 for what is no number.
  int status() const noexcept { return status_; }

 private:
  std::optional<PlatformError> judgeLength(std::string_view value);

  std::optional<std::size_t> maxBody_;
  std::size_t bytes_ = 0;
  int status_ = 0;
  std::string length_;  // as declared
  bool isWhole_ = false;
  bool isAtStart_ = true;      // the next line is that with the status
  bool isWithinLine_ = false;  // the next piece does not begin one
  bool hasLine_ = false;       // other than those with a status
};

/// An error of the domain "CURL"; `code` is a `CURLcode`.
PlatformError curlError(int code, std::string text);

/// What to report of a reply whose body or header is larger than it may be.
PlatformError tooLargeError(std::size_t maxBody);
PlatformError tooLargeHeaderError();
PlatformError tooWellCompressedError(std::size_t maxDecompression);

}  // namespace TalvoConsentSDK
