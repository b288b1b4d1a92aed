#pragma once

// JSON of any shape, for exchanges without a record type.

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

class JSONValue;

/// JSON objects and arrays. An object's keys are unique; their order is not kept.
using JSONObject = std::map<std::string, JSONValue, std::less<>>;
using JSONArray = std::vector<JSONValue>;

/// One JSON value. Whole numbers are read as integers; if one does not fit a signed 64-bit integer, the
/// document is rejected, since a double would change the number. Numbers with a fraction or an exponent are
/// read as doubles. A value may hold NaN, infinity or text that is not UTF-8, but such a value cannot be
/// written.
class JSONValue {
 public:
  JSONValue() {}  // null
  JSONValue(std::nullptr_t) {}
  JSONValue(bool value) : value_(value) {}
  JSONValue(int value) : value_(std::int64_t{value}) {}
  JSONValue(std::int64_t value) : value_(value) {}
  JSONValue(double value) : value_(value) {}
  JSONValue(const char* value) {  // null for a null pointer
    if (value) value_ = std::string(value);
  }
  JSONValue(std::string_view value) : value_(std::string(value)) {}
  JSONValue(std::string value) : value_(std::move(value)) {}
  JSONValue(JSONArray value) : value_(std::move(value)) {}
  JSONValue(JSONObject value) : value_(std::move(value)) {}
  template <class Pointer>
    requires((std::is_pointer_v<Pointer> || std::is_member_pointer_v<Pointer>) &&
             !std::is_convertible_v<Pointer, const char*>)
  JSONValue(Pointer) = delete;  // a pointer would become a boolean

  bool isNull() const noexcept { return std::holds_alternative<std::monostate>(value_); }

  /// Returns the content if it is of that kind, otherwise null.
  const bool* boolean() const noexcept { return std::get_if<bool>(&value_); }
  const std::int64_t* integer() const noexcept { return std::get_if<std::int64_t>(&value_); }
  const double* number() const noexcept { return std::get_if<double>(&value_); }
  const std::string* string() const noexcept { return std::get_if<std::string>(&value_); }
  const JSONArray* array() const noexcept { return std::get_if<JSONArray>(&value_); }
  const JSONObject* object() const noexcept { return std::get_if<JSONObject>(&value_); }
  JSONObject* object() noexcept { return std::get_if<JSONObject>(&value_); }

  // Not defaulted: the compiler would look up a defaulted comparison while the class is incomplete, and with
  // it the comparisons of the containers of JSONValue in the variant. libc++ would then record wrongly how
  // the elements of these containers can be moved.
  friend bool operator==(const JSONValue& a, const JSONValue& b) { return a.value_ == b.value_; }

 private:
  std::variant<std::monostate, bool, std::int64_t, double, std::string, JSONArray, JSONObject> value_;
};

}  // namespace TalvoConsentSDK
