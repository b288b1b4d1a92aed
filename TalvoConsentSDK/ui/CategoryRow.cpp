#include "TalvoConsentSDK/ui/CategoryRow.h"

#include <utility>

#include "TalvoConsentSDK/base/ASCII.h"
#include "TalvoConsentSDK/ui/Localized.h"
#include "TalvoConsentSDK/ui/VendorRow.h"
#include "TalvoConsentSDK/view/Element.h"
#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

constexpr double chevronSize = 12;
constexpr double vendorInset = 16;
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
  std::vector<AnyView> parts{titleLine(header(isExpanded), switchView())};
  if (const std::string below = description(); !isBlank(below) && below != label()) {
    parts.push_back(text(below, {.font = {TextStyle::subheadline, FontWeight::regular},
                                 .color = palette_.secondaryFont()})
                        .padding({.top = 3}));
  }
  if (hasVendors()) {
    parts.push_back(disclosure(isExpanded.get(),
                               isExpanded.get() ? vendors().padding({.leading = vendorInset}) : AnyView()));
  }
  return verticalStack({.alignment = HorizontalAlignment::leading}, parts).padding(Insets::vertical(12));
}

bool CategoryRow::canSwitch() const {
  if (!bindings_.categoryStates || !bindings_.vendorStates || !bindings_.doNotSellState) return false;
  if (readOnly_ || category_.required.value_or(false)) return false;
  return isDoNotSell() || !bindings_.doNotSellState->get();
}

bool CategoryRow::hasVendors() const {
  return services_ && !isDoNotSell() && !services_->groups(categoryId_).empty();
}

std::string CategoryRow::description() const {
  return showCategoryDescription_ ? category_.description.value_or("") : "";
}

std::string CategoryRow::label() const {
  for (const std::string& text : {category_.name.value_or(""), description()}) {
    if (!isBlank(text)) return text;
  }
  return categoryId_;
}

AnyView CategoryRow::switchView() const {
  const bool isShown = category_.enabled.value_or(false);
  Binding<bool> isOn = Binding<bool>::constant(isShown);
  if (bindings_.categoryStates && bindings_.vendorStates && bindings_.doNotSellState) {
    isOn = isDoNotSell() ? doNotSellSwitch(bindings_) : categorySwitch(bindings_, services_, categoryId_);
  }
  return toggle(isOn, palette_.toggleColors())
      .disabled(!canSwitch())
      .accessibility({.role = Role::toggle, .label = label()});
}

std::string CategoryRow::vendorsOnText() const {
  if (!hasVendors() || !bindings_.vendorStates) return {};
  const auto& groups = services_->groups(categoryId_);
  const std::size_t on = countVendorsOn(bindings_, categoryId_, groups);
  return on < groups.size() ? std::to_string(on) + " / " + std::to_string(groups.size()) : "";
}

AnyView CategoryRow::header(const State<bool>& isExpanded) const {
  const std::string vendorsOn = vendorsOnText();
  std::vector<AnyView> parts{
      text(label(), {.font = {TextStyle::body, FontWeight::semibold}, .color = palette_.font})};
  if (!vendorsOn.empty()) {
    parts.push_back(text(
        vendorsOn, {.font = {TextStyle::footnote, FontWeight::medium}, .color = palette_.secondaryFont()}));
  }
  AnyView texts = horizontalStack({.spacing = 8, .overflow = Overflow::wrap}, parts)
                      .frame({.maxWidth = infinity, .alignment = {HorizontalAlignment::leading}});
  if (!hasVendors()) return texts;

  const AnyView chevron = symbol({.glyph = Glyph::chevronRight,
                                  .size = chevronSize,
                                  .weight = FontWeight::medium,
                                  .color = palette_.secondaryFont(),
                                  .turns = isExpanded.get() ? 0.25 : 0});
  // Assistive technology sees the header as one control and does not read the texts in it: repeat them here.
  const std::size_t count = services_->groups(categoryId_).size();
  std::string spoken = localized(std::to_string(count) + (count == 1 ? " vendor" : " vendors"));
  if (!vendorsOn.empty()) spoken += ". " + vendorsOn;
  return button(horizontalStack({.spacing = 8}, {texts, chevron}),
                [isExpanded] { isExpanded.set(!isExpanded.get()); })
      .accessibility({.role = Role::expander,
                      .label = label(),
                      .value = isExpanded.get() ? "expanded" : "collapsed",
                      .description = spoken});
}

AnyView CategoryRow::vendors() const {
  const auto& groups = services_->groups(categoryId_);
  const bool isDisabled = !canSwitch();
  // Assistive technology reads the category's name with each vendor. Repeating a long name for every vendor
  // would take too much memory.
  std::string name = label();
  if (name.size() > maxRepeatedName) name.clear();
  return lazyRows(groups.size(), [row = *this, name, isDisabled](std::size_t index) {
    const auto& all = row.services_->groups(row.categoryId_);
    const std::shared_ptr<const Services::ServiceGroup> group(row.services_, &all[index]);
    std::vector<AnyView> views{
        VendorRow(group, row.palette_, row.categoryId_, isDisabled, row.bindings_, row.onVendorDetailTap_)
            .view(name)};
    if (index + 1 < all.size()) views.push_back(divider(row.palette_.line()));
    return verticalStack({}, views).key(group->vendor);
  });
}

}  // namespace TalvoConsentSDK
