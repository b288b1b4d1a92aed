// Finds misspelt identifiers. One that resembles none is left to the other checks.

#include <algorithm>
#include <iterator>
#include <set>

#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/ui/BannerActions.h"
#include "TalvoConsentSDK/ui/Labels.h"

#include "apps/lint/Corrections.h"
#include "apps/lint/Spelling.h"

namespace TalvoConsentSDK::linting {

namespace {

JSONValue* member(JSONValue* value, std::string_view key) {
  JSONObject* object = value ? value->object() : nullptr;
  if (!object) return nullptr;
  const auto found = object->find(key);
  return found == object->end() ? nullptr : &found->second;
}

bool contains(const std::vector<std::string>& names, std::string_view name) {
  return std::ranges::find(names, name) != names.end();
}

class NameCorrection {
 public:
  NameCorrection(const std::string& document, Report& report) : document_(document), report_(report) {}

  // Corrects a text that should be one of the names. `kind` says what they name.
  void correct(JSONValue* value, const std::string& path, const char* kind,
               const std::vector<std::string>& names) {
    const std::string* text = value ? value->string() : nullptr;
    if (!text || contains(names, *text)) return;
    const auto meant = closest(*text, names);
    if (!meant) return;
    report_.error(document_, path,
                  std::string("no ") + kind + " is named " + quoted(*text) + didYouMean(*meant));
    *value = *meant;
  }

  void correctComponent(JSONValue& item, const std::string& path, bool isMainScreen, JSONValue* urls) {
    correct(member(&item, "id"), path + ".id", "component", componentIdentifiers());
    if (JSONValue* buttons = member(&item, "buttons")) {
      forEachEntry(*buttons, path + ".buttons", [&](JSONValue& button, const std::string& place) {
        JSONValue* const id = member(&button, "id");
        const bool isForOtherScreen = id && id->string() && contains(buttonIdentifiers(false), *id->string());
        if (!isForOtherScreen) correct(id, place + ".id", "button", buttonIdentifiers(isMainScreen));
      });
    }
    if (JSONValue* links = member(&item, "links")) {
      forEachEntry(*links, path + ".links", [&](JSONValue& link, const std::string& place) {
        const bool isOwn = link.string() && member(urls, linkURLKey(*link.string()));
        if (!isOwn) correct(&link, place, "link", linkIdentifiers());
        if (link.string()) links_.insert(*link.string());
      });
    }
    if (JSONValue* tabs = member(&item, "tabs")) {
      forEachEntry(*tabs, path + ".tabs", [&](JSONValue& tab, const std::string& place) {
        if (JSONValue* categories = member(&tab, "categories")) {
          forEachEntry(*categories, place + ".categories", [&](JSONValue& category, const std::string& at) {
            correct(&category, at, "category", tabCategories());
          });
        }
      });
    }
  }

  // Corrects the keys of URLs that no listed link uses.
  void correctURLs(JSONObject& urls, const std::string& path) {
    std::vector<std::string> absent;
    for (const std::string& link : linkIdentifiers()) {
      const std::string key = linkURLKey(link);
      if (link != "doNotSellMyData" && !urls.contains(key)) absent.push_back(key);
    }
    std::vector<std::string> unused;
    for (const auto& [key, url] : urls) {
      const auto isFor = [&](const std::string& link) { return linkURLKey(link) == key; };
      if (std::ranges::none_of(linkIdentifiers(), isFor) && std::ranges::none_of(links_, isFor)) {
        unused.push_back(key);
      }
    }
    for (const std::string& key : unused) {
      auto meant = closest(key, absent);
      if (!meant && contains(absent, linkURLKey(key))) meant = linkURLKey(key);
      if (!meant) continue;
      renameKey(urls, key, *meant, path, document_, report_);
      std::erase(absent, *meant);
    }
  }

 private:
  const std::string& document_;
  Report& report_;
  std::set<std::string> links_;
};

}  // namespace

std::vector<std::string> componentIdentifiers() {
  return {"title", "description", "bannerLogo", "links", "buttons", "tabs", "closeButton"};
}

std::vector<std::string> buttonIdentifiers(bool isMainScreen) {
  std::vector<std::string> names;
  for (const CommonAction& action : commonActions) names.emplace_back(action.id);
  if (!isMainScreen) names.emplace_back(saveAction);
  names.emplace_back(closeAction);
  return names;
}

std::vector<std::string> linkIdentifiers() {
  return {"privacyPolicy", "cookiePolicy", "termsAndConditions", "doNotSell", "doNotSellMyData", "dsr"};
}

void correctNames(JSONValue& customization, const std::string& document, Report& report) {
  NameCorrection correction(document, report);
  JSONValue* const root = member(&customization, "customization");
  JSONValue* const urls = member(root, "urls");
  JSONValue* const components = member(root, "components");
  for (const char* screen : {"mainScreen", "secondaryScreen"}) {
    JSONValue* const items = member(components, screen);
    if (!items) continue;
    const bool isMain = std::string_view(screen) == "mainScreen";
    forEachEntry(*items, std::string("customization.components.") + screen,
                 [&](JSONValue& item, const std::string& path) {
                   correction.correctComponent(item, path, isMain, urls);
                 });
  }
  if (urls && urls->object()) correction.correctURLs(*urls->object(), "customization.urls");
}

void correctCatalogue(JSONValue& services, const std::string& document, Report& report) {
  NameCorrection correction(document, report);
  const auto categories = tabCategories();
  std::vector<std::string> vendors;
  if (JSONValue* libraries = member(&services, "libraries")) {
    forEachEntry(*libraries, "libraries", [&](JSONValue& service, const std::string& path) {
      JSONValue* const category = member(&service, "category");
      const bool isKnown =
          category && category->string() && contains(categories, normalizedCategoryKey(*category->string()));
      if (!isKnown) correction.correct(category, path + ".category", "category", categories);
      const JSONValue* const vendor = member(&service, "vendor");
      if (vendor && vendor->string() && !contains(vendors, *vendor->string())) {
        vendors.push_back(*vendor->string());
      }
    });
  }
  JSONValue* const details = member(&services, "services");
  if (!details) return;
  std::vector<std::string> undescribed = vendors;
  forEachEntry(*details, "services", [&](JSONValue& entry, const std::string&) {
    if (const JSONValue* id = member(&entry, "id"); id && id->string())
      std::erase(undescribed, *id->string());
  });
  forEachEntry(*details, "services", [&](JSONValue& entry, const std::string& path) {
    JSONValue* const id = member(&entry, "id");
    const bool isVendor = id && id->string() && contains(vendors, *id->string());
    if (!isVendor) correction.correct(id, path + ".id", "vendor", undescribed);
  });
}

}  // namespace TalvoConsentSDK::linting
