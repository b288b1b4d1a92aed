#include "adapters/texts/Plurals.h"

namespace TalvoConsentSDK::plurals {

namespace {

constexpr std::uint64_t million = 1'000'000;

bool isWithin(std::uint64_t number, std::uint64_t first, std::uint64_t last) {
  return number >= first && number <= last;
}

// "few" of the Slavic languages: 2 to 4, 22 to 24, but not 12 to 14.
bool endsInTwoToFour(std::uint64_t count) {
  return isWithin(count % 10, 2, 4) && !isWithin(count % 100, 12, 14);
}

bool endsInOne(std::uint64_t count) {
  return count % 10 == 1 && count % 100 != 11;
}

}  // namespace

Form onlyOther(std::uint64_t) {
  return Form::other;
}

Form oneOrOther(std::uint64_t count) {
  return count == 1 ? Form::one : Form::other;
}

Form upToOneOrOther(std::uint64_t count) {
  return count <= 1 ? Form::one : Form::other;
}

Form arabic(std::uint64_t count) {
  if (count <= 2) return count == 0 ? Form::zero : count == 1 ? Form::one : Form::two;
  if (isWithin(count % 100, 3, 10)) return Form::few;
  return count % 100 >= 11 ? Form::many : Form::other;
}

Form croatian(std::uint64_t count) {
  if (endsInOne(count)) return Form::one;
  return endsInTwoToFour(count) ? Form::few : Form::other;
}

Form czech(std::uint64_t count) {
  if (count == 1) return Form::one;
  return isWithin(count, 2, 4) ? Form::few : Form::other;
}

Form french(std::uint64_t count) {
  if (count <= 1) return Form::one;
  return count % million == 0 ? Form::many : Form::other;
}

Form hebrew(std::uint64_t count) {
  return count == 2 ? Form::two : oneOrOther(count);
}

Form irish(std::uint64_t count) {
  if (isWithin(count, 3, 6)) return Form::few;
  return isWithin(count, 7, 10) ? Form::many : hebrew(count);
}

Form latvian(std::uint64_t count) {
  if (count % 10 == 0 || isWithin(count % 100, 11, 19)) return Form::zero;
  return endsInOne(count) ? Form::one : Form::other;
}

Form lithuanian(std::uint64_t count) {
  if (count % 10 == 0 || isWithin(count % 100, 11, 19)) return Form::other;
  return endsInOne(count) ? Form::one : Form::few;
}

Form maltese(std::uint64_t count) {
  if (count == 0 || isWithin(count % 100, 3, 10)) return Form::few;
  return isWithin(count % 100, 11, 19) ? Form::many : hebrew(count);
}

Form polish(std::uint64_t count) {
  if (count == 1) return Form::one;
  return endsInTwoToFour(count) ? Form::few : Form::many;
}

Form romanian(std::uint64_t count) {
  if (count == 1) return Form::one;
  return count == 0 || isWithin(count % 100, 1, 19) ? Form::few : Form::other;
}

Form slovenian(std::uint64_t count) {
  switch (count % 100) {
    case 1:
      return Form::one;
    case 2:
      return Form::two;
    case 3:
    case 4:
      return Form::few;
    default:
      return Form::other;
  }
}

Form spanish(std::uint64_t count) {
  if (count == 1) return Form::one;
  return count > 0 && count % million == 0 ? Form::many : Form::other;
}

Form ukrainian(std::uint64_t count) {
  if (endsInOne(count)) return Form::one;
  return endsInTwoToFour(count) ? Form::few : Form::many;
}

}  // namespace TalvoConsentSDK::plurals
