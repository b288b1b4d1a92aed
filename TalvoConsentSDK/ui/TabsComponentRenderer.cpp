#include "TalvoConsentSDK/ui/TabsComponentRenderer.h"

#include <algorithm>

#include "TalvoConsentSDK/ui/CategoryRow.h"
#include "TalvoConsentSDK/ui/Palette.h"
#include "TalvoConsentSDK/ui/view/Views.h"

namespace TalvoConsentSDK {

namespace {

BannerCustomization::CategoryItem category(const char* id, const std::optional<std::string>& name,
                                           const char* defaultName, std::optional<std::string> description,
                                           bool isNecessary) {
  BannerCustomization::CategoryItem item;
  item.id = id;
  item.name = name.value_or(defaultName);
  item.description = std::move(description);
  item.enabled = isNecessary;
  item.required = isNecessary;
  return item;
}

}  // namespace

std::vector<BannerCustomization::CategoryItem> TabsComponentRenderer::categories(
    const BannerCustomization::TabItem& tab, const BannerCustomization::BannerMessages& messages) {
  std::vector all{
      category(
          "necessary", messages.necessaryTitle, "Necessary",
          messages.necessary.value_or("These cookies are essential for the website to function properly."),
          true),
      category("statistics", messages.statisticsTitle, "Statistics",
               messages.statistics.value_or(
                   "These cookies help us understand how visitors interact with our website."),
               false),
      category("preferences", messages.preferencesTitle, "Preferences",
               messages.preferences.value_or("These cookies allow the website to remember choices you make."),
               false),
      category("marketing", messages.marketingTitle, "Marketing",
               messages.marketing.value_or(
                   "These cookies are used to track visitors across websites for marketing purposes."),
               false),
      category("doNotSell", messages.doNotSellLabelText, "Don't Sell My Data", messages.doNotSellDescription,
               false),
  };
  if (!tab.categories || tab.categories->empty()) return all;
  std::erase_if(all, [&](const BannerCustomization::CategoryItem& item) {
    return std::ranges::find(*tab.categories, *item.id) == tab.categories->end();
  });
  return all;
}

AnyView TabsComponentRenderer::render() const {
  std::vector<AnyView> views;
  for (const auto& tab : tabs_) views.push_back(tabView(tab));
  return verticalStack({.alignment = HorizontalAlignment::leading}, views).padding({.bottom = 12});
}

AnyView TabsComponentRenderer::tabView(const BannerCustomization::TabItem& tab) const {
  const Palette palette(customization_.colors);
  std::vector<AnyView> rows;
  for (const auto& item : categories(tab, messages_)) {
    if (!rows.empty()) rows.push_back(divider(palette.line()).key("above " + *item.id));
    rows.push_back(CategoryRow(item, palette, tab.readOnly, tab.services ? services_ : nullptr,
                               tab.showCategoryDescription, bindings_, *item.id, onVendorDetailTap_)
                       .view()
                       .key(*item.id));
  }
  return verticalStack({.alignment = HorizontalAlignment::leading}, rows);
}

}  // namespace TalvoConsentSDK
