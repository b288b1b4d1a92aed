#include "TalvoConsentSDK/ui/CategoryRow.h"

#include <utility>

#include "TalvoConsentSDK/ui/Localized.h"
#include "TalvoConsentSDK/ui/VendorRow.h"
#include "TalvoConsentSDK/view/Element.h"
#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

constexpr double chevronSize = 14;
constexpr double chevronGap = 10;
constexpr double switchGap = 12;
constexpr std::size_t maxRepeatedName = 1000;  // in bytes

}  // namespace

CategoryRow::CategoryRow(BannerCustomization::CategoryItem category, const Palette& palette, bool readOnly,
                         VendorCataloguePointer services, bool showCategoryDescription,
                         ConsentBindings bindings, std::string categoryId,
                         VendorDetailHandler onVendorDetailTap)
    : category_(std::move(category)),
      palette_(palette),
      readOnly_(readOnly),
      services_(std::move(services)),
      showCategoryDescription_(showCategoryDescription),
      bindings_(std::move(bindings)),
      categoryId_(std::move(categoryId)),
      onVendorDetailTap_(std::move(onVendorDetailTap)) {}

AnyView CategoryRow::view() const {
  return component("category row",
                   [row = *this](RenderContext& context) { return row.body(context.state<bool>(false)); });
}

AnyView CategoryRow::body(const State<bool>& isExpanded) const {
  std::vector<AnyView> parts{horizontalStack({.spacing = switchGap,
                                              .overflow = Overflow::stackAtBrokenWord,
                                              .stacked = HorizontalAlignment::trailing},
                                             {header(isExpanded), switchView()})
                                 .padding(Insets::vertical(12))};
  if (hasVendors() && isExpanded.get()) parts.push_back(vendors().padding({.bottom = 8}).key("vendors"));
  return verticalStack({.alignment = HorizontalAlignment::leading}, parts);
}

bool CategoryRow::canSwitch() const {
  if (!bindings_.categoryStates || !bindings_.vendorStates || !bindings_.doNotSellState) return false;
  if (readOnly_ || category_.required.value_or(false)) return false;
  return isDoNotSell() || !bindings_.doNotSellState->get();
}

bool CategoryRow::hasVendors() const {
  return services_ && !isDoNotSell() && !services_->groups(categoryId_).empty();
}

AnyView CategoryRow::switchView() const {
  const bool isShown = category_.enabled.value_or(false);
  Binding<bool> isOn = Binding<bool>::constant(isShown);
  if (bindings_.categoryStates && bindings_.vendorStates && bindings_.doNotSellState) {
    isOn = isDoNotSell() ? doNotSellSwitch(bindings_) : categorySwitch(bindings_, services_, categoryId_);
  }
  return toggle(isOn, palette_.toggleColors())
      .disabled(!canSwitch())
      .accessibility({.role = Role::toggle, .label = category_.name.value_or("")});
}

std::string CategoryRow::vendorsOnText() const {
  if (!hasVendors() || !bindings_.vendorStates) return {};
  const auto& groups = services_->groups(categoryId_);
  const std::size_t on = countVendorsOn(bindings_, categoryId_, groups);
  return on < groups.size() ? std::to_string(on) + " / " + std::to_string(groups.size()) : "";
}

AnyView CategoryRow::title(const std::string& vendorsOn) const {
  std::vector<AnyView> parts{text(category_.name.value_or(""),
                                  {.font = {TextStyle::body, FontWeight::semibold}, .color = palette_.font})};
  if (!vendorsOn.empty()) {
    parts.push_back(text(
        vendorsOn, {.font = {TextStyle::footnote, FontWeight::medium}, .color = palette_.secondaryFont()}));
  }
  return horizontalStack({.spacing = 8, .overflow = Overflow::wrap}, parts);
}

AnyView CategoryRow::header(const State<bool>& isExpanded) const {
  const std::string description = showCategoryDescription_ ? category_.description.value_or("") : "";
  const std::string vendorsOn = vendorsOnText();
  std::vector<AnyView> lines{title(vendorsOn)};
  if (!description.empty()) {
    lines.push_back(text(description, {.font = {TextStyle::subheadline, FontWeight::regular},
                                       .color = palette_.secondaryFont()}));
  }
  const AnyView texts = verticalStack({.alignment = HorizontalAlignment::leading, .spacing = 3}, lines)
                            .frame({.maxWidth = infinity, .alignment = {HorizontalAlignment::leading}});
  if (!hasVendors()) return services_ ? texts.padding({.leading = chevronSize + chevronGap}) : texts;

  const AnyView chevron = symbol({.glyph = Glyph::chevronRight,
                                  .size = chevronSize,
                                  .weight = FontWeight::medium,
                                  .color = palette_.secondaryFont(),
                                  .turns = isExpanded.get() ? 0.25 : 0});
  // Assistive technology sees the header as one control and does not read the texts in it: repeat them here.
  const std::size_t count = services_->groups(categoryId_).size();
  std::string spoken = localized(std::to_string(count) + (count == 1 ? " vendor" : " vendors"));
  for (const std::string& more : {vendorsOn, description}) {
    if (!more.empty()) spoken += ". " + more;
  }
  return button(horizontalStack({.spacing = chevronGap}, {chevron, texts}),
                [isExpanded] { isExpanded.set(!isExpanded.get()); })
      .accessibility({.role = Role::expander,
                      .label = category_.name.value_or(""),
                      .value = isExpanded.get() ? "expanded" : "collapsed",
                      .description = spoken});
}

AnyView CategoryRow::vendors() const {
  const auto& groups = services_->groups(categoryId_);
  const bool isDisabled = !canSwitch();
  // Assistive technology reads the category's name with each vendor. Repeating a long name for every vendor
  // would take too much memory.
  std::string name = category_.name.value_or("");
  if (name.size() > maxRepeatedName) name.clear();
  return lazyRows(groups.size(), [row = *this, name, isDisabled](std::size_t index) {
    const std::shared_ptr<const Services::ServiceGroup> group(row.services_,
                                                              &row.services_->groups(row.categoryId_)[index]);
    return VendorRow(group, row.palette_, row.categoryId_, isDisabled, row.bindings_, row.onVendorDetailTap_)
        .view(name)
        .padding({.leading = chevronSize + chevronGap})
        .key(group->vendor);
  });
}

}  // namespace TalvoConsentSDK
