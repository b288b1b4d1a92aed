#include "apps/lint/DocumentName.h"

#include <algorithm>

#include "TalvoConsentSDK/base/ASCII.h"

#include "apps/lint/Spelling.h"

namespace TalvoConsentSDK::linting {

namespace {

enum class HasLanguage { no, yes, maybe };

struct Kind {
  std::string_view name;
  std::vector<SiteDocument> SiteDocuments::* documents;
  HasLanguage hasLanguage;
};

constexpr Kind kinds[] = {
    {"configuration", &SiteDocuments::configurations, HasLanguage::no},
    {"customization", &SiteDocuments::customizations, HasLanguage::yes},
    {"services", &SiteDocuments::services, HasLanguage::maybe},
    {"site", &SiteDocuments::settings, HasLanguage::no},
};

bool isLowerCase(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return c >= 'a' && c <= 'z'; });
}

// "site" resembles too many words, so only "sites" counts as a typing error of it.
const Kind* kindNamed(const std::string& word) {
  const std::string lower = lowercased(word);
  for (const Kind& kind : kinds) {
    const bool isMeant = kind.name == "site" ? lower == "site" || lower == "sites"
                                             : closest(word, {std::string(kind.name)}).has_value();
    if (isMeant) return &kind;
  }
  return nullptr;
}

// "EN" becomes "en", and "de_AT" becomes "de-AT".
std::string languageFrom(std::string text) {
  std::ranges::replace(text, '_', '-');
  const std::size_t end = std::min(text.find('-'), text.size());
  return lowercased(text.substr(0, end)) + text.substr(end);
}

}  // namespace

std::optional<DocumentName> documentName(std::string_view file, std::string_view defaultLanguage) {
  const std::size_t dot = file.rfind('.');
  const bool hasExtension =
      dot != std::string_view::npos && dot > 0 && editDistance(lowercased(file.substr(dot + 1)), "json") <= 1;
  if (!hasExtension) return std::nullopt;
  const std::string_view stem = file.substr(0, dot);
  const std::size_t end = std::min(stem.find_first_of(".-_ "), stem.size());
  const Kind* const kind = kindNamed(std::string(stem.substr(0, end)));
  if (!kind) return std::nullopt;

  std::string language;
  if (kind->hasLanguage != HasLanguage::no && end < stem.size()) {
    language = languageFrom(std::string(stem.substr(end + 1)));
  }
  if (kind->hasLanguage == HasLanguage::yes && language.empty()) language = defaultLanguage;
  std::string expected = std::string(kind->name) + (language.empty() ? "" : "." + language) + ".json";
  return DocumentName{kind->documents, std::move(language), std::move(expected)};
}

bool isLanguage(std::string_view text) {
  const std::size_t end = std::min(text.find('-'), text.size());
  const auto isAllowed = [](char c) {
    return c == '-' || (c >= '0' && c <= '9') || (lowercased(c) >= 'a' && lowercased(c) <= 'z');
  };
  return (end == 2 || end == 3) && isLowerCase(text.substr(0, end)) && std::ranges::all_of(text, isAllowed) &&
         text.back() != '-';
}

}  // namespace TalvoConsentSDK::linting
