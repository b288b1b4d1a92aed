#pragma once

// Helpers for the fuzz targets. An input is a list of parts separated by NUL bytes. A document cannot contain
// NUL, so it can be a seed unchanged.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/models/JSONCoding.h"

namespace TalvoConsentSDK::fuzzing {

/// Aborts, which makes the fuzzer report the input, unless `condition` holds.
inline void require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "Failed: %s\n", what);
  std::abort();
}

/// One input, split into its parts.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) {
    const std::string_view all(reinterpret_cast<const char*>(data), size);
    for (std::size_t at = 0; at <= all.size();) {
      const std::size_t end = std::min(all.find('\0', at), all.size());
      parts_.emplace_back(all.substr(at, end - at));
      at = end + 1;
    }
  }

  /// The next part; empty if there is none left.
  std::string text() { return next_ < parts_.size() ? parts_[next_++] : std::string(); }

  /// The next part as a record, or `otherwise` if it cannot be decoded.
  template <class Value, class Record = Value>
  Value record(Value otherwise = {}) {
    auto decoded = JSONDecoder().decode<Record>(text());
    if (!decoded) return otherwise;
    return *std::move(decoded);
  }

 private:
  std::vector<std::string> parts_;
  std::size_t next_ = 0;
};

/// Reads small numbers from a text; zeros after its end.
class Choices {
 public:
  explicit Choices(std::string text) : text_(std::move(text)) {}

  bool isAtEnd() const { return at_ >= text_.size(); }

  /// From 0 to `limit` - 1.
  std::size_t below(std::size_t limit) {
    return isAtEnd() ? 0 : static_cast<unsigned char>(text_[at_++]) % limit;
  }

 private:
  std::string text_;
  std::size_t at_ = 0;
};

/// Checks that a decoded record can be encoded and decodes to the same record again. Returns its JSON.
template <class Record>
std::string recoded(const Record& record) {
  const auto written = JSONEncoder().encode(record);
  require(written.has_value(), "a decoded record can be encoded");
  const auto again = JSONDecoder().decode<Record>(*written);
  require(again.has_value(), "encoded JSON can be decoded");
  require(JSONEncoder().encode(*again).value() == *written, "decoding and encoding changes nothing");
  return *written;
}

}  // namespace TalvoConsentSDK::fuzzing
