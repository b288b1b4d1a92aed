// Finds what is missing in a site's folder, files that the service would not read, and faults of site.json.

#include <algorithm>
#include <cstdint>
#include <set>

#include "TalvoConsentSDK/models/JSONCoding.h"

#include "apps/lint/Corrections.h"
#include "apps/lint/DocumentName.h"
#include "apps/lint/Spelling.h"

namespace TalvoConsentSDK::linting {

namespace {

std::string customizationOf(std::string_view language) {
  return "customization." + std::string(language) + ".json";
}

class FolderCheck {
 public:
  FolderCheck(const SiteDocuments& documents, Report& report) : documents_(documents), report_(report) {}

  void run() {
    for (const SiteDocument& each : documents_.settings) checkSettings(each);
    if (documents_.folder.empty()) return;
    checkNames();
    checkLanguages();
    for (const bool isDefault : {true, false}) {
      for (const auto* kind : {&documents_.customizations, &documents_.services}) {
        for (const SiteDocument& each : *kind) {
          if ((each.language == defaultLanguage()) == isDefault) checkPictures(each);
        }
      }
    }
  }

  std::string defaultLanguage() const { return languages_.empty() ? "en" : languages_.front(); }

 private:
  bool hasFile(std::string_view name) const {
    return std::ranges::find(documents_.files, name) != documents_.files.end();
  }
  bool hasCustomization(std::string_view language) const {
    return std::ranges::find(documents_.customizations, language, &SiteDocument::language) !=
           documents_.customizations.end();
  }
  bool isListed(std::string_view language) const {
    return std::ranges::find(languages_, language) != languages_.end();
  }

  void checkSettings(const SiteDocument& document) {
    const auto json = parse(document, report_);
    if (!json) return;
    JSONValue settings = *json;
    JSONObject* const object = settings.object();
    if (!object) {
      report_.error(document.name, "", R"(the document is not an object: write {"languages": ["en"]})");
      return;
    }
    std::vector<std::string> unknown;
    for (const auto& [key, value] : *object) {
      if (key != "languages" && key != "keepFor") unknown.push_back(key);
    }
    for (const std::string& key : unknown) {
      if (!object->contains("languages") && closest(key, {"languages", "language"})) {
        renameKey(*object, key, "languages", "", document.name, report_);
      } else if (!object->contains("keepFor") && closest(key, {"keepFor"})) {
        renameKey(*object, key, "keepFor", "", document.name, report_);
      } else {
        report_.warning(document.name, key,
                        R"(the service reads no such key, only "languages" and "keepFor": remove it)");
      }
    }
    if (object->contains("keepFor")) checkKeepFor(document.name, object->at("keepFor"));
    const auto languages = object->find("languages");
    if (languages == object->end()) {
      report_.error(
          document.name, "languages",
          R"(this key is missing: list the site's languages, such as ["en", "de"], the default first)");
    } else {
      checkList(document.name, languages->second);
    }
  }

  void checkKeepFor(const std::string& name, const JSONValue& keepFor) {
    const std::int64_t* seconds = keepFor.integer();
    if (seconds && *seconds >= 1 && *seconds <= 31'536'000) return;
    report_.error(
        name, "keepFor",
        "write for how many seconds clients may keep the site's documents, as a whole number from 1 to "
        "31536000 (a year), or remove this key");
  }

  void checkList(const std::string& name, const JSONValue& list) {
    isComplete_ = list.array() && !list.array()->empty();
    if (!isComplete_) {
      report_.error(name, "languages",
                    R"(write a list of languages, such as ["en", "de"], the default first)");
      return;
    }
    for (std::size_t i = 0; i < list.array()->size(); ++i) {
      const std::string* const language = (*list.array())[i].string();
      const std::string path = at("languages", i);
      if (!language || !isLanguage(*language)) {
        report_.error(name, path,
                      R"(write the code of a language in double quotes, such as "en" or "de-AT")");
        isComplete_ = false;
        continue;
      }
      if (isListed(*language))
        report_.warning(name, path, quoted(*language) + " is listed twice: remove it here");
      if (!documents_.folder.empty() && !hasCustomization(*language)) {
        report_.error(name, path,
                      "there is no " + customizationOf(*language) + ": add it, or remove the language here");
      }
      languages_.push_back(*language);
    }
  }

  // Finds files that were meant to be documents.
  void checkNames() {
    for (const std::string& file : documents_.files) {
      const auto name = documentName(file, defaultLanguage());
      if (!name) continue;
      const std::string path = documents_.folder + "/" + file;
      if (name->expected != file && hasFile(name->expected)) {
        report_.warning(path, "",
                        "the service reads " + quoted(name->expected) +
                            " instead of this file: delete this file, or give it another name");
      } else if (name->expected != file) {
        report_.error(path, "", "the service does not read a file of this name" + didYouMean(name->expected));
      } else if (!name->language.empty() && !isLanguage(name->language)) {
        report_.error(path, "",
                      quoted(name->language) +
                          " is not the code of a language: clients ask for codes such as \"en\" or "
                          "\"de-AT\", so rename the file");
      }
    }
  }

  void checkLanguages() {
    const std::string language = defaultLanguage();
    if (documents_.customizations.empty()) {
      if (!isListed(language)) {
        report_.error(documents_.folder, "",
                      "there is no " + customizationOf(language) + ", so the site has no banner: add it");
      }
      return;
    }
    const auto hasLanguage = [](const SiteDocument& each) { return isLanguage(each.language); };
    if (!hasCustomization(language) && documents_.settings.empty() &&
        std::ranges::all_of(documents_.customizations, hasLanguage)) {
      report_.error(documents_.folder, "",
                    "there is no " + customizationOf(language) +
                        R"(, and users of other languages need one: add it, or make another language the )"
                        R"(default with a site.json such as {"languages": [")" +
                        documents_.customizations.front().language + R"("]})");
    }
    if (isComplete_) warnOfUnlisted();
    for (const SiteDocument& each : documents_.services) {
      if (each.language.empty() || hasCustomization(each.language) || isListed(each.language)) continue;
      report_.error(each.name, "",
                    "there is no " + customizationOf(each.language) + " for this language: add it");
    }
  }

  void warnOfUnlisted() {
    for (const SiteDocument& each : documents_.customizations) {
      if (isListed(each.language)) continue;
      report_.warning(documents_.settings.front().name, "languages",
                      "there is a " + customizationOf(each.language) + ", but " + quoted(each.language) +
                          " is not listed: add it");
    }
  }

  // Finds texts that are URLs of files that do not exist. A missing file is reported in one document only.
  void checkPictures(const SiteDocument& document) {
    const auto json = JSONDecoder().decode<JSONValue>(document.text);
    if (!json || documents_.filesURL.size() < 2) return;
    const std::string& own = documents_.filesURL;
    const std::string sites = own.substr(0, own.rfind('/', own.size() - 2) + 1);
    forEachText(*json, "", [&](const std::string& path, const std::string& text) {
      if (text.starts_with(own)) {
        checkPicture(document.name, path, text.substr(own.size(), text.find_first_of("?#") - own.size()));
      } else if (text.starts_with(sites)) {
        report_.warning(document.name, path,
                        "the file is in the folder of another site: copy it to this folder, and write " +
                            quoted(own + text.substr(text.rfind('/') + 1)));
      }
    });
  }

  void checkPicture(const std::string& document, const std::string& path, const std::string& file) {
    if (hasFile(file) || !missing_.insert(file).second) return;
    const auto meant = closest(file, documents_.files);
    report_.error(document, path,
                  "the folder has no file " + quoted(file) +
                      (meant ? didYouMean(*meant) : ": add it, or correct the URL"));
  }

  const SiteDocuments& documents_;
  Report& report_;
  std::vector<std::string> languages_;
  bool isComplete_ = false;  // whether languages_ has all that are listed
  std::set<std::string> missing_;
};

}  // namespace

std::string checkFolder(const SiteDocuments& documents, Report& report) {
  FolderCheck check(documents, report);
  check.run();
  return check.defaultLanguage();
}

}  // namespace TalvoConsentSDK::linting
