#pragma once

// Converts records to JSON and back. Keys are the fields' names, except "showBlurBackground" and
// "showPoweredBy". When writing, absent optional fields are left out. When reading, an optional field is
// absent if its key is missing or its value is null, and unknown keys are ignored. If a key is given twice,
// only the last value counts, in records, maps and untyped objects alike.

#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Result.h"

namespace TalvoConsentSDK TALVO_EXPORT {

namespace json {

struct Coding;

/// Returns the functions that read and write a `T`, so that the functions below need not be templates.
template <class T>
TALVO_EXPORT const Coding& codingOf();

/// `decode` reads a whole document into a new value; `encode` writes a value as a whole document.
TALVO_EXPORT Result<void> decode(std::string_view text, void* value, const Coding& coding);
TALVO_EXPORT Result<std::string> encode(const void* value, const Coding& coding);

}  // namespace json

/// Reads records. Stateless; safe from any thread. Skips a byte order mark before the document. Rejects the
/// whole document with a `CodingError` if it is not strict JSON (RFC 8259) in UTF-8, if a value does not fit
/// its field, or if the values take more memory than 16 MB plus 8 times the document's length. Numbers must
/// fit in 64-bit integers or doubles. Lists and objects may be nested 256 levels deep; an empty list or
/// object at the innermost level does not count.
class JSONDecoder {
 public:
  /// Implemented for the records of this library (of those nested in another, only for `CategoryItem`),
  /// `ConsentValue`, `ConsentCategory`, `ConsentStatus`, `JSONValue`, `JSONObject`, and
  /// `std::optional<FullConsent>`, which a null document leaves empty.
  template <class T>
  Result<T> decode(std::string_view text) const {
    T value{};
    const Result<void> read = json::decode(text, &value, json::codingOf<T>());
    if (!read) return read.error();
    return value;
  }
};

/// Writes records. Stateless; safe from any thread. Fails with a `CodingError` on text that is not UTF-8, on
/// numbers that JSON cannot hold, and on nesting that `JSONDecoder` would reject.
class JSONEncoder {
 public:
  /// Implemented for the same types as `JSONDecoder::decode`.
  template <class T>
  Result<std::string> encode(const T& value) const {
    return json::encode(&value, json::codingOf<T>());
  }
};

}  // namespace TalvoConsentSDK
