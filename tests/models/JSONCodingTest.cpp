#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "TalvoConsentSDK/models/ConsentResponse.h"
#include "TalvoConsentSDK/models/FullConsent.h"
#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/models/Services.h"

#include "tests/support/ResidentMemory.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

namespace {

static_assert(std::is_convertible_v<std::nullptr_t, JSONValue> && std::is_convertible_v<char*, JSONValue> &&
              std::is_convertible_v<const char (&)[3], JSONValue> && std::is_convertible_v<bool, JSONValue>);
static_assert(!std::is_constructible_v<JSONValue, int*> && !std::is_constructible_v<JSONValue, const void*> &&
              !std::is_constructible_v<JSONValue, void (&)()> &&
              !std::is_constructible_v<JSONValue, int std::pair<int, int>::*>);

template <class Record>
std::string failureOf(const std::string& json) {
  return failure(JSONDecoder().decode<Record>(json));
}

std::string nested(int count) {
  const auto levels = static_cast<std::size_t>(count);
  return std::string(levels, '[') + "1" + std::string(levels, ']');
}

TEST(JSONDecoderTest, ReadsStrictJSONOnly) {
  const auto expectEnd = [](const std::string& json, const std::string& error) {
    const std::string end = failureOf<ConsentResponse>(json);
    EXPECT_THAT(end, StartsWith(error)) << json.substr(0, 99);
    EXPECT_EQ(end.empty(), error.empty()) << json.substr(0, 99);
  };
  for (const auto& [json, error] : tableOf<2>("models/json.txt")) expectEnd(unescaped(json), error);
  const std::string invalid = "Data corrupted at line 1, column 270: The data is not valid JSON";
  for (const int levels : {255, 256, 100'000})
    expectEnd(R"({"id":"","n":)" + nested(levels) + "}", levels == 255 ? "" : invalid);
  EXPECT_EQ(parsed<ConsentResponse>(R"({"id":"\ud83d\ude00\u0000\"\\\/\b\f\n\r\t"})").id,
            "\xF0\x9F\x98\x80\0\"\\/\b\f\n\r\t"s);
}

// Documents of each kind grow until they are refused. None takes more memory than the values and the parser
// may take together.
TEST(JSONDecoderTest, LimitsTheMemoryOfADocument) {
  const struct {
    const char *begin, *element, *close, *place;
    std::string (*failureOf)(const std::string&);
  } kinds[] = {
      {R"({"libraries":[)", "{}", "]}", " at libraries", failureOf<Services>},
      {R"({"marketing":[)", R"("")", "]}", " at marketing", failureOf<BasicConsent>},
      {R"({"categories":{)", R"("#":true)", "}}", " at categories", failureOf<FullConsent>},
      {"[", "1", "]", "", failureOf<JSONValue>},
      {"[", "[1]", "]", "", failureOf<JSONValue>},
      {"[", R"({"":""})", "]", "", failureOf<JSONValue>},
      {"{", R"("#":[])", "}", "", failureOf<JSONValue>},
  };
  for (const auto& [begin, element, close, place, failureOf] : kinds) {
    SCOPED_TRACE(std::string(begin) + element);
    const auto document = [&](int count) {
      std::string text = begin;
      const std::string_view each = element;
      const auto number = std::min(each.find('#'), each.size());
      for (int n = 0; n < count; ++n) {
        text += each.substr(0, number);
        if (number < each.size()) (text += std::to_string(n)) += each.substr(number + 1);
        text += n + 1 < count ? "," : close;
      }
      return text;
    };
    std::string end;
    for (int count = 50'000; end.empty() && count < 4'000'000; count *= 2) {
      const std::string text = document(count);
      const long before = startOfPeak();
      end = failureOf(text);
      const auto limit = 16'000'000 + (8 + 15) * static_cast<long>(text.size());
      EXPECT_LE(residentMemory("VmHWM:") - before, limit / 1024) << count;
    }
    EXPECT_THAT(end, AllOf(StartsWith("Data corrupted" + std::string(place)),
                           EndsWith("take more than 16 MB plus 8 times its length in memory")));
  }
}

TEST(JSONCodingTest, ReadsAndWritesEveryValue) {
  for (const auto& [json, again] : tableOf<2>("models/values.txt"))
    EXPECT_EQ(written(parsed<JSONValue>(json)), again);
  EXPECT_EQ(parsed<JSONValue>(R"([null,true,-1,0.5,{"a":"b"}])"),
            (JSONArray{JSONValue(), true, -1, 0.5, JSONObject{{"a", "b"}}}));
  EXPECT_EQ(written(JSONValue("\"\\/\b\n\r\t\x1F\x7F\0\xE2\x80\xA8"s)),
            "\"\\\"\\\\/\\u0008\\n\\r\\t\\u001f\x7F\\u0000\xE2\x80\xA8\"");
  for (const char* number : {"9223372036854775808", "18446744073709551615"})
    EXPECT_EQ(failure(JSONDecoder().decode<JSONValue>(R"({"a":[)" + std::string(number) + "]}")),
              "Data corrupted at a[0]: The whole number is larger than 9223372036854775807");
  EXPECT_EQ(canonical(R"({"b":9223372036854775808,"a":[],"b":{"c":1,"c":2}})"), R"({"a":[],"b":{"c":2}})");
  EXPECT_TRUE(JSONValue(nullptr).isNull() && JSONValue(static_cast<const char*>(nullptr)).isNull());

  std::mt19937_64 random(17);
  for (int n = 0; n < 20'000; ++n) {
    const std::uint64_t bits = random();
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    if (!std::isfinite(number)) continue;
    ASSERT_EQ(*parsed<JSONValue>(written(JSONValue(number))).number(), number);
  }
}

TEST(JSONEncoderTest, RefusesWhatJSONCannotHold) {
  JSONValue tooDeep = parsed<JSONValue>(nested(256));
  EXPECT_EQ(written(tooDeep), nested(256));
  const std::string withoutContent = std::string(257, '[') + std::string(257, ']');
  EXPECT_EQ(written(parsed<JSONValue>(withoutContent)), withoutContent);
  tooDeep = JSONArray{tooDeep};
  for (const JSONValue& value :
       {JSONValue(std::nan("")), JSONValue(JSONArray{-HUGE_VAL}), JSONValue("\xFF"),
        JSONValue("\xED\xA0\x80"), JSONValue(JSONObject{{"\xC0\x80", 1}}), tooDeep}) {
    EXPECT_THAT(failure(JSONEncoder().encode(value)), StartsWith("Invalid value: "));
  }
  BasicConsent consent;
  consent.marketing = ConsentValue::partial({"ok", "\xFF"});
  EXPECT_EQ(failure(JSONEncoder().encode(consent)), "Invalid value: The text is not valid UTF-8");
}

}  // namespace
}  // namespace TalvoConsentSDK
