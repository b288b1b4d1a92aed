#pragma once

// The preferences screen's list of categories.

#include <vector>

#include "TalvoConsentSDK/ui/ComponentRenderer.h"
#include "TalvoConsentSDK/ui/ConsentSwitches.h"
#include "TalvoConsentSDK/ui/VendorCatalogue.h"

namespace TalvoConsentSDK {

/// Draws the categories of all tabs one below the other; the user does not choose a tab. Without bindings the
/// switches show the categories' defaults and are disabled. When `doNotSellRequests` grows, the do-not-sell
/// switch gets the focus.
class TabsComponentRenderer : public ComponentRenderer {
 public:
  TabsComponentRenderer(const std::vector<BannerCustomization::TabItem>& tabs,
                        const BannerCustomization::Customization& customization,
                        const BannerCustomization::BannerMessages& messages,
                        VendorCataloguePointer services = nullptr, ConsentBindings bindings = {},
                        VendorDetailHandler onVendorDetailTap = nullptr, int doNotSellRequests = 0)
      : ComponentRenderer(customization),
        tabs_(tabs),
        messages_(messages),
        services_(std::move(services)),
        bindings_(std::move(bindings)),
        onVendorDetailTap_(std::move(onVendorDetailTap)),
        doNotSellRequests_(doNotSellRequests) {}

  view::AnyView render() const override;

  /// The categories that a tab lists, or all five if it lists none, always in the same order.
  static std::vector<BannerCustomization::CategoryItem> categories(
      const BannerCustomization::TabItem& tab, const BannerCustomization::BannerMessages& messages);

 private:
  view::AnyView tabView(const BannerCustomization::TabItem& tab) const;

  const std::vector<BannerCustomization::TabItem>& tabs_;
  const BannerCustomization::BannerMessages& messages_;
  const VendorCataloguePointer services_;
  const ConsentBindings bindings_;
  const VendorDetailHandler onVendorDetailTap_;
  const int doNotSellRequests_;
};

}  // namespace TalvoConsentSDK
