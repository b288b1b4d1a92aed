// Compares the JSON parser with another strict one: both must accept the same texts and decode the same
// values. Known differences: this library refuses a NUL, more levels than its limit, and whole numbers
// outside signed 64-bit integers, all of which the other parser accepts. If a key is repeated, both use the
// last value.

#include <nlohmann/json.hpp>

#include "TalvoConsentSDK/models/JSONValue.h"
#include "TalvoConsentSDK/models/json/JSONNode.h"

#include "fuzz/Fuzzing.h"

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::fuzzing;

namespace {

using Other = nlohmann::json;

// Detects what only this library refuses.
class Limits : public nlohmann::json_sax<Other> {
 public:
  bool isExceeded() const { return maxDepth_ > json::maxDepth || isTooLarge_; }

  bool null() override { return content(); }
  bool boolean(bool) override { return content(); }
  bool number_integer(number_integer_t) override { return content(); }
  bool number_unsigned(number_unsigned_t) override { return content(); }
  bool number_float(number_float_t, const string_t& text) override {
    isTooLarge_ |= text.find_first_of(".eE") == text.npos;
    return content();
  }
  bool string(string_t&) override { return content(); }
  bool binary(binary_t&) override { return content(); }
  bool start_object(std::size_t) override { return open(); }
  bool key(string_t&) override { return content(); }
  bool end_object() override { return close(); }
  bool start_array(std::size_t) override { return open(); }
  bool end_array() override { return close(); }
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
    return false;
  }

 private:
  bool content() {
    maxDepth_ = std::max(maxDepth_, depth_);
    return true;
  }
  bool open() { return content() && ++depth_ > 0; }
  bool close() { return --depth_ >= 0; }

  int depth_ = 0;
  int maxDepth_ = 0;
  bool isTooLarge_ = false;
};

// Whether `value` contains a whole number from 2^63 to 2^64 - 1. This library refuses such a number, unless a
// repeated key overrides it; `value` does not contain overridden numbers either. Whole numbers outside -2^63
// to 2^64 - 1 are refused even if they are overridden; `Limits` detects them.
bool hasLargeInteger(const Other& value) {
  if (value.is_structured()) return std::ranges::any_of(value, hasLargeInteger);
  return value.is_number_unsigned() && !std::in_range<std::int64_t>(value.get<std::uint64_t>());
}

JSONValue converted(const Other& value) {
  switch (value.type()) {
    case Other::value_t::boolean:
      return value.get<bool>();
    case Other::value_t::number_integer:
      return value.get<std::int64_t>();
    case Other::value_t::number_unsigned:
      return value.get<std::int64_t>();
    case Other::value_t::number_float:
      return value.get<double>();
    case Other::value_t::string:
      return value.get<std::string>();
    case Other::value_t::array: {
      JSONArray array;
      for (const Other& element : value) array.push_back(converted(element));
      return array;
    }
    case Other::value_t::object: {
      JSONObject object;
      for (const auto& [key, member] : value.items()) object.emplace(key, converted(member));
      return object;
    }
    default:
      return {};
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto ours = JSONDecoder().decode<JSONValue>(text);
  if (text.find('\0') != text.npos) {
    require(!ours, "a text with NUL is not JSON");
    return 0;
  }
  Limits limits;
  const bool isRead = Other::sax_parse(text, &limits) && !limits.isExceeded();
  const Other theirs = isRead ? Other::parse(text) : Other();
  require(ours.has_value() == (isRead && !hasLargeInteger(theirs)), "both parsers accept or both refuse");
  if (ours) require(*ours == converted(theirs), "both parsers decode the same values");
  return 0;
}
