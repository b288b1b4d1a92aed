#include "TalvoConsentSDK/ui/VendorRow.h"

#include <utility>

#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

VendorRow::VendorRow(std::shared_ptr<const Services::ServiceGroup> vendorGroup, const Palette& palette,
                     std::string categoryId, bool readOnly, ConsentBindings bindings,
                     VendorDetailHandler onDetailTap)
    : vendorGroup_(std::move(vendorGroup)),
      palette_(palette),
      categoryId_(std::move(categoryId)),
      readOnly_(readOnly),
      bindings_(std::move(bindings)),
      onDetailTap_(std::move(onDetailTap)) {}

AnyView VendorRow::view(const std::string& categoryName) const {
  const AnyView name = text(vendorGroup_->vendor,
                            {.font = {TextStyle::subheadline, FontWeight::regular}, .color = palette_.font})
                           .frame({.maxWidth = infinity, .alignment = {HorizontalAlignment::leading}});
  const AnyView chevron = symbol({.glyph = Glyph::chevronRight,
                                  .size = 10,
                                  .weight = FontWeight::medium,
                                  .color = palette_.secondaryFont()});
  const auto showDetail = [onDetailTap = onDetailTap_, group = vendorGroup_] {
    if (onDetailTap) onDetailTap(*group);
  };
  const AnyView title =
      button(horizontalStack({.spacing = 8}, {name, chevron}), showDetail)
          .accessibility({.role = Role::button, .label = vendorGroup_->vendor, .description = categoryName});
  return titleLine(title, vendorSwitchView(vendorGroup_->vendor, categoryId_, categoryName, palette_,
                                           readOnly_, bindings_))
      .padding(Insets::vertical(10));
}

AnyView titleLine(const AnyView& title, const AnyView& toggle) {
  return horizontalStack(
      {.spacing = 8, .overflow = Overflow::stackAtBrokenWord, .stacked = HorizontalAlignment::trailing},
      {title, toggle.padding({.leading = 4})});  // keeps the focus ring clear of the switch
}

AnyView vendorSwitchView(const std::string& vendor, const std::string& categoryId,
                         const std::string& categoryName, const Palette& palette, bool readOnly,
                         const ConsentBindings& bindings) {
  const Binding<bool> isOn =
      bindings.vendorStates ? vendorSwitch(bindings, categoryId, vendor) : Binding<bool>::constant(false);
  return toggle(isOn, palette.toggleColors())
      .disabled(readOnly || !bindings.vendorStates)
      .accessibility({.role = Role::toggle, .label = vendor, .description = categoryName});
}

}  // namespace TalvoConsentSDK
