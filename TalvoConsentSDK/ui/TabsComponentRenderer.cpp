#include "TalvoConsentSDK/ui/TabsComponentRenderer.h"

#include <algorithm>

#include "TalvoConsentSDK/models/ConsentVocabulary.h"
#include "TalvoConsentSDK/ui/CategoryRow.h"
#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentSDK {

using namespace view;

namespace {

using BannerMessages = BannerCustomization::BannerMessages;

// A category's defaults, and the messages with which a site replaces them.
struct KnownCategory {
  ConsentCategory id;
  std::optional<std::string> BannerMessages::* name;
  const char* defaultName;
  std::optional<std::string> BannerMessages::* description;
  const char* defaultDescription;  // null if there is none
};

constexpr KnownCategory knownCategories[] = {
    {ConsentCategory::necessary, &BannerMessages::necessaryTitle, "Necessary", &BannerMessages::necessary,
     "These cookies are essential for the website to function properly."},
    {ConsentCategory::statistics, &BannerMessages::statisticsTitle, "Statistics", &BannerMessages::statistics,
     "These cookies help us understand how visitors interact with our website."},
    {ConsentCategory::preferences, &BannerMessages::preferencesTitle, "Preferences",
     &BannerMessages::preferences, "These cookies allow the website to remember choices you make."},
    {ConsentCategory::marketing, &BannerMessages::marketingTitle, "Marketing", &BannerMessages::marketing,
     "These cookies are used to track visitors across websites for marketing purposes."},
    {ConsentCategory::doNotSell, &BannerMessages::doNotSellLabelText, "Don't Sell My Data",
     &BannerMessages::doNotSellDescription, nullptr},
};

}  // namespace

std::vector<BannerCustomization::CategoryItem> TabsComponentRenderer::categories(
    const BannerCustomization::TabItem& tab, const BannerMessages& messages) {
  std::vector<BannerCustomization::CategoryItem> items;
  for (const KnownCategory& known : knownCategories) {
    const std::string_view id = rawValue(known.id);
    const bool isListed = !tab.categories || tab.categories->empty() ||
                          std::ranges::find(*tab.categories, id) != tab.categories->end();
    if (!isListed) continue;
    auto& item = items.emplace_back();
    item.id.emplace(id);
    item.name = (messages.*known.name).value_or(known.defaultName);
    item.description = messages.*known.description;
    if (!item.description && known.defaultDescription) item.description = known.defaultDescription;
    item.enabled = item.required = known.id == ConsentCategory::necessary;
  }
  return items;
}

AnyView TabsComponentRenderer::render() const {
  std::vector<AnyView> views;
  for (const auto& tab : tabs_) views.push_back(tabView(tab));
  return verticalStack({.alignment = HorizontalAlignment::leading}, views).padding({.bottom = 12});
}

AnyView TabsComponentRenderer::tabView(const BannerCustomization::TabItem& tab) const {
  std::vector<AnyView> rows;
  for (const auto& item : categories(tab, messages_)) {
    if (!rows.empty()) rows.push_back(divider(palette_.line()).key("above " + *item.id));
    const AnyView row = CategoryRow(item, palette_, tab.readOnly, tab.services ? services_ : nullptr,
                                    tab.showCategoryDescription, bindings_, *item.id, onVendorDetailTap_)
                            .view();
    const bool isDoNotSell = *item.id == rawValue(ConsentCategory::doNotSell);
    rows.push_back(
        (isDoNotSell ? row.accessibility({.focusRequests = doNotSellRequests_}) : row).key(*item.id));
  }
  return verticalStack({.alignment = HorizontalAlignment::leading}, rows);
}

}  // namespace TalvoConsentSDK
