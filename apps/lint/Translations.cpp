// Finds what one language of a site has and another lacks.

#include <algorithm>
#include <map>
#include <set>

#include "apps/lint/Site.h"

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

// Reports what `other` has and `mine` lacks. Findings call the other document `otherName`.
class Comparison {
 public:
  Comparison(std::string_view name, std::string otherName, Report& report)
      : name_(name), otherName_(std::move(otherName)), report_(report) {}

  void compare(const JSONValue& mine, const JSONValue& other, const std::string& path) {
    if (mine.object() && other.object()) {
      for (const auto& [key, value] : *other.object()) {
        const std::string member = path.empty() ? key : path + "." + key;
        const auto own = mine.object()->find(key);
        if (own == mine.object()->end()) {
          error(member, "is in " + otherName_ + ", but not here");
        } else {
          compare(own->second, value, member);
        }
      }
    } else if (mine.array() && other.array()) {
      compareLists(*mine.array(), *other.array(), path);
    } else if (identifiesVendors(path) && !(mine == other)) {
      error(path, "differs from " + otherName_ + ", but stored consents identify vendors by it");
    }
  }

 private:
  void error(const std::string& path, const std::string& sentence) { report_.error(name_, path, sentence); }

  // Stored consents name vendors by these texts, so the texts must be the same in all languages.
  static bool identifiesVendors(const std::string& path) {
    return path.starts_with("libraries") && (path.ends_with(".vendor") || path.ends_with(".category"));
  }

  void compareLists(const JSONArray& mine, const JSONArray& other, const std::string& path) {
    if (haveIdentifiers(mine) && haveIdentifiers(other)) {
      std::map<std::string_view, std::size_t> own;
      for (std::size_t i = 0; i < mine.size(); ++i) own.emplace(*identifier(mine[i]), i);
      for (const JSONValue& entry : other) {
        const auto index = own.find(*identifier(entry));
        if (index == own.end()) {
          error(path, quoted(*identifier(entry)) + " is in " + otherName_ + ", but not here");
        } else {
          compare(mine[index->second], entry, at(path, index->second));
        }
      }
    } else if (mine.size() != other.size()) {
      error(path, "has " + std::to_string(mine.size()) + " entries, but " + std::to_string(other.size()) +
                      " in " + otherName_);
    } else {
      for (std::size_t i = 0; i < mine.size(); ++i) compare(mine[i], other[i], at(path, i));
    }
  }

  const std::string_view name_;
  const std::string otherName_;
  Report& report_;
};

template <class Record>
void compareAll(const std::vector<Document<Record>>& documents, Report& report) {
  for (const auto& mine : documents) {
    for (const auto& other : documents) {
      if (&mine == &other || mine.language == other.language) continue;
      Comparison(mine.name, other.language.empty() ? "the others" : quoted(other.language), report)
          .compare(mine.json, other.json, "");
    }
  }
}

}  // namespace

void checkTranslations(const Site& site, Report& report) {
  compareAll(site.customizations, report);
  compareAll(site.services, report);

  const auto& services = site.services;
  if (services.empty()) return;
  for (const auto& document : site.customizations) {
    const auto serves = [&](const ServicesDocument& each) {
      return each.language.empty() || each.language == document.language;
    };
    if (std::ranges::any_of(services, serves)) continue;
    report.error(document.name, "", "there are services in other languages, but none in this one");
  }
}

}  // namespace TalvoConsentSDK::linting
