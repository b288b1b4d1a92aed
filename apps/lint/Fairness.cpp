// Checks that rejecting is as easy as accepting, and that users can see and switch every vendor.

#include <algorithm>
#include <map>
#include <set>

#include "TalvoConsentSDK/models/ServicesByCategory.h"
#include "TalvoConsentSDK/ui/BannerActions.h"
#include "TalvoConsentSDK/ui/ComponentRenderer.h"
#include "TalvoConsentSDK/ui/ExternalLink.h"

#include "apps/lint/Site.h"
#include "apps/lint/Spelling.h"

namespace TalvoConsentSDK::linting {

namespace {

using Buttons = std::vector<BannerCustomization::ButtonItem>;

// Returns the number of vendors in each category. If the catalogues of the languages differ, the highest
// number counts.
std::map<std::string, std::size_t, std::less<>> vendorCounts(const Site& site) {
  std::map<std::string, std::size_t, std::less<>> counts;
  for (const auto& document : site.services) {
    const ServicesByCategory catalogue(document.record);
    for (const auto& [category, vendors] : catalogue.servicesByCategory()) {
      counts[category] = std::max(counts[category], vendors.size());
    }
  }
  return counts;
}

// A row holds two buttons of half its width; a single last button has its full width.
bool isWide(const Buttons& buttons, std::size_t index) {
  return index + 1 == buttons.size() && index % 2 == 0;
}

std::size_t find(const Buttons& buttons, std::string_view action) {
  const auto found = std::ranges::find_if(buttons, [&](const auto& each) { return each.id == action; });
  return static_cast<std::size_t>(found - buttons.begin());
}

void checkAccept(const CustomizationDocument& document, const Screen& screen, Report& report) {
  for (std::size_t i = 0; i < screen.items.size(); ++i) {
    const auto& item = screen.items[i];
    if (item.id != "buttons" || !item.buttons) continue;
    const std::size_t accept = find(*item.buttons, acceptAction);
    const std::size_t reject = find(*item.buttons, rejectAction);
    if (accept == item.buttons->size()) continue;
    const std::string path = at(at(screen.path, i) + ".buttons", accept);
    if (reject == item.buttons->size()) {
      report.error(document.name, path,
                   "this accept button has no reject button beside it: add \"rejectAll\" to the same list");
    } else if (isWide(*item.buttons, accept) != isWide(*item.buttons, reject)) {
      report.error(document.name, path,
                   "the accept and reject buttons have different widths: list them next to each other, in a "
                   "row of two");
    }
  }
}

// Every vendor must be listed below its category's switch. If the tab does not set `services`, the switch
// does not change the vendors; without a tab, there is no switch.
void checkTabs(const CustomizationDocument& document, const Screen& screen,
               const std::map<std::string, std::size_t, std::less<>>& counts, Report& report) {
  std::set<std::string, std::less<>> listed;
  bool hasTabs = false;
  for (std::size_t i = 0; i < screen.items.size(); ++i) {
    const auto& item = screen.items[i];
    if (item.id != "tabs" || !ComponentRendererFactory::isComplete(item)) continue;
    hasTabs = true;
    for (std::size_t j = 0; j < item.tabs->size(); ++j) {
      const auto categories = tabCategories((*item.tabs)[j]);
      listed.insert(categories.begin(), categories.end());
      const auto withVendors = std::ranges::find_if(
          categories, [&](const std::string& category) { return counts.contains(category); });
      if ((*item.tabs)[j].services || withVendors == categories.end()) continue;
      report.error(document.name, at(at(screen.path, i) + ".tabs", j) + ".services",
                   "the catalogue has vendors in " + quoted(*withVendors) +
                       ", which the category's switch would not change: write true");
    }
  }
  for (const std::string& category : tabCategories()) {
    if (!hasTabs || listed.contains(category) || !counts.contains(category)) continue;
    const std::size_t count = counts.find(category)->second;
    report.error(document.name, screen.path,
                 "no tab lists " + quoted(category) + ", which has " + std::to_string(count) +
                     (count == 1 ? " vendor" : " vendors") +
                     " in the catalogue: add it to a tab's categories");
  }
}

// Returns the path of the details of a vendor, which must exist. If there are several, the last ones count.
std::string pathOfDetails(const Services& services, const std::string& vendor) {
  std::size_t last = 0;
  for (std::size_t i = 0; i < services.services->size(); ++i) {
    if ((*services.services)[i].id == vendor) last = i;
  }
  return at("services", last);
}

}  // namespace

void checkFairness(const Site& site, Report& report) {
  const auto counts = vendorCounts(site);
  for (const auto& document : site.customizations) {
    for (const Screen& screen : screens(document.record)) {
      checkAccept(document, screen, report);
      if (!screen.isMain) checkTabs(document, screen, counts, report);
    }
  }
}

void checkVendors(const Site& site, Report& report) {
  const auto known = tabCategories();
  const auto hasValue = [](const std::optional<std::string>& text) { return text && !text->empty(); };
  for (const auto& document : site.services) {
    const auto libraries = document.record.libraries.value_or(std::vector<Services::Service>());
    std::map<std::string_view, std::size_t> firstOfVendor;
    for (std::size_t i = 0; i < libraries.size(); ++i) {
      const std::string path = at("libraries", i);
      const std::string key = normalizedCategoryKey(libraries[i].category.value_or(""));
      if (std::ranges::find(known, key) == known.end()) {
        report.warning(document.name, path + ".category",
                       quoted(key) + " is not a category with vendors, so the service is never shown: use " +
                           anyOf(known));
      } else if (!hasValue(libraries[i].vendor)) {
        report.warning(document.name, path + ".vendor",
                       "a service without a vendor is never shown, though an empty name still counts as a "
                       "vendor: name it");
      } else {
        firstOfVendor.emplace(*libraries[i].vendor, i);
      }
    }
    for (const std::string& category : known) {
      for (const auto& group : document.record.groupedByVendor(category)) {
        const auto first = firstOfVendor.find(group.vendor);
        if (first == firstOfVendor.end()) continue;
        const std::string path = at("libraries", first->second) + ".vendor";
        const auto lacks = [&](const char* key) {
          report.warning(document.name, path,
                         "no entry in services gives " + quoted(group.vendor) + " a " + key + ": add it");
        };
        const auto& details = group.details;
        if (!hasValue(details.processingCompanyName)) lacks("processingCompanyName");
        if (!hasValue(details.privacyPolicyURL)) {
          lacks("privacyPolicyURL");
        } else if (!externalURL(*details.privacyPolicyURL)) {
          report.error(document.name, pathOfDetails(document.record, group.vendor) + ".privacyPolicyURL",
                       quoted(*details.privacyPolicyURL) +
                           " is not a URL: write one such as \"https://shop.example/privacy\"");
        }
      }
    }
  }
}

}  // namespace TalvoConsentSDK::linting
