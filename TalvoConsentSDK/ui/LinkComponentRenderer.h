#pragma once

// The banner's row of text links.

#include <string>
#include <vector>

#include "TalvoConsentSDK/ui/ComponentRenderer.h"

namespace TalvoConsentSDK {

/// Draws the links that have a URL, and the link "doNotSellMyData", which needs none. Renders an empty view
/// if no link is left. Reports the identifier of the tapped link.
class LinksComponentRenderer : public ComponentRenderer {
 public:
  LinksComponentRenderer(const std::vector<std::string>& links,
                         const BannerCustomization::Customization& customization,
                         const BannerCustomization::BannerMessages& messages, ActionHandler onAction)
      : ComponentRenderer(customization),
        links_(links),
        messages_(messages),
        onAction_(std::move(onAction)) {}

  view::AnyView render() const override;

  static bool isVisible(const std::string& link, const BannerCustomization::Customization& customization);

 private:
  view::AnyView linkView(const std::string& link) const;

  const std::vector<std::string>& links_;
  const BannerCustomization::BannerMessages& messages_;
  const ActionHandler onAction_;
};

}  // namespace TalvoConsentSDK
