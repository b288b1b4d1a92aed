#include "TalvoConsentSDK/models/json/SyntaxError.h"

#include <array>
#include <cstdio>
#include <cstring>

#include "TalvoConsentSDK/base/unicode/Characters.h"
#include "TalvoConsentSDK/models/json/JSONNode.h"

namespace TalvoConsentSDK::json {

namespace {

// Walks through a text. A function that returns false has stopped at the error.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : at_(text.data()), end_(at_ + text.size()) {}

  bool document();
  const char* at() const { return at_; }
  bool isAtEnd() const { return at_ == end_; }
  void skipSpace() { skip(" \t\r\n"); }

 private:
  // At the end of the text, there is the character 0, which JSON allows nowhere.
  char current() const { return isAtEnd() ? '\0' : *at_; }
  bool take(char expected);
  bool takeOneOf(const char* characters);
  bool skip(const char* characters);
  bool key();
  bool string();
  bool escape();
  bool scalar();
  bool digits() { return skip("0123456789"); }

  const char* at_;
  const char* const end_;
};

bool Scanner::take(char expected) {
  const char characters[] = {expected, '\0'};
  return takeOneOf(characters);
}

bool Scanner::takeOneOf(const char* characters) {
  const char first = current();
  const bool isFound = first != '\0' && std::strchr(characters, first);
  at_ += isFound;
  return isFound;
}

bool Scanner::skip(const char* characters) {
  const char* const start = at_;
  while (takeOneOf(characters)) {
  }
  return at_ != start;
}

bool Scanner::document() {
  std::array<char, maxDepth> closing;  // how the open objects and lists end, the innermost last
  std::size_t depth = 0;
  for (;;) {
    skipSpace();
    const char first = current();
    if (first == '{' || first == '[') {
      const char last = first == '{' ? '}' : ']';
      ++at_;
      skipSpace();
      if (!take(last)) {
        if (depth == closing.size()) return false;
        closing[depth++] = last;
        if (first == '{' && !key()) return false;
        continue;
      }
    } else if (first == '"' ? !string() : !scalar()) {
      return false;
    }
    for (skipSpace(); depth > 0 && take(closing[depth - 1]); skipSpace()) --depth;
    if (depth == 0) return isAtEnd();
    if (!take(',')) return false;
    if (closing[depth - 1] == '}' && !key()) return false;
  }
}

bool Scanner::key() {
  skipSpace();
  if (!string()) return false;
  skipSpace();
  return take(':');
}

bool Scanner::string() {
  if (!take('"')) return false;
  while (!take('"')) {
    const auto byte = static_cast<unsigned char>(current());
    if (byte == '\\' ? !escape() : byte < 0x20) return false;
    if (byte == '\\') continue;
    const std::size_t length = firstCharacter({at_, end_}).length;
    if (length == 0) return false;
    at_ += length;
  }
  return true;
}

bool Scanner::escape() {
  ++at_;
  if (takeOneOf("\"\\/bfnrt")) return true;
  if (!take('u')) return false;
  for (int i = 0; i < 4; ++i) {
    if (!takeOneOf("0123456789abcdefABCDEF")) return false;
  }
  return true;
}

bool Scanner::scalar() {
  static constexpr char literals[][6] = {"true", "false", "null"};
  for (const std::string_view literal : literals) {
    if (!std::string_view(at_, end_).starts_with(literal)) continue;
    at_ += literal.size();
    return true;
  }
  take('-');
  if (!take('0') && !digits()) return false;
  if (take('.') && !digits()) return false;
  if (!takeOneOf("eE")) return true;
  takeOneOf("+-");
  return digits();
}

}  // namespace

std::optional<std::size_t> syntaxErrorOffset(std::string_view text) {
  Scanner scanner(text);
  scanner.skipSpace();
  if (scanner.isAtEnd() || scanner.document()) return std::nullopt;
  return static_cast<std::size_t>(scanner.at() - text.data());
}

TextPosition textPosition(std::string_view text, std::size_t offset) {
  TextPosition position;
  for (const char c : text.substr(0, offset)) {
    position.column += (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;  // counts each character once
    if (c == '\n') position = {position.line + 1, 1};
  }
  return position;
}

std::string placeOfSyntaxError(std::string_view text) {
  const auto offset = syntaxErrorOffset(text);
  if (!offset) return {};
  const TextPosition position = textPosition(text, *offset);
  char place[64];
  std::snprintf(place, sizeof place, "line %zu, column %zu", position.line, position.column);
  return place;
}

}  // namespace TalvoConsentSDK::json
