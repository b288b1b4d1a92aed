#pragma once

// The texts of one language. Translations.inc contains all languages.

#include <span>
#include <string_view>

#include "adapters/texts/Plurals.h"

namespace TalvoConsentSDK {

struct Translation {
  /// One text for each plural form that the language has; the others are empty. `{n}` stands for the number.
  struct Counted {
    std::string_view zero{}, one{}, two{}, few{}, many{}, other{};

    std::string_view of(plurals::Form form) const;
  };

  std::string_view language;
  plurals::Rule rule;
  std::string_view back, close;
  std::string_view companyName, location, privacyContact, privacyPolicyURL, description, storedInformation,
      version;
  std::string_view noPreferences, noVendorDetails;
  std::string_view expanded, collapsed;
  Counted vendors;

  /// Returns the text for a key of the library's, without a number, or an empty text.
  std::string_view text(std::string_view key) const;
};

/// The languages that are known, sorted by code.
std::span<const Translation> translations();

/// Returns the translation into a language, given as `de`, `de-AT` or `zh_TW`, for example. Returns null if
/// the language is unknown.
const Translation* translationInto(std::string_view language);

}  // namespace TalvoConsentSDK
