#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/platform/Platform.h"
#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/ui/BasicComponentRenderers.h"
#include "TalvoConsentSDK/ui/ButtonComponentRenderer.h"
#include "TalvoConsentSDK/ui/ComponentRenderer.h"
#include "TalvoConsentSDK/ui/LinkComponentRenderer.h"
#include "TalvoConsentSDK/ui/TabsComponentRenderer.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

template <class T>
bool hasEntries(const std::optional<std::vector<T>>& list) {
  return list && !list->empty();
}

using Item = BannerCustomization::ComponentItem;

struct Inputs {
  const Item& item;
  const BannerCustomization::Customization& customization;
  const BannerCustomization::BannerMessages& messages;
  const ActionHandler& onButtonAction;
  const ActionHandler& onLinkAction;
};

struct Kind {
  std::string_view id;
  bool (*isComplete)(const Item& item);
  AnyView (*render)(const Inputs& in);
};

bool canLoadImages() {
  static constexpr OperatingSystemVersion firstWithAsyncImages{15, 0};
  return platform::askHost(false, [] {
    return Platform::current().application->operatingSystemVersion() >= firstWithAsyncImages;
  });
}

bool always(const Item&) {
  return true;
}

constexpr Kind kinds[] = {
    {"title", always,
     [](const Inputs& in) { return TitleComponentRenderer(in.messages.title, in.customization).render(); }},
    {"description", always,
     [](const Inputs& in) {
       return DescriptionComponentRenderer(in.messages.mainMessage, in.customization).render();
     }},
    {"bannerLogo", always,
     [](const Inputs& in) {
       return canLoadImages() ? BannerLogoRenderer(in.customization).render() : AnyView();
     }},
    {"links", [](const Item& item) { return hasEntries(item.links); },
     [](const Inputs& in) {
       return LinksComponentRenderer(*in.item.links, in.customization, in.messages, in.onLinkAction).render();
     }},
    {"buttons", [](const Item& item) { return hasEntries(item.buttons); },
     [](const Inputs& in) {
       return ButtonsComponentRenderer(*in.item.buttons, in.customization, in.messages, in.onButtonAction)
           .render();
     }},
    {"tabs", [](const Item& item) { return hasEntries(item.tabs); },
     [](const Inputs& in) {
       return TabsComponentRenderer(*in.item.tabs, in.customization, in.messages).render();
     }},
    {"closeButton", always,
     [](const Inputs& in) { return CloseButtonRenderer(in.customization, in.onButtonAction).render(); }},
};

const Kind* find(std::string_view id) {
  const auto* kind = std::ranges::find(kinds, id, &Kind::id);
  return kind == std::end(kinds) ? nullptr : kind;
}

}  // namespace

AnyView ComponentRendererFactory::render(const BannerCustomization::ComponentItem& item,
                                         const BannerCustomization::Customization& customization,
                                         const BannerCustomization::BannerMessages& messages,
                                         const ActionHandler& onButtonAction,
                                         const ActionHandler& onLinkAction,
                                         ReportedComponents* reported) const {
  if (!item.id) return {};
  if (isComplete(item)) {
    return find(*item.id)->render({item, customization, messages, onButtonAction, onLinkAction});
  }
  if (!reported || reported->insert(*item.id).second) print("⚠️ Unknown component type: " + *item.id);
  return {};
}

bool ComponentRendererFactory::isKnown(std::string_view id) {
  return find(id) != nullptr;
}

bool ComponentRendererFactory::isComplete(const BannerCustomization::ComponentItem& item) {
  const Kind* kind = item.id ? find(*item.id) : nullptr;
  return kind && kind->isComplete(item);
}

}  // namespace TalvoConsentSDK
