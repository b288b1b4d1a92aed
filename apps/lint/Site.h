#pragma once

// A site as its checks see it: the documents that could be read, and the report that collects the findings.

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/JSONValue.h"
#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/models/SiteConfiguration.h"

#include "apps/lint/Lines.h"
#include "apps/lint/SiteLint.h"

namespace TalvoConsentSDK::linting {

template <class Record>
struct Document {
  std::string name;
  std::string language;
  Record record;
  JSONValue json;  // the record written as JSON: only known keys, and only those with a value
};

using CustomizationDocument = Document<BannerCustomization>;
using ServicesDocument = Document<Services>;

struct Site {
  std::vector<Document<SiteConfiguration>> configurations;
  std::vector<CustomizationDocument> customizations;
  std::vector<ServicesDocument> services;
};

/// Collects findings, without duplicates, and adds their lines.
class Report {
 public:
  /// The lines of a document, by which a finding's path becomes a line. Empty until they are assigned.
  Lines& lines(std::string_view document) { return lines_[std::string(document)]; }

  void error(std::string_view document, std::string path, std::string sentence);
  void warning(std::string_view document, std::string path, std::string sentence);
  void add(LintFinding finding);

  std::vector<LintFinding> take() && { return std::move(findings_); }

 private:
  void add(LintFinding::Severity severity, std::string_view document, std::string path, std::string sentence);

  std::vector<LintFinding> findings_;
  std::map<std::string, Lines> lines_;
};

/// Returns the document's JSON, and remembers its lines in the report. If it is not JSON, reports that and
/// returns nullopt.
std::optional<JSONValue> parse(const SiteDocument& document, Report& report);

/// One of a customization's two lists of components.
struct Screen {
  std::string path;
  bool isMain;
  const std::vector<BannerCustomization::ComponentItem>& items;
};

/// Returns the screens that the customization lists components for.
std::vector<Screen> screens(const BannerCustomization& document);

inline std::string at(const std::string& path, std::size_t index) {
  return path + "[" + std::to_string(index) + "]";
}

inline std::string quoted(std::string_view text) {
  return '"' + std::string(text) + '"';
}

/// Calls `visit` with the path and the value of every text in `value`.
template <class Visit>
void forEachText(const JSONValue& value, const std::string& path, const Visit& visit) {
  if (const std::string* text = value.string()) visit(path, *text);
  if (const JSONArray* array = value.array()) {
    for (std::size_t i = 0; i < array->size(); ++i) forEachText((*array)[i], at(path, i), visit);
  }
  if (const JSONObject* object = value.object()) {
    for (const auto& [key, member] : *object) {
      forEachText(member, path.empty() ? key : path + "." + key, visit);
    }
  }
}

// The identifiers that mean something to the banner, for findings about others.
std::vector<std::string> componentIdentifiers();
std::vector<std::string> buttonIdentifiers(bool isMainScreen);
std::vector<std::string> linkIdentifiers();

/// Returns the categories of a tab. A tab that lists no categories has all the known ones.
std::vector<std::string> tabCategories(const BannerCustomization::TabItem& tab = {});

// Report misspelt keys and names of a document, and correct them in `json`. So one mistake has one finding,
// and the other checks see what was meant.
void correctConfiguration(JSONValue& json, const std::string& document, Report& report);
void correctCustomization(JSONValue& json, const std::string& document, Report& report);
void correctServices(JSONValue& json, const std::string& document, Report& report);

// The checks. Each has its own file, except that checkVendors is in Fairness.cpp.
// The first one also returns the site's default language.
std::string checkFolder(const SiteDocuments& documents, Report& report);
void checkStructure(const Site& site, Report& report);
void checkColors(const Site& site, Report& report);
void checkFairness(const Site& site, Report& report);
void checkVendors(const Site& site, Report& report);
void checkTranslations(const Site& site, const std::string& defaultLanguage, Report& report);
void checkFit(const Site& site, const std::shared_ptr<platform::TextMeasurer>& doubleScale, Report& report);

}  // namespace TalvoConsentSDK::linting
