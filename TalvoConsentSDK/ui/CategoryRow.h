#pragma once

// One category of the preferences screen: its switch and, when it is expanded, its vendors.

#include <string>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/ConsentVocabulary.h"
#include "TalvoConsentSDK/ui/ConsentSwitches.h"
#include "TalvoConsentSDK/ui/Palette.h"
#include "TalvoConsentSDK/ui/ScreenContext.h"
#include "TalvoConsentSDK/ui/VendorCatalogue.h"
#include "TalvoConsentSDK/view/AnyView.h"
#include "TalvoConsentSDK/view/State.h"

namespace TalvoConsentSDK {

/// The switch is disabled if the category is required or read-only. While do-not-sell is on, every switch
/// except the do-not-sell switch is disabled, too. The row remembers whether it is expanded.
class CategoryRow {
 public:
  CategoryRow(BannerCustomization::CategoryItem category, const Palette& palette, bool readOnly,
              VendorCataloguePointer services, bool showCategoryDescription, ConsentBindings bindings,
              std::string categoryId, VendorDetailHandler onVendorDetailTap);

  /// The row as a component.
  view::AnyView view() const;

  view::AnyView body(const view::State<bool>& isExpanded) const;

 private:
  bool isDoNotSell() const { return categoryId_ == rawValue(ConsentCategory::doNotSell); }
  bool canSwitch() const;
  bool hasVendors() const;

  /// How many of the listed vendors are on, such as "1 / 2"; empty if all are on.
  std::string vendorsOnText() const;

  std::string description() const;

  /// The name. If it is blank, the description; if that is blank, too, the category's identifier.
  std::string label() const;

  view::AnyView switchView() const;
  view::AnyView header(const view::State<bool>& isExpanded) const;
  view::AnyView vendors() const;

  const BannerCustomization::CategoryItem category_;
  const Palette palette_;
  const bool readOnly_;
  const VendorCataloguePointer services_;
  const bool showCategoryDescription_;
  const ConsentBindings bindings_;
  const std::string categoryId_;
  const VendorDetailHandler onVendorDetailTap_;
};

}  // namespace TalvoConsentSDK
