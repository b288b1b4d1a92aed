#pragma once

// Finds faults in a site's documents before users meet them: what cannot be read, what the banner would leave
// out, and what would be hard to see or unfair. It changes nothing and does not use the network.

#include <memory>
#include <string>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/TextMeasurer.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// One document as it stands in a file.
struct SiteDocument {
  SiteDocument() {}
  SiteDocument(std::string documentName, std::string documentLanguage, std::string documentText)
      : name(std::move(documentName)), language(std::move(documentLanguage)), text(std::move(documentText)) {}

  std::string name;      // shown in findings, such as a path
  std::string language;  // empty: for all languages
  std::string text;
};

/// The documents of one site. A kind that is empty is not checked.
struct SiteDocuments {
  SiteDocuments() {}

  std::vector<SiteDocument> configurations;
  std::vector<SiteDocument> customizations;  // one per language
  std::vector<SiteDocument> services;        // one per language, or one for all
  std::vector<SiteDocument> settings;        // the site.json of talvo-consent-service, at most one

  /// The folder that the documents are in, with the names of all its files and the URL that its files have,
  /// such as "https://consent.example/sites/my-site/". If `folder` is empty, nobody knows what else the site
  /// has, so missing documents, files with wrong names and missing pictures are not reported.
  std::string folder;
  std::vector<std::string> files;
  std::string filesURL;
};

struct LintFinding {
  enum class Severity {
    warning,  // users learn less, or something is never used
    error,    // something is missing, cannot be used or read, or is unfair
  };

  Severity severity = Severity::error;
  std::string document;  // a document's name, or the path of a file or of the folder
  std::string path;  // the key's path, such as "customization.colors.font"; empty: the document as a whole
  std::string sentence;
  std::size_t line = 0;    // counts from 1; 0: the document as a whole
  std::size_t column = 0;  // counts characters from 1; 0: the whole line
};

/// Returns the findings, grouped by document, and within a document by line. `doubleScale` measures text at
/// scale 2: if it is given, all screens are laid out 320 points wide, and it is an error if a word of the
/// customization, or of a standard text, is wider than its button or column and so would be split. Without
/// it, this check is left out. If a document cannot be read, only its misspelt keys and the first error in it
/// are reported. Main thread only.
TALVO_EXPORT std::vector<LintFinding> lintSite(
    const SiteDocuments& documents, const std::shared_ptr<platform::TextMeasurer>& doubleScale = nullptr);

}  // namespace TalvoConsentSDK
