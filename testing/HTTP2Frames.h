#pragma once

// What a server for tests needs of HTTP/2: frames, and the compression of headers.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct nghttp2_hd_inflater;

namespace TalvoConsentSDK {

/// One frame, its payload as it is on the wire. The type counts as in RFC 9113, from DATA (0) on.
struct HTTP2Frame {
  std::uint8_t type = 0;
  std::uint8_t flags = 0;
  std::uint32_t stream = 0;
  std::string payload;

  static constexpr std::uint8_t data = 0, headers = 1, settings = 4;       // types
  static constexpr std::uint8_t endsStream = 1, ack = 1, endsHeaders = 4;  // flags
  static constexpr std::uint8_t isPadded = 8, hasPriority = 32;
  static constexpr std::size_t headSize = 9;

  /// The type with this name, as "RST_STREAM"; throws when there is none.
  static std::uint8_t typeNamed(std::string_view name);

  /// The number of payload bytes that a frame's first nine bytes announce.
  static std::size_t payloadSize(std::string_view head);
  /// A whole frame's bytes.
  static HTTP2Frame read(std::string_view bytes);
  std::string bytes() const;
};

using HTTP2Fields = std::vector<std::pair<std::string, std::string>>;

/// A header without any compression.
std::string headerBlock(const HTTP2Fields& fields);

/// Reads the headers of one connection, each in one HEADERS frame.
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
