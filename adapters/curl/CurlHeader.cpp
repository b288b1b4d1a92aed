#include "adapters/curl/CurlHeader.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <system_error>
#include <utility>

#include <curl/curl.h>
#include <strings.h>

#include "TalvoConsentSDK/base/ASCII.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

// Below libcurl's own limit, which some versions lack and which does not cover trailers.
constexpr std::size_t maxBytes = 256U << 10U;

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  return first == text.npos ? "" : text.substr(first, text.find_last_not_of(blanks) + 1 - first);
}

}  // namespace

bool isHeaderName(std::string_view name) {
  return !name.empty() && std::ranges::all_of(name, [](char c) {
    const char lower = lowercased(c);
    return (lower >= 'a' && lower <= 'z') || (c >= '0' && c <= '9') ||
           std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos;
  });
}

PlatformError curlError(int code, std::string text) {
  return {"CURL", code, std::move(text)};
}

PlatformError tooLargeError(std::size_t maxBody) {
  return curlError(CURLE_FILESIZE_EXCEEDED, "The reply is larger than " + std::to_string(maxBody) + " bytes");
}

PlatformError tooLargeHeaderError() {
  return curlError(CURLE_FILESIZE_EXCEEDED,
                   "The reply's header is larger than " + std::to_string(maxBytes) + " bytes");
}

PlatformError tooWellCompressedError(std::size_t maxDecompression) {
  return curlError(
      CURLE_FILESIZE_EXCEEDED,
      "The reply is larger than 1 MB and " + std::to_string(maxDecompression) + " times the bytes received");
}

bool CurlHeader::allows(std::string_view piece) {
  const bool isFolded = !isWithinLine_ && (piece.starts_with(' ') || piece.starts_with('\t'));
  isWithinLine_ = !piece.ends_with('\n');
  return hasLine_ || !isFolded;
}

std::optional<PlatformError> CurlHeader::add(std::string_view line) {
  bytes_ += line.size();
  if (bytes_ > maxBytes) return tooLargeHeaderError();
  if (isWhole_) return std::nullopt;
  if (std::exchange(isAtStart_, false) && line.starts_with("HTTP/")) {
    const std::string_view status = trimmed(line.substr(std::min(line.find(' '), line.size())));
    status_ = 0;
    std::from_chars(status.data(), status.data() + status.size(), status_);
    length_.clear();
    headers_.clear();
    last_ = nullptr;
  } else {
    keep(line);
    if (bytes_ > line.size() && line.find_first_of(" \t\r\n") != 0) hasLine_ = true;
  }
  // A line of spaces or tabs continues the previous line, so it does not end the header.
  isAtStart_ = line.find_first_not_of("\r\n") == line.npos;
  isWhole_ = (status_ >= 200 || status_ == 101) && isAtStart_;
  constexpr std::string_view name = "Content-Length:";
  if (line.size() < name.size() || strncasecmp(line.data(), name.data(), name.size()) != 0)
    return std::nullopt;
  return checkLength(trimmed(line.substr(name.size())));
}

void CurlHeader::keep(std::string_view line) {
  if (line.starts_with(' ') || line.starts_with('\t')) {
    if (last_) last_->append(" ").append(trimmed(line));
    return;
  }
  last_ = nullptr;
  const std::size_t colon = line.find(':');
  const auto name = trimmed(line.substr(0, colon));
  if (colon == line.npos || !isHeaderName(name)) return;
  const auto [header, isFirst] = headers_.try_emplace(std::string(name));
  last_ = &header->second;
  if (!isFirst) *last_ += ", ";
  *last_ += trimmed(line.substr(colon + 1));
}

// When a reply declares two lengths, libcurl uses the second one, so part of a body could pass as the whole.
std::optional<PlatformError> CurlHeader::checkLength(std::string_view value) {
  if (!length_.empty() && length_ != value) {
    return curlError(CURLE_WEIRD_SERVER_REPLY, "The reply declares two different lengths");
  }
  length_ = value;
  std::uint64_t bytes = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), bytes);
  const bool isTooLarge = error == std::errc::result_out_of_range || bytes > maxBody_.value_or(bytes);
  if (isTooLarge && maxBody_ && status_ != 204 && status_ != 304) return tooLargeError(*maxBody_);
  return std::nullopt;
}

}  // namespace TalvoConsentSDK
