#include "TalvoConsentSDK/ui/LinkComponentRenderer.h"

#include "TalvoConsentSDK/ui/Labels.h"
#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

AnyView LinksComponentRenderer::render() const {
  std::vector<AnyView> visible;
  for (const std::string& link : links_) {
    if (isVisible(link, customization_)) visible.push_back(linkView(link));
  }
  if (visible.empty()) return {};
  return horizontalStack({.spacing = 16, .overflow = Overflow::wrap}, visible).padding({.bottom = 16});
}

bool LinksComponentRenderer::isVisible(const std::string& link,
                                       const BannerCustomization::Customization& customization) {
  if (link == "doNotSellMyData") return true;
  if (!customization.urls) return false;
  const auto url = customization.urls->find(linkURLKey(link));
  return url != customization.urls->end() && !url->second.empty();
}

AnyView LinksComponentRenderer::linkView(const std::string& link) const {
  const AnyView label = text(
      linkLabel(link, messages_),
      {.font = {TextStyle::footnote, FontWeight::regular}, .color = palette_.link, .isUnderlined = true});
  return button(label, [onAction = onAction_, link] { onAction(link); }).accessibility({.role = Role::link});
}

}  // namespace TalvoConsentSDK
