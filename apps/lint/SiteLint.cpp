#include "apps/lint/SiteLint.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "TalvoConsentSDK/models/CodingError.h"
#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/ui/TabsComponentRenderer.h"

#include "apps/lint/Site.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace linting {

namespace {

std::string sentence(const CodingError& error) {
  switch (error.kind()) {
    case CodingError::Kind::keyNotFound:
      return "this required key is missing";
    case CodingError::Kind::valueNotFound:
    case CodingError::Kind::typeMismatch:
      return error.detail();
    case CodingError::Kind::dataCorrupted:
    case CodingError::Kind::invalidValue:
      break;
  }
  return "cannot be read: " + error.detail();
}

template <class Record>
std::vector<Document<Record>> read(const std::vector<SiteDocument>& documents, Report& report) {
  std::vector<Document<Record>> readable;
  for (const SiteDocument& each : documents) {
    auto record = JSONDecoder().decode<Record>(each.text);
    if (!record) {
      const auto* error = record.error().template as<CodingError>();
      report.error(each.name, error ? error->path() : "", error ? sentence(*error) : record.error().what());
      continue;
    }
    JSONValue json = JSONDecoder().decode<JSONValue>(JSONEncoder().encode(*record).value()).value();
    readable.push_back({each.name, each.language, *std::move(record), std::move(json)});
  }
  return readable;
}

}  // namespace

void Report::error(std::string_view document, std::string path, std::string sentence) {
  add({LintFinding::Severity::error, std::string(document), std::move(path), std::move(sentence)});
}

void Report::warning(std::string_view document, std::string path, std::string sentence) {
  add({LintFinding::Severity::warning, std::string(document), std::move(path), std::move(sentence)});
}

void Report::add(LintFinding finding) {
  const auto identity = [](const LintFinding& each) {
    return std::tie(each.document, each.path, each.sentence);
  };
  const auto isSame = [&](const LintFinding& each) { return identity(each) == identity(finding); };
  if (std::ranges::none_of(findings_, isSame)) findings_.push_back(std::move(finding));
}

std::vector<Screen> screens(const BannerCustomization& document) {
  std::vector<Screen> found;
  if (!document.customization || !document.customization->components) return found;
  const std::string path = "customization.components.";
  const auto& components = *document.customization->components;
  if (components.mainScreen) found.push_back({path + "mainScreen", true, *components.mainScreen});
  if (components.secondaryScreen) {
    found.push_back({path + "secondaryScreen", false, *components.secondaryScreen});
  }
  return found;
}

std::vector<std::string> tabCategories(const BannerCustomization::TabItem& tab) {
  std::vector<std::string> ids;
  for (const auto& category : TabsComponentRenderer::categories(tab, {})) ids.push_back(*category.id);
  return ids;
}

}  // namespace linting

std::vector<LintFinding> lintSite(const SiteDocuments& documents,
                                  const std::shared_ptr<TextMeasurer>& doubleScale) {
  using namespace linting;
  Report report;
  const Site site{read<SiteConfiguration>(documents.configurations, report),
                  read<BannerCustomization>(documents.customizations, report),
                  read<Services>(documents.services, report)};
  checkStructure(site, report);
  checkColors(site, report);
  checkFairness(site, report);
  checkVendors(site, report);
  checkTranslations(site, report);
  if (doubleScale) checkFit(site, doubleScale, report);

  auto findings = std::move(report).take();
  std::vector<std::string> order;
  for (const auto* kind : {&documents.configurations, &documents.customizations, &documents.services}) {
    for (const SiteDocument& each : *kind) order.push_back(each.name);
  }
  std::vector<LintFinding> sorted;
  for (const std::string& name : order) {
    std::erase_if(findings, [&](const LintFinding& each) {
      if (each.document != name) return false;
      sorted.push_back(each);
      return true;
    });
  }
  return sorted;
}

}  // namespace TalvoConsentSDK
