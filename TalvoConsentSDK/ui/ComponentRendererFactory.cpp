#include <string>

#include "TalvoConsentSDK/platform/Platform.h"
#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/ui/BasicComponentRenderers.h"
#include "TalvoConsentSDK/ui/ButtonComponentRenderer.h"
#include "TalvoConsentSDK/ui/ComponentRenderer.h"
#include "TalvoConsentSDK/ui/LinkComponentRenderer.h"
#include "TalvoConsentSDK/ui/TabsComponentRenderer.h"

namespace TalvoConsentSDK {

namespace {

template <class T>
bool hasEntries(const std::optional<std::vector<T>>& list) {
  return list && !list->empty();
}

bool canLoadImages() {
  constexpr OperatingSystemVersion firstWithAsyncImages{15, 0};
  return Platform::current().application->operatingSystemVersion() >= firstWithAsyncImages;
}

}  // namespace

AnyView ComponentRendererFactory::render(const BannerCustomization::ComponentItem& item,
                                         const BannerCustomization::Customization& customization,
                                         const BannerCustomization::BannerMessages& messages,
                                         const ActionHandler& onButtonAction,
                                         const ActionHandler& onLinkAction) const {
  if (!item.id) return {};
  const std::string& id = *item.id;
  if (id == "title") return TitleComponentRenderer(messages.title, customization).render();
  if (id == "description") return DescriptionComponentRenderer(messages.mainMessage, customization).render();
  if (id == "bannerLogo") return canLoadImages() ? BannerLogoRenderer(customization).render() : AnyView();
  if (id == "links" && hasEntries(item.links)) {
    return LinksComponentRenderer(*item.links, customization, messages, onLinkAction).render();
  }
  if (id == "buttons" && hasEntries(item.buttons)) {
    return ButtonsComponentRenderer(*item.buttons, customization, messages, onButtonAction).render();
  }
  if (id == "tabs" && hasEntries(item.tabs)) {
    return TabsComponentRenderer(*item.tabs, customization, messages).render();
  }
  if (id == "closeButton") return CloseButtonRenderer(customization, onButtonAction).render();
  print("⚠️ Unknown component type: " + id);
  return {};
}

}  // namespace TalvoConsentSDK
