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
#include "apps/lint/EstimatedText.h"
#include "apps/lint/SiteLint.h"

namespace TalvoConsentSDK::service {

namespace {

namespace fs = std::filesystem;

using Kind = std::vector<SiteDocument> SiteDocuments::*;

constexpr std::pair<std::string_view, Kind> kindsByName[] = {
    {"configuration", &SiteDocuments::configurations},
    {"customization", &SiteDocuments::customizations},
    {"services", &SiteDocuments::services},
};

constexpr std::pair<std::string_view, Kind> kindsByKey[] = {
    {"customization", &SiteDocuments::customizations},
    {"bannerType", &SiteDocuments::customizations},
    {"libraries", &SiteDocuments::services},
    {"services", &SiteDocuments::services},
    {"model", &SiteDocuments::services},
    {"implicitConsent", &SiteDocuments::configurations},
    {"returnSecondaryView", &SiteDocuments::configurations},
};

void printFinding(const std::string& document, bool isError, const std::string& path,
                  const std::string& sentence) {
  std::printf("%s: %s: %s%s%s\n", document.c_str(), isError ? "error" : "warning", path.c_str(),
              path.empty() ? "" : ": ", sentence.c_str());
}

// Recognises a document by its name, KIND.json or KIND.LANGUAGE.json.
std::optional<std::pair<Kind, std::string>> kindOf(const fs::path& file) {
  if (file.extension() != ".json") return std::nullopt;
  const std::string stem = file.stem().string();
  const std::string name = stem.substr(0, stem.find('.'));
  const auto* kind = std::ranges::find(kindsByName, name, &std::pair<std::string_view, Kind>::first);
  if (kind == std::end(kindsByName)) return std::nullopt;
  return std::pair(kind->second, name == stem ? "" : stem.substr(name.size() + 1));
}

// Recognises a document with another name by its keys; the name is then used as the language.
std::optional<std::pair<Kind, std::string>> kindOf(const fs::path& file, const std::string& text) {
  const auto value = JSONDecoder().decode<JSONValue>(text);
  if (!value || !value->object()) return std::nullopt;
  for (const auto& [key, kind] : kindsByKey) {
    if (value->object()->contains(key)) return std::pair(kind, file.stem().string());
  }
  return std::nullopt;
}

// The documents, grouped by folder.
class Collection {
 public:
  void add(const fs::path& path) {
    std::error_code error;
    if (!fs::is_directory(path, error)) return addFile(path);
    auto entries = entriesOf(path);
    const auto isDocument = [](const fs::path& each) { return kindOf(each).has_value(); };
    const bool isSite = std::ranges::any_of(entries, isDocument);
    bool hasSites = false;
    for (const fs::path& each : entries) {
      if (isSite && isDocument(each)) addFile(each);
      if (isSite || !fs::is_directory(each, error)) continue;
      if (std::ranges::any_of(entriesOf(each), isDocument)) {
        hasSites = true;
        add(each);
      }
    }
    if (!isSite && !hasSites) refuse(path, "the folder contains no documents of a site");
  }

  // Prints all findings. Returns false if one is an error.
  bool lint() const {
    bool isSound = isReadable_;
    const auto measurer = std::make_shared<EstimatedText>(2);
    for (const auto& [folder, documents] : sites_) {
      for (const LintFinding& each : lintSite(documents, measurer)) {
        const bool isError = each.severity == LintFinding::Severity::error;
        printFinding(each.document, isError, each.path, each.sentence);
        isSound = isSound && !isError;
      }
    }
    return isSound;
  }

 private:
  static std::vector<fs::path> entriesOf(const fs::path& folder) {
    std::vector<fs::path> entries;
    std::error_code error;
    for (fs::directory_iterator each(folder, error), end; !error && each != end; each.increment(error)) {
      entries.push_back(each->path());
    }
    std::ranges::sort(entries);
    return entries;
  }

  void addFile(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(stream), {});
    if (!stream.is_open() || stream.bad()) return refuse(path, "the file cannot be read");
    text = withBase(std::move(text), "https://consent.example");
    auto kind = kindOf(path);
    if (!kind) kind = kindOf(path, text);
    if (!kind) {
      return refuse(path, "not a configuration, customization or catalogue of services");
    }
    auto& documents = sites_[path.parent_path()].*kind->first;
    documents.emplace_back(path.string(), std::move(kind->second), std::move(text));
  }

  void refuse(const fs::path& path, const char* why) {
    printFinding(path.string(), true, "", why);
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
