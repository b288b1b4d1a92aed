#include "adapters/texts/Translations.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "TalvoConsentSDK/base/ASCII.h"

namespace TalvoConsentSDK {

namespace {

constexpr Translation all[] = {
#include "adapters/texts/Translations.inc"
};

constexpr std::pair<std::string_view, std::string_view Translation::*> keys[] = {
    {"Back", &Translation::back},
    {"Close", &Translation::close},
    {"Company Name", &Translation::companyName},
    {"Description", &Translation::description},
    {"Location", &Translation::location},
    {"No preferences available", &Translation::noPreferences},
    {"No vendor details available", &Translation::noVendorDetails},
    {"Privacy Contact", &Translation::privacyContact},
    {"Privacy Policy URL", &Translation::privacyPolicyURL},
    {"Stored Information", &Translation::storedInformation},
    {"Version", &Translation::version},
    {"collapsed", &Translation::collapsed},
    {"expanded", &Translation::expanded},
};

// Other codes of the same languages: former ones, and those of Norwegian's written forms.
constexpr std::pair<std::string_view, std::string_view> otherCodes[] = {
    {"in", "id"}, {"iw", "he"}, {"nb", "no"}, {"nn", "no"}};

bool isTraditionalChinese(std::string_view language) {
  if (!language.starts_with("zh-")) return false;
  return std::ranges::any_of(
             std::initializer_list<std::string_view>{"-hant", "-tw", "-hk", "-mo"},
             [&](std::string_view part) { return language.find(part) != std::string_view::npos; }) &&
         language.find("-hans") == std::string_view::npos;
}

}  // namespace

std::string_view Translation::Counted::of(plurals::Form form) const {
  switch (form) {
    case plurals::Form::zero:
      return zero;
    case plurals::Form::one:
      return one;
    case plurals::Form::two:
      return two;
    case plurals::Form::few:
      return few;
    case plurals::Form::many:
      return many;
    case plurals::Form::other:
      return other;
  }
  return {};
}

std::string_view Translation::text(std::string_view key) const {
  const auto* found =
      std::ranges::find(keys, key, &std::pair<std::string_view, std::string_view Translation::*>::first);
  return found == std::end(keys) ? std::string_view() : this->*found->second;
}

std::span<const Translation> translations() {
  return all;
}

const Translation* translationInto(std::string_view language) {
  std::string code = lowercased(language);
  std::ranges::replace(code, '_', '-');
  const bool isTraditional = isTraditionalChinese(code);
  code.erase(std::min(code.find('-'), code.size()));
  for (const auto& [other, usual] : otherCodes) {
    if (code == other) code = usual;
  }
  const auto* found = std::ranges::find(all, isTraditional ? "zh-Hant" : code, &Translation::language);
  return found == std::end(all) ? nullptr : found;
}

}  // namespace TalvoConsentSDK
