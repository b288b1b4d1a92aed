#pragma once

// One vendor in an expanded category: its switch, and a button that opens its details.

#include <memory>
#include <string>

#include "TalvoConsentSDK/ui/ConsentSwitches.h"
#include "TalvoConsentSDK/ui/Palette.h"
#include "TalvoConsentSDK/ui/ScreenContext.h"
#include "TalvoConsentSDK/view/AnyView.h"

namespace TalvoConsentSDK {

class VendorRow {
 public:
  /// `readOnly` disables the switch.
  VendorRow(std::shared_ptr<const Services::ServiceGroup> vendorGroup, const Palette& palette,
            std::string categoryId, bool readOnly, ConsentBindings bindings, VendorDetailHandler onDetailTap);

  /// The row. Assistive technology reads `categoryName` as its description.
  view::AnyView view(const std::string& categoryName) const;

 private:
  const std::shared_ptr<const Services::ServiceGroup> vendorGroup_;
  const Palette palette_;
  const std::string categoryId_;
  const bool readOnly_;
  const ConsentBindings bindings_;
  const VendorDetailHandler onDetailTap_;
};

/// A title with its switch on the same line. The switch stands below the title if a word would be split
/// otherwise.
view::AnyView titleLine(const view::AnyView& title, const view::AnyView& toggle);

/// A vendor's switch, with the vendor as its accessible name. Disabled if read-only or without
/// `vendorStates`.
view::AnyView vendorSwitchView(const std::string& vendor, const std::string& categoryId,
                               const std::string& categoryName, const Palette& palette, bool readOnly,
                               const ConsentBindings& bindings);

}  // namespace TalvoConsentSDK
