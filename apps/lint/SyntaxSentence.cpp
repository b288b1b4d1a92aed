#include "apps/lint/SyntaxSentence.h"

#include <algorithm>
#include <vector>

#include "TalvoConsentSDK/models/json/SyntaxError.h"

namespace TalvoConsentSDK::linting {

namespace {

constexpr std::string_view spaces = " \t\r\n";

enum class Expected { value, key, colon, comma };

// What is open at a place of a text, and what may follow there. The text up to the place is the beginning of
// a JSON document.
struct Context {
  explicit Context(std::string_view text) {
    for (std::size_t at = 0; at < text.size(); ++at) read(text[at], at);
  }

  char innermost() const { return open.empty() ? '\0' : open.back().first; }

  std::vector<std::pair<char, std::size_t>> open;  // brackets and their offsets
  bool isInString = false;
  bool isEscaped = false;
  std::size_t stringStart = 0;
  Expected expected = Expected::value;

 private:
  void read(char c, std::size_t at) {
    if (isInString) {
      if (!isEscaped && c == '"') {
        isInString = false;
        expected = expected == Expected::key ? Expected::colon : Expected::comma;
      }
      isEscaped = !isEscaped && c == '\\';
    } else if (c == '"') {
      isInString = true;
      stringStart = at;
    } else if (c == '{' || c == '[') {
      open.emplace_back(c, at);
      expected = c == '{' ? Expected::key : Expected::value;
    } else if (c == '}' || c == ']') {
      if (!open.empty()) open.pop_back();
      expected = Expected::comma;
    } else if (c == ',') {
      expected = innermost() == '{' ? Expected::key : Expected::value;
    } else if (c == ':') {
      expected = Expected::value;
    } else if (spaces.find(c) == std::string_view::npos) {
      expected = Expected::comma;
    }
  }
};

// How the innermost bracket must be closed, and where it is.
std::string closing(std::string_view text, const Context& context) {
  const auto& [bracket, offset] = context.open.back();
  const std::string pair = bracket == '{' ? R"("}" for the "{")" : R"("]" for the "[")";
  return "add the " + pair + " in line " + std::to_string(json::textPosition(text, offset).line);
}

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Typographic quotation marks begin with these bytes, as do dashes and an ellipsis.
bool isQuotationMark(std::string_view rest) {
  constexpr std::string_view marks[] = {
      "'",        "`",       "\xE2\x80\x98", "\xE2\x80\x99", "\xE2\x80\x9C", "\xE2\x80\x9D", "\xE2\x80\x9E",
      "\xC2\xAB", "\xC2\xBB"};
  return std::ranges::any_of(marks, [&](std::string_view mark) { return rest.starts_with(mark); });
}

SyntaxFault inString(std::string_view text, std::size_t offset, const Context& context) {
  const auto c = offset < text.size() ? static_cast<unsigned char>(text[offset]) : 0U;
  if (c == '\n' || c == '\r' || offset == text.size()) {
    return {offset, "add the quotation mark that ends the text; a line break in a text is written as \\n"};
  }
  if (c == '\t') return {offset, "write the tab in the text as \\t"};
  if (c < 0x20) return {offset, "remove the control character from the text"};
  if (c >= 0x80) return {offset, "save the file as UTF-8"};
  return {offset, context.isEscaped ? "write a backslash in a text as \\\\"
                                    : "write four hexadecimal digits after \\u"};
}

SyntaxFault wrongValue(std::string_view text, std::size_t offset, std::size_t last, const Context& context) {
  const char c = text[offset];
  const char before = last == std::string_view::npos ? '\0' : text[last];
  const bool isClosing = c == '}' || c == ']';
  if (before == ',' && (isClosing || c == ',')) return {last, "remove this comma"};
  if (before == ':' && (isClosing || c == ',')) return {last + 1, "write a value after the colon"};
  if (c == ',') return {offset, "remove this comma"};
  if (isClosing && !context.open.empty()) return {offset, closing(text, context) + " first"};
  if (context.expected == Expected::key) return {offset, "write the key in double quotes"};
  const std::string_view rest = text.substr(offset);
  for (const std::string_view word : {"True", "TRUE", "False", "FALSE"}) {
    if (rest.starts_with(word)) return {offset, "write true and false in lower case"};
  }
  if (isLetter(c))
    return {offset, "write a text in double quotes; without them stand only true, false and null"};
  return {offset, "write a number like -1 or 0.5, or a text in double quotes"};
}

}  // namespace

SyntaxFault syntaxFault(std::string_view text, std::size_t offset) {
  const Context context(text.substr(0, offset));
  if (context.isInString) return inString(text, offset, context);
  const std::size_t last = offset == 0 ? std::string_view::npos : text.find_last_not_of(spaces, offset - 1);
  const std::size_t afterLast = last == std::string_view::npos ? 0 : last + 1;
  if (offset == text.size()) {
    if (context.open.empty()) return {afterLast, "the value is not complete"};
    return {afterLast, "the document ends too early: " + closing(text, context)};
  }
  const std::string_view rest = text.substr(offset);
  if (rest.front() == '#' || rest.starts_with("//") || rest.starts_with("/*")) {
    return {offset, "remove the comment, because JSON has none"};
  }
  if (isQuotationMark(rest)) return {offset, "write the quotation marks as \""};
  if (static_cast<unsigned char>(rest.front()) == 0xFF || static_cast<unsigned char>(rest.front()) == 0xFE) {
    return {offset, "save the file as UTF-8"};
  }
  if (context.expected == Expected::colon) return {afterLast, "write a colon and a value after the key"};
  if (context.expected != Expected::comma) return wrongValue(text, offset, last, context);
  if (context.open.empty()) return {offset, "remove what follows the end of the document"};
  if (rest.front() == '}' || rest.front() == ']') return {offset, closing(text, context) + " first"};
  const bool followsNumber = offset > 0 && last + 1 == offset && text[last] >= '0' && text[last] <= '9';
  if (followsNumber || text[last] == '.' || text[last] == '-') {
    return {offset, "write a number like -1 or 0.5, or a text in double quotes"};
  }
  return {afterLast, "add a comma here"};
}

}  // namespace TalvoConsentSDK::linting
