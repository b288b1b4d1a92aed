#pragma once

// The parts of HTTP/2 that a test server needs: frames and header compression.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct nghttp2_hd_inflater;

namespace TalvoConsentSDK {

/// One frame with its payload as sent on the wire. Types are numbered as in RFC 9113, starting with DATA (0).
struct HTTP2Frame {
  std::uint8_t type = 0;
  std::uint8_t flags = 0;
  std::uint32_t stream = 0;
  std::string payload;

  static constexpr std::uint8_t data = 0, headers = 1, settings = 4;       // types
  static constexpr std::uint8_t endsStream = 1, ack = 1, endsHeaders = 4;  // flags
  static constexpr std::uint8_t isPadded = 8, hasPriority = 32;
  static constexpr std::size_t headSize = 9;

  /// Returns the number of the type with this name, such as "RST_STREAM". Throws if no type has it.
  static std::uint8_t typeNamed(std::string_view name);

  /// The payload size that the first nine bytes of a frame declare.
  static std::size_t payloadSize(std::string_view head);
  /// Reads `bytes` as exactly one frame.
  static HTTP2Frame read(std::string_view bytes);
  std::string bytes() const;
};

using HTTP2Fields = std::vector<std::pair<std::string, std::string>>;

/// Encodes a header without compression.
std::string headerBlock(const HTTP2Fields& fields);

/// Decodes the headers of one connection. Each must fit in one HEADERS frame.
class HTTP2HeaderReader {
 public:
  HTTP2HeaderReader();

  HTTP2Fields read(const HTTP2Frame& frame);

 private:
  struct Deleter {
    void operator()(nghttp2_hd_inflater* inflater) const noexcept;
  };
  std::unique_ptr<nghttp2_hd_inflater, Deleter> inflater_;
};

}  // namespace TalvoConsentSDK
