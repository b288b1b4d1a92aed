#pragma once

// Recognises documents by their files' names, as talvo-consent-service names them.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/lint/SiteLint.h"

namespace TalvoConsentSDK::linting {

/// What a file is, or was meant to be.
struct DocumentName {
  std::vector<SiteDocument> SiteDocuments::* kind;
  std::string language;  // empty: for all languages
  std::string expected;  // the name that the service reads; differs from the file's if that is wrong
};

/// Recognises `customization.en.json`, and also names like `customisation.json`, `services-en.jsn` and
/// `config.json`. A customization whose name lacks a language gets `defaultLanguage`. Returns nullopt for
/// other files.
std::optional<DocumentName> documentName(std::string_view file, std::string_view defaultLanguage = "en");

/// Whether the text looks like a language that clients ask for, such as "en" or "de-AT".
bool isLanguage(std::string_view text);

}  // namespace TalvoConsentSDK::linting
