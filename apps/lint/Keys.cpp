// Finds misspelt keys of records. An unknown key that resembles no known one is no fault: documents hold more
// keys than the banner reads, because the service that writes them has other clients, too.

#include <algorithm>
#include <span>

#include "TalvoConsentSDK/models/json/BannerFields.h"
#include "TalvoConsentSDK/models/json/ServicesFields.h"

#include "apps/lint/Corrections.h"
#include "apps/lint/Spelling.h"

namespace TalvoConsentSDK::linting {

namespace {

using Fields = std::span<const json::Field>;

template <class Record>
void assignIfCoded(Fields& fields, const json::Coding* coding) {
  using List = std::vector<Record>;
  const bool isCoded = coding == &json::coding<Record> || coding == &json::coding<List> ||
                       coding == &json::coding<std::optional<Record>> ||
                       coding == &json::coding<std::optional<List>>;
  if (isCoded) fields = json::Fields<Record>::table;
}

template <class... Records>
Fields firstCoded(const json::Coding* coding) {
  Fields fields;
  (assignIfCoded<Records>(fields, coding), ...);
  return fields;
}

// Returns the fields of the record, or of the records in the list, that `coding` reads; none for other types.
Fields fieldsOf(const json::Coding* coding) {
  using Banner = BannerCustomization;
  return firstCoded<Banner::Customization, Banner::Colors, Banner::Settings, Banner::Messages,
                    Banner::BannerMessages, Banner::Resources, Banner::Components, Banner::ComponentItem,
                    Banner::ButtonItem, Banner::TabItem, Services::Service, Services::SpecificServiceDetails>(
      coding);
}

class KeyCorrection {
 public:
  KeyCorrection(const std::string& document, Report& report) : document_(document), report_(report) {}

  void correct(JSONValue& value, Fields fields, const std::string& path) {
    if (value.array()) {
      forEachEntry(value, path,
                   [&](JSONValue& entry, const std::string& place) { correct(entry, fields, place); });
    }
    JSONObject* object = value.object();
    if (!object || fields.empty()) return;
    correctKeys(*object, fields, path);
    for (const json::Field& field : fields) {
      const auto member = object->find(field.key);
      if (member != object->end())
        correct(member->second, fieldsOf(field.coding), memberPath(path, field.key));
    }
  }

 private:
  void correctKeys(JSONObject& object, Fields fields, const std::string& path) {
    std::vector<std::string> absent;
    for (const json::Field& field : fields) {
      if (!object.contains(field.key)) absent.emplace_back(field.key);
    }
    std::vector<std::string> unknown;
    for (const auto& [key, value] : object) {
      if (std::ranges::find(fields, key, &json::Field::key) == fields.end()) unknown.push_back(key);
    }
    for (const std::string& key : unknown) {
      const auto meant = closest(key, absent);
      if (!meant) continue;
      renameKey(object, key, *meant, path, document_, report_);
      std::erase(absent, *meant);
    }
  }

  const std::string& document_;
  Report& report_;
};

}  // namespace

void renameKey(JSONObject& object, const std::string& key, const std::string& meant, const std::string& path,
               const std::string& document, Report& report) {
  report.error(document, memberPath(path, key), "there is no such key" + didYouMean(meant));
  report.lines(document).rename(memberPath(path, key), memberPath(path, meant));
  auto member = object.extract(key);
  member.key() = meant;
  object.insert(std::move(member));
}

void correctConfiguration(JSONValue& json, const std::string& document, Report& report) {
  KeyCorrection(document, report).correct(json, json::Fields<SiteConfiguration>::table, "");
}

void correctCustomization(JSONValue& json, const std::string& document, Report& report) {
  KeyCorrection(document, report).correct(json, json::Fields<BannerCustomization>::table, "");
  correctNames(json, document, report);
}

void correctServices(JSONValue& json, const std::string& document, Report& report) {
  KeyCorrection(document, report).correct(json, json::Fields<Services>::table, "");
  correctCatalogue(json, document, report);
}

}  // namespace TalvoConsentSDK::linting
