#include "TalvoConsentSDK/models/json/JSONWriter.h"

#include <array>
#include <charconv>
#include <cmath>

#include "TalvoConsentSDK/base/unicode/Characters.h"
#include "TalvoConsentSDK/models/CodingError.h"
#include "TalvoConsentSDK/models/json/JSONNode.h"

namespace TalvoConsentSDK::json {

namespace {

CodingError invalid(const char* detail) {
  return {CodingError::Kind::invalidValue, "", detail};
}

struct TextTraits {
  bool isASCII;
  bool needsEscapes;
};

// Has no branch in its loop, so that compilers can process many bytes at a time.
TextTraits traitsOf(std::string_view text) {
  unsigned char all = 0;
  unsigned char escapes = 0;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    all |= byte;
    escapes |= static_cast<unsigned char>((byte < 0x20) | (byte == '"') | (byte == '\\'));
  }
  return {all < 0x80, escapes != 0};
}

}  // namespace

void Writer::integer(std::int64_t content) {
  std::array<char, 24> digits{};
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), content);
  value({digits.data(), end});
}

// Writes the shortest text that reads back as the same double. Adds a fraction to what would look like an
// integer, so that no reader takes it for an integer beyond 64 bits.
void Writer::number(double content) {
  if (!std::isfinite(content)) throw invalid("JSON has no NaN and no infinity");
  std::array<char, 32> digits{};
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), content);
  std::string text(digits.data(), end);
  if (text.find_first_of(".e") == std::string::npos) text += ".0";
  value(text);
}

void Writer::string(std::string_view content) {
  separate();
  quote(content);
  needsComma_ = true;
}

void Writer::key(std::string_view content) {
  separate();
  quote(content);
  text_ += ':';
  needsComma_ = false;
}

// Checks the depth only when something is written into a level, because readers do not count an empty one.
void Writer::separate() {
  if (depth_ > maxDepth) throw invalid("The value is nested too deeply");
  if (needsComma_) text_ += ',';
}

void Writer::value(std::string_view literal) {
  separate();
  text_ += literal;
  needsComma_ = true;
}

void Writer::quote(std::string_view content) {
  const TextTraits traits = traitsOf(content);
  if (!traits.isASCII && !isUTF8(content)) throw invalid("The text is not valid UTF-8");
  if (!traits.needsEscapes) {
    text_ += '"';
    text_ += content;
    text_ += '"';
    return;
  }
  constexpr std::string_view hex = "0123456789abcdef";
  text_ += '"';
  for (const char c : content) {
    switch (c) {
      case '"':
        text_ += "\\\"";
        break;
      case '\\':
        text_ += "\\\\";
        break;
      case '\n':
        text_ += "\\n";
        break;
      case '\r':
        text_ += "\\r";
        break;
      case '\t':
        text_ += "\\t";
        break;
      default:
        if (const auto byte = static_cast<unsigned char>(c); byte < 0x20) {
          text_ += "\\u00";
          text_ += hex[byte >> 4];
          text_ += hex[byte & 15];
        } else {
          text_ += c;
        }
    }
  }
  text_ += '"';
}

void Writer::open(char bracket) {
  separate();
  ++depth_;
  text_ += bracket;
  needsComma_ = false;
}

void Writer::close(char bracket) {
  --depth_;
  text_ += bracket;
  needsComma_ = true;
}

}  // namespace TalvoConsentSDK::json
