#pragma once

// A site as its checks see it: the documents that could be read, and the report that collects the findings.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/JSONValue.h"
#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/models/SiteConfiguration.h"

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

/// Collects findings, without duplicates.
class Report {
 public:
  void error(std::string_view document, std::string path, std::string sentence);
  void warning(std::string_view document, std::string path, std::string sentence);

  std::vector<LintFinding> take() && { return std::move(findings_); }

 private:
  void add(LintFinding finding);

  std::vector<LintFinding> findings_;
};

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

/// Returns the categories of a tab. A tab that lists no categories has all the known ones.
std::vector<std::string> tabCategories(const BannerCustomization::TabItem& tab = {});

// The checks. Each has its own file, except that checkVendors is in Fairness.cpp.
void checkStructure(const Site& site, Report& report);
void checkColors(const Site& site, Report& report);
void checkFairness(const Site& site, Report& report);
void checkVendors(const Site& site, Report& report);
void checkTranslations(const Site& site, Report& report);
void checkFit(const Site& site, const std::shared_ptr<platform::TextMeasurer>& doubleScale, Report& report);

}  // namespace TalvoConsentSDK::linting
