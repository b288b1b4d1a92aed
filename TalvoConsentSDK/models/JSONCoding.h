#pragma once

// Records to JSON and back. Keys are the fields' names; absent optional fields are left out when writing, and
// a missing key and a null read alike. Unknown keys are ignored; of a key given twice only the last value
// is looked at, in records, maps and untyped objects alike.

#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Result.h"

namespace TalvoConsentSDK TALVO_EXPORT {

namespace json {

struct Coding;

/// How a `T` is read and written, whose type is known here alone.
template <class T>
TALVO_EXPORT const Coding& codingOf();

/// A whole document into a new value, or why not.
TALVO_EXPORT Result<void> decode(std::string_view text, void* value, const Coding& coding);
TALVO_EXPORT Result<std::string> encode(const void* value, const Coding& coding);

}  // namespace json

/// Reads records. Stateless; safe from any thread. A byte order mark before the document is passed over. A
/// document is refused as a whole, with a `CodingError`: when it is not strict JSON in UTF-8 (RFC 8259, at
/// most 256 levels deep, an empty one inside these not counted, numbers within 64-bit integers or doubles),
/// when a value does not fit its field, or when its values take more memory than 16 MB and 8 times its
/// length.
class JSONDecoder {
 public:
  /// Implemented for every record of this library, their enumerations, `JSONValue`, and
  /// `std::optional<FullConsent>`, for which a null document is no consent.
  template <class T>
  Result<T> decode(std::string_view text) const {
    T value{};
    const Result<void> read = json::decode(text, &value, json::codingOf<T>());
    if (!read) return read.error();
    return value;
  }
};

/// Writes records. Stateless; safe from any thread. Fails with a `CodingError` on text that is not UTF-8 and
/// on numbers that JSON cannot hold.
class JSONEncoder {
 public:
  /// Implemented for the same types as `JSONDecoder::decode`.
  template <class T>
  Result<std::string> encode(const T& value) const {
    return json::encode(&value, json::codingOf<T>());
  }
};

}  // namespace TalvoConsentSDK
