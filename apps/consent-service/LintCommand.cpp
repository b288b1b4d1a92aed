#include "LintCommand.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/models/JSONValue.h"

#include "Sites.h"
#include "apps/lint/DocumentName.h"
#include "apps/lint/EstimatedText.h"
#include "apps/lint/SiteLint.h"

namespace TalvoConsentSDK::service {

namespace {

namespace fs = std::filesystem;

using Kind = std::vector<SiteDocument> SiteDocuments::*;

// What {{base}} stands for while documents are checked. Findings say {{base}} again.
constexpr std::string_view placeholder = "{{base}}";
constexpr std::string_view base = "https://consent.example";

constexpr std::pair<std::string_view, Kind> kindsByKey[] = {
    {"customization", &SiteDocuments::customizations},
    {"bannerType", &SiteDocuments::customizations},
    {"libraries", &SiteDocuments::services},
    {"implicitConsent", &SiteDocuments::configurations},
    {"returnSecondaryView", &SiteDocuments::configurations},
};

std::string withPlaceholder(std::string sentence) {
  for (auto at = sentence.find(base); at != std::string::npos; at = sentence.find(base, at)) {
    sentence.replace(at, base.size(), placeholder);
  }
  return sentence;
}

void print(const LintFinding& finding) {
  std::string place = finding.document;
  if (finding.line > 0) place += ":" + std::to_string(finding.line);
  if (finding.column > 0) place += ":" + std::to_string(finding.column);
  const bool isError = finding.severity == LintFinding::Severity::error;
  std::printf("%s: %s: %s%s%s\n", place.c_str(), isError ? "error" : "warning", finding.path.c_str(),
              finding.path.empty() ? "" : ": ", withPlaceholder(finding.sentence).c_str());
}

std::vector<fs::path> entriesOf(const fs::path& folder) {
  std::vector<fs::path> entries;
  std::error_code error;
  for (fs::directory_iterator each(folder, error), end; !error && each != end; each.increment(error)) {
    entries.push_back(each->path());
  }
  std::ranges::sort(entries);
  return entries;
}

std::optional<std::string> textOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string text(std::istreambuf_iterator<char>(stream), {});
  if (!stream.is_open() || stream.bad()) return std::nullopt;
  // Only JSON can have the placeholder. In other texts it stays, so that columns are those of the file.
  return JSONDecoder().decode<JSONValue>(text) ? withBase(std::move(text), base) : std::move(text);
}

// Recognises a document by its keys.
Kind kindOf(const std::string& text) {
  const auto value = JSONDecoder().decode<JSONValue>(text);
  if (!value || !value->object()) return nullptr;
  const auto* kind = std::ranges::find_if(
      kindsByKey, [&](const auto& each) { return value->object()->contains(each.first); });
  return kind == std::end(kindsByKey) ? nullptr : kind->second;
}

// Recognises a document that has another name.
Kind kindByKeys(const fs::path& file) {
  if (file.extension() != ".json") return nullptr;
  const auto text = textOf(file);
  return text ? kindOf(*text) : nullptr;
}

bool isDocument(const fs::path& file) {
  std::error_code error;
  return fs::is_regular_file(file, error) &&
         (linting::documentName(file.filename().string()) || kindByKeys(file));
}

bool isSite(const fs::path& folder) {
  return std::ranges::any_of(entriesOf(folder), isDocument);
}

// The documents, grouped by folder.
class Collection {
 public:
  void add(const fs::path& path) {
    std::error_code error;
    if (!fs::is_directory(path, error)) return addFile(path);
    if (isSite(path)) return addSite(path);
    bool hasSites = false;
    for (const fs::path& each : entriesOf(path)) {
      if (!fs::is_directory(each, error) || !isSite(each)) continue;
      hasSites = true;
      addSite(each);
    }
    if (!hasSites) refuse(path, "the folder contains no documents of a site: add a customization.en.json");
  }

  // Prints all findings. Returns false if one is an error.
  bool lint() const {
    bool isSound = isReadable_;
    const auto measurer = std::make_shared<EstimatedText>(2);
    for (const auto& [folder, documents] : sites_) {
      for (const LintFinding& each : lintSite(documents, measurer)) {
        print(each);
        isSound = isSound && each.severity != LintFinding::Severity::error;
      }
    }
    return isSound;
  }

 private:
  // A file that is named itself: nothing is known about the rest of its site.
  void addFile(const fs::path& path) {
    auto text = textOf(path);
    if (!text) return refuse(path, "the file cannot be read");
    auto& site = sites_[path.parent_path()];
    if (auto name = linting::documentName(path.filename().string())) {
      (site.*name->kind).emplace_back(path.string(), std::move(name->language), *std::move(text));
    } else if (const Kind kind = kindOf(*text)) {
      (site.*kind).emplace_back(path.string(), path.stem().string(), *std::move(text));
    } else {
      refuse(path, "not a configuration, customization or catalogue of services");
    }
  }

  void addSite(const fs::path& path) {
    const auto entries = entriesOf(path);
    const fs::path folder = entries.front().parent_path();
    auto& site = sites_[folder];
    std::error_code error;
    site.folder = folder.string();
    site.filesURL =
        std::string(base) + "/sites/" + fs::weakly_canonical(folder, error).filename().string() + "/";
    for (const fs::path& each : entries) {
      if (fs::is_regular_file(each, error)) site.files.push_back(each.filename().string());
    }
    const std::string language = defaultLanguage(textOf(folder / "site.json").value_or("{}"));
    for (const fs::path& each : entries) {
      if (!isDocument(each)) continue;
      auto text = textOf(each);
      auto name = linting::documentName(each.filename().string(), language);
      if (!text) {
        refuse(each, "the file cannot be read");
      } else if (!name) {
        addByKeys(site, each, *std::move(text), language);
      } else if (name->expected == each.filename() || !fs::exists(folder / name->expected, error)) {
        (site.*name->kind).emplace_back(each.string(), std::move(name->language), *std::move(text));
      }
    }
  }

  // Checks a document with another name, unless the site has the document under the right name.
  void addByKeys(SiteDocuments& site, const fs::path& path, std::string text, const std::string& language) {
    const Kind kind = kindOf(text);
    if (!kind) return;  // the file has changed meanwhile
    const bool isCustomization = kind == &SiteDocuments::customizations;
    const std::string expected = isCustomization                    ? "customization." + language + ".json"
                                 : kind == &SiteDocuments::services ? "services.json"
                                                                    : "configuration.json";
    std::error_code error;
    if (fs::exists(path.parent_path() / expected, error)) return;
    (site.*kind).emplace_back(path.string(), isCustomization ? language : "", std::move(text));
    const std::string sentence =
        "the service does not read a file of this name: rename it to \"" + expected + '"';
    refuse(path, sentence.c_str());
  }

  void refuse(const fs::path& path, const char* why) {
    LintFinding finding;
    finding.document = path.string();
    finding.sentence = why;
    print(finding);
    isReadable_ = false;
  }

  std::map<fs::path, SiteDocuments> sites_;
  bool isReadable_ = true;
};

}  // namespace

bool lint(const std::vector<std::filesystem::path>& paths) {
  Collection collection;
  for (const fs::path& each : paths) collection.add(each);
  return collection.lint();
}

}  // namespace TalvoConsentSDK::service
