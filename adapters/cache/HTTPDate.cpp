#include "adapters/cache/HTTPDate.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace TalvoConsentSDK {

namespace {

using namespace std::chrono;

constexpr std::array<std::string_view, 7> days{"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
constexpr std::array<std::string_view, 7> longDays{"Monday", "Tuesday",  "Wednesday", "Thursday",
                                                   "Friday", "Saturday", "Sunday"};
constexpr std::array<std::string_view, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                  "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

/// Reads a text from left to right. Once something expected is missing, `isGood` stays false.
struct Reader {
  std::string_view rest;
  bool isGood = true;

  void skip(std::string_view expected) {
    isGood = isGood && rest.starts_with(expected);
    if (isGood) rest.remove_prefix(expected.size());
  }

  int number(std::size_t digits) {
    isGood = isGood && rest.size() >= digits;
    int value = 0;
    for (std::size_t i = 0; isGood && i < digits; ++i) {
      isGood = rest[i] >= '0' && rest[i] <= '9';
      value = value * 10 + (rest[i] - '0');
    }
    if (isGood) rest.remove_prefix(digits);
    return value;
  }

  template <std::size_t count>
  unsigned oneOf(const std::array<std::string_view, count>& names) {
    const auto found = std::ranges::find_if(names, [&](auto name) { return rest.starts_with(name); });
    isGood = isGood && found != names.end();
    if (isGood) rest.remove_prefix(found->size());
    return static_cast<unsigned>(found - names.begin());
  }

  seconds timeOfDay() {
    const int hour = number(2);
    skip(":");
    const int minute = number(2);
    skip(":");
    const int second = number(2);
    isGood = isGood && hour < 24 && minute < 60 && second <= 60;  // 60 is a leap second
    return hours(hour) + minutes(minute) + seconds(second);
  }

  std::optional<HTTPTime> date(int yearNumber, unsigned monthIndex, int dayNumber, seconds time) const {
    const year_month_day date{year(yearNumber), month(monthIndex + 1),
                              day(static_cast<unsigned>(std::max(0, dayNumber)))};
    if (!isGood || !rest.empty() || !date.ok()) return std::nullopt;
    return sys_days(date) + time;
  }
};

// "Sun, 06 Nov 1994 08:49:37 GMT"
std::optional<HTTPTime> parseIMFFixdate(Reader text) {
  text.oneOf(days);
  text.skip(", ");
  const int dayNumber = text.number(2);
  text.skip(" ");
  const unsigned monthIndex = text.oneOf(months);
  text.skip(" ");
  const int yearNumber = text.number(4);
  text.skip(" ");
  const seconds time = text.timeOfDay();
  text.skip(" GMT");
  return text.date(yearNumber, monthIndex, dayNumber, time);
}

// "Sunday, 06-Nov-94 08:49:37 GMT". A year that seems to be more than 50 years ahead is in the past.
std::optional<HTTPTime> parseRFC850Date(Reader text, HTTPTime now) {
  text.oneOf(longDays);
  text.skip(", ");
  const int dayNumber = text.number(2);
  text.skip("-");
  const unsigned monthIndex = text.oneOf(months);
  text.skip("-");
  const int lastDigits = text.number(2);
  text.skip(" ");
  const seconds time = text.timeOfDay();
  text.skip(" GMT");
  const int thisYear = static_cast<int>(year_month_day(floor<std::chrono::days>(now)).year());
  int yearNumber = thisYear - thisYear % 100 + lastDigits;
  if (yearNumber > thisYear + 50) yearNumber -= 100;
  return text.date(yearNumber, monthIndex, dayNumber, time);
}

// "Sun Nov  6 08:49:37 1994"
std::optional<HTTPTime> parseAsctimeDate(Reader text) {
  text.oneOf(days);
  text.skip(" ");
  const unsigned monthIndex = text.oneOf(months);
  text.skip(" ");
  const bool hasOneDigit = text.rest.starts_with(' ');
  if (hasOneDigit) text.skip(" ");
  const int dayNumber = text.number(hasOneDigit ? 1 : 2);
  text.skip(" ");
  const seconds time = text.timeOfDay();
  text.skip(" ");
  const int yearNumber = text.number(4);
  return text.date(yearNumber, monthIndex, dayNumber, time);
}

}  // namespace

std::optional<HTTPTime> parseHTTPDate(std::string_view text, HTTPTime now) {
  if (const auto date = parseIMFFixdate({text})) return date;
  if (const auto date = parseRFC850Date({text}, now)) return date;
  return parseAsctimeDate({text});
}

}  // namespace TalvoConsentSDK
