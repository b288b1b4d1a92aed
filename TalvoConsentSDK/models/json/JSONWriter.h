#pragma once

// Writes JSON text. It places the commas; its caller must close every object and array that it opens,
// innermost first.

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace TalvoConsentSDK::json {

/// Writes one document into a string. Throws a CodingError (invalidValue) on text that is not UTF-8, on NaN
/// and infinity, and on nesting deeper than `maxDepth`, which our readers would reject.
class Writer {
 public:
  void null() { value("null"); }
  void boolean(bool content) { value(content ? "true" : "false"); }
  void integer(std::int64_t content);
  void number(double content);
  void string(std::string_view content);

  void beginObject() { open('{'); }
  void key(std::string_view content);
  void endObject() { close('}'); }
  void beginArray() { open('['); }
  void endArray() { close(']'); }

  std::string take() && { return std::move(text_); }

 private:
  void separate();
  void value(std::string_view literal);
  void quote(std::string_view content);
  void open(char bracket);
  void close(char bracket);

  std::string text_;
  int depth_ = 0;
  bool needsComma_ = false;
};

}  // namespace TalvoConsentSDK::json
