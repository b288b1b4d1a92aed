// Finds what one language of a site has and another lacks.

#include <algorithm>
#include <map>
#include <set>

#include "apps/lint/Corrections.h"
#include "apps/lint/Spelling.h"

namespace TalvoConsentSDK::linting {

namespace {

// Returns what identifies an entry of a list: a text itself, or an object's "id".
const std::string* identifier(const JSONValue& entry) {
  if (const JSONObject* object = entry.object()) {
    const auto id = object->find("id");
    return id == object->end() ? nullptr : id->second.string();
  }
  return entry.string();
}

bool haveIdentifiers(const JSONArray& entries) {
  std::set<std::string_view> seen;
  return std::ranges::all_of(entries, [&](const JSONValue& entry) {
    const std::string* id = identifier(entry);
    return id && seen.insert(*id).second;
  });
}

// Compares a document with that of the default language.
class Comparison {
 public:
  // `gaps` collects what the default language lacks, so that the next comparison does not report it again.
  Comparison(const std::string& name, std::string language, const std::string& defaultName,
             std::string defaultLanguage, std::set<std::string>& gaps, Report& report)
      : name_(name),
        language_(std::move(language)),
        defaultName_(defaultName),
        defaultLanguage_(std::move(defaultLanguage)),
        gaps_(gaps),
        report_(report) {}

  void compare(const JSONValue& mine, const JSONValue& other, const std::string& path) {
    if (mine.object() && other.object()) {
      compareObjects(*mine.object(), *other.object(), path);
    } else if (mine.array() && other.array()) {
      compareLists(*mine.array(), *other.array(), path);
    } else if (identifiesVendors(path) && !(mine == other)) {
      report_.error(name_, path,
                    "differs from " + defaultLanguage_ +
                        ", but stored consents identify vendors by it: write " +
                        (other.string() ? quoted(*other.string()) : "the same") + " here, too");
    }
  }

 private:
  void isMissing(const std::string& path, const std::string& what) {
    report_.error(name_, path, what + "is in " + defaultLanguage_ + ", but not here: add it");
  }
  void isMissingInDefault(const std::string& path, const std::string& what) {
    if (!gaps_.insert(path + " " + what).second) return;
    report_.error(defaultName_, path, what + "is in " + language_ + ", but not here: add it");
  }

  // Stored consents name vendors by these texts, so the texts must be the same in all languages.
  static bool identifiesVendors(const std::string& path) {
    return path.starts_with("libraries") && (path.ends_with(".vendor") || path.ends_with(".category"));
  }

  void compareObjects(const JSONObject& mine, const JSONObject& other, const std::string& path) {
    for (const auto& [key, value] : other) {
      const auto own = mine.find(key);
      if (own == mine.end()) {
        isMissing(memberPath(path, key), "");
      } else {
        compare(own->second, value, memberPath(path, key));
      }
    }
    for (const auto& [key, value] : mine) {
      if (!other.contains(key)) isMissingInDefault(memberPath(path, key), "");
    }
  }

  void compareLists(const JSONArray& mine, const JSONArray& other, const std::string& path) {
    if (haveIdentifiers(mine) && haveIdentifiers(other)) {
      compareEntries(mine, other, path);
    } else if (mine.size() != other.size()) {
      report_.error(name_, path,
                    "has " + std::to_string(mine.size()) + " entries, but " + std::to_string(other.size()) +
                        " in " + defaultLanguage_ + ": list the same entries in both");
    } else {
      for (std::size_t i = 0; i < mine.size(); ++i) compare(mine[i], other[i], at(path, i));
    }
  }

  void compareEntries(const JSONArray& mine, const JSONArray& other, const std::string& path) {
    std::map<std::string_view, const JSONValue*> others;
    for (const JSONValue& entry : other) others.emplace(*identifier(entry), &entry);
    std::map<std::string_view, std::size_t> extra;
    for (std::size_t i = 0; i < mine.size(); ++i) {
      const std::string& id = *identifier(mine[i]);
      const auto same = others.find(id);
      if (same == others.end()) {
        extra.emplace(id, i);
      } else {
        compare(mine[i], *same->second, at(path, i));
        others.erase(same);
      }
    }
    std::vector<std::string> missing;
    for (const auto& [id, entry] : others) missing.emplace_back(id);
    for (const auto& [id, index] : extra) {
      if (const auto meant = closest(id, missing)) {
        const std::string place = at(path, index) + (mine[index].object() ? ".id" : "");
        report_.error(name_, place, quoted(id) + " is not in " + defaultLanguage_ + didYouMean(*meant));
        std::erase(missing, *meant);
      } else {
        isMissingInDefault(path, quoted(id) + " ");
      }
    }
    for (const std::string& id : missing) isMissing(path, quoted(id) + " ");
  }

  const std::string& name_;
  const std::string language_;
  const std::string& defaultName_;
  const std::string defaultLanguage_;
  std::set<std::string>& gaps_;
  Report& report_;
};

template <class Record>
void compareAll(const std::vector<Document<Record>>& documents, const std::string& defaultLanguage,
                Report& report) {
  const auto nameOf = [](const std::string& language) {
    return language.empty() ? "the document for all languages" : quoted(language);
  };
  auto standard = std::ranges::find(documents, defaultLanguage, &Document<Record>::language);
  if (standard == documents.end()) standard = documents.begin();
  std::set<std::string> gaps;
  for (const auto& each : documents) {
    if (&each == &*standard || each.language == standard->language) continue;
    Comparison(each.name, nameOf(each.language), standard->name, nameOf(standard->language), gaps, report)
        .compare(each.json, standard->json, "");
  }
}

}  // namespace

void checkTranslations(const Site& site, const std::string& defaultLanguage, Report& report) {
  compareAll(site.customizations, defaultLanguage, report);
  compareAll(site.services, defaultLanguage, report);

  const auto& services = site.services;
  if (services.empty()) return;
  for (const auto& document : site.customizations) {
    const auto serves = [&](const ServicesDocument& each) {
      return each.language.empty() || each.language == document.language ||
             document.language.starts_with(each.language + "-");
    };
    if (std::ranges::any_of(services, serves)) continue;
    report.error(document.name, "",
                 "there are services in other languages, but none in this one: add a services." +
                     document.language + ".json");
  }
}

}  // namespace TalvoConsentSDK::linting
