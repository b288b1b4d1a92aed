#include "testing/HTTP2Frames.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include <nghttp2/nghttp2.h>

namespace TalvoConsentSDK {

namespace {

constexpr std::array<std::string_view, 11> typeNames = {
    "DATA", "HEADERS", "PRIORITY",      "RST_STREAM",   "SETTINGS", "PUSH_PROMISE",
    "PING", "GOAWAY",  "WINDOW_UPDATE", "CONTINUATION", "ALTSVC"};

std::string bigEndian(std::size_t number, int bytes) {
  std::string text;
  for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) text += static_cast<char>(number >> shift);
  return text;
}

std::size_t number(std::string_view bytes) {
  std::size_t all = 0;
  for (const char byte : bytes) all = all << 8U | static_cast<std::uint8_t>(byte);
  return all;
}

// The text with its length before it, as RFC 7541 encodes a string literal.
std::string counted(std::string_view text) {
  std::string length;
  std::size_t left = text.size();
  if (left < 127) return static_cast<char>(left) + std::string(text);
  length = '\x7f';
  for (left -= 127; left >= 128; left /= 128) length += static_cast<char>(left % 128 + 128);
  return length + static_cast<char>(left) + std::string(text);
}

}  // namespace

std::uint8_t HTTP2Frame::typeNamed(std::string_view name) {
  const auto* const found = std::ranges::find(typeNames, name);
  if (found == typeNames.end()) throw std::runtime_error("No frame: " + std::string(name));
  return static_cast<std::uint8_t>(found - typeNames.begin());
}

std::size_t HTTP2Frame::payloadSize(std::string_view head) {
  return number(head.substr(0, 3));
}

HTTP2Frame HTTP2Frame::read(std::string_view bytes) {
  HTTP2Frame frame;
  frame.type = static_cast<std::uint8_t>(bytes.at(3));
  frame.flags = static_cast<std::uint8_t>(bytes.at(4));
  frame.stream = static_cast<std::uint32_t>(number(bytes.substr(5, 4)));
  frame.payload = bytes.substr(headSize);
  return frame;
}

std::string HTTP2Frame::bytes() const {
  return bigEndian(payload.size(), 3) + bigEndian(type, 1) + bigEndian(flags, 1) + bigEndian(stream, 4) +
         payload;
}

std::string headerBlock(const HTTP2Fields& fields) {
  std::string block;
  for (const auto& [name, value] : fields) block += '\0' + counted(name) + counted(value);
  return block;
}

HTTP2HeaderReader::HTTP2HeaderReader() {
  nghttp2_hd_inflater* made = nullptr;
  if (nghttp2_hd_inflate_new(&made) != 0) throw std::bad_alloc();
  inflater_.reset(made);
}

void HTTP2HeaderReader::Deleter::operator()(nghttp2_hd_inflater* inflater) const noexcept {
  nghttp2_hd_inflate_del(inflater);
}

HTTP2Fields HTTP2HeaderReader::read(const HTTP2Frame& frame) {
  std::string_view block = frame.payload;
  if (frame.flags & HTTP2Frame::isPadded) {
    block.remove_suffix(static_cast<std::uint8_t>(block.at(0)));
    block.remove_prefix(1);
  }
  if (frame.flags & HTTP2Frame::hasPriority) block.remove_prefix(5);
  HTTP2Fields fields;
  for (int flags = 0; !(flags & NGHTTP2_HD_INFLATE_FINAL);) {
    nghttp2_nv field{};
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(block.data());
    const auto used = nghttp2_hd_inflate_hd2(inflater_.get(), &field, &flags, bytes, block.size(), 1);
    if (used < 0) throw std::runtime_error("A client's header cannot be read");
    block.remove_prefix(static_cast<std::size_t>(used));
    const auto text = [](const std::uint8_t* first, std::size_t size) {
      return std::string(reinterpret_cast<const char*>(first), size);
    };
    if (flags & NGHTTP2_HD_INFLATE_EMIT)
      fields.emplace_back(text(field.name, field.namelen), text(field.value, field.valuelen));
  }
  nghttp2_hd_inflate_end_headers(inflater_.get());
  return fields;
}

}  // namespace TalvoConsentSDK
