#include "apps/lint/SiteLint.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "TalvoConsentSDK/models/CodingError.h"
#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/models/json/SyntaxError.h"
#include "TalvoConsentSDK/ui/TabsComponentRenderer.h"

#include "apps/lint/Site.h"
#include "apps/lint/SyntaxSentence.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace linting {

namespace {

// What to do about a value of another type than `expected a boolean, found a string` names.
std::string remedy(std::string_view detail) {
  constexpr std::pair<std::string_view, const char*> remedies[] = {
      {"expected a boolean", ": write true or false, without quotes"},
      {"expected a string", ": write a text in double quotes"},
      {"expected an array", ": write a list in [ ]"},
      {"expected an object", ": write an object in { }"},
  };
  for (const auto& [expected, text] : remedies) {
    if (detail.starts_with(expected)) return text;
  }
  return "";
}

std::string sentence(const CodingError& error) {
  switch (error.kind()) {
    case CodingError::Kind::keyNotFound:
      return "this required key is missing: add it";
    case CodingError::Kind::valueNotFound:
    case CodingError::Kind::typeMismatch:
      return error.detail() + remedy(error.detail());
    case CodingError::Kind::dataCorrupted:
    case CodingError::Kind::invalidValue:
      break;
  }
  return "cannot be read: " + error.detail();
}

template <class Record>
std::vector<Document<Record>> read(const std::vector<SiteDocument>& documents,
                                   void (*correct)(JSONValue&, const std::string&, Report&), Report& report) {
  std::vector<Document<Record>> readable;
  for (const SiteDocument& each : documents) {
    const auto original = parse(each, report);
    if (!original) continue;
    for (const auto& [path, firstLine] : report.lines(each.name).repeatedKeys()) {
      report.warning(each.name, path,
                     "this key is given in line " + std::to_string(firstLine) +
                         ", too, and only the last one counts: remove one of them");
    }
    JSONValue corrected = *original;
    correct(corrected, each.name, report);
    const auto text =
        corrected == *original ? Result<std::string>(each.text) : JSONEncoder().encode(corrected);
    auto record = text ? JSONDecoder().decode<Record>(*text) : Result<Record>(text.error());
    if (!record) {
      const auto* error = record.error().template as<CodingError>();
      LintFinding finding;
      finding.document = each.name;
      finding.path = error ? error->path() : "";
      finding.sentence = error ? sentence(*error) : record.error().what();
      finding.line = report.lines(each.name).of(finding.path);
      report.add(std::move(finding));
      continue;
    }
    JSONValue json = JSONDecoder().decode<JSONValue>(JSONEncoder().encode(*record).value()).value();
    readable.push_back({each.name, each.language, *std::move(record), std::move(json)});
  }
  return readable;
}

}  // namespace

std::optional<JSONValue> parse(const SiteDocument& document, Report& report) {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  std::string_view text = document.text;
  if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
  auto json = JSONDecoder().decode<JSONValue>(text);
  if (json) {
    report.lines(document.name) = Lines(text);
    return *std::move(json);
  }
  LintFinding finding;
  finding.document = document.name;
  if (const auto offset = json::syntaxErrorOffset(text)) {
    const SyntaxFault fault = syntaxFault(text, *offset);
    const json::TextPosition position = json::textPosition(text, fault.offset);
    finding.line = position.line;
    finding.column = position.column;
    finding.sentence = "this is not JSON: " + fault.sentence;
  } else if (text.find_first_not_of(" \t\r\n") == std::string_view::npos) {
    finding.line = 1;
    finding.sentence = "the file is empty: write a JSON object in { }";
  } else {
    const auto* error = json.error().as<CodingError>();
    finding.path = error ? error->path() : "";
    finding.sentence = error ? sentence(*error) : json.error().what();
  }
  report.add(std::move(finding));
  return std::nullopt;
}

void Report::error(std::string_view document, std::string path, std::string sentence) {
  add(LintFinding::Severity::error, document, std::move(path), std::move(sentence));
}

void Report::warning(std::string_view document, std::string path, std::string sentence) {
  add(LintFinding::Severity::warning, document, std::move(path), std::move(sentence));
}

void Report::add(LintFinding::Severity severity, std::string_view document, std::string path,
                 std::string sentence) {
  LintFinding finding;
  finding.severity = severity;
  finding.document = document;
  if (!path.empty()) finding.line = lines(document).of(path);
  finding.path = std::move(path);
  finding.sentence = std::move(sentence);
  add(std::move(finding));
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
  const Site site{read<SiteConfiguration>(documents.configurations, correctConfiguration, report),
                  read<BannerCustomization>(documents.customizations, correctCustomization, report),
                  read<Services>(documents.services, correctServices, report)};
  const std::string defaultLanguage = checkFolder(documents, report);
  checkStructure(site, report);
  checkColors(site, report);
  checkFairness(site, report);
  checkVendors(site, report);
  checkTranslations(site, defaultLanguage, report);
  if (doubleScale) checkFit(site, doubleScale, report);

  std::multimap<std::pair<std::string, std::size_t>, LintFinding> sorted;
  for (LintFinding& each : std::move(report).take()) {
    auto place = std::pair(each.document, each.line);
    sorted.emplace(std::move(place), std::move(each));
  }
  std::vector<LintFinding> findings;
  for (auto& [place, each] : sorted) findings.push_back(std::move(each));
  return findings;
}

}  // namespace TalvoConsentSDK
