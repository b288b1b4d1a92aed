#include "TalvoConsentSDK/ui/CardScreen.h"

#include <algorithm>
#include <string>
#include <utility>

#include "TalvoConsentSDK/base/ASCII.h"
#include "TalvoConsentSDK/ui/BannerActions.h"
#include "TalvoConsentSDK/ui/BasicComponentRenderers.h"
#include "TalvoConsentSDK/ui/ComponentRenderer.h"
#include "TalvoConsentSDK/ui/Localized.h"
#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

constexpr double margin = 12;
constexpr double maxWidth = 560 - 2 * margin;  // of the content, so that lines stay easy to read
constexpr double cornerRadius = 16;
constexpr double closeInset = 8;
constexpr double closeSize = 32;
constexpr double roomForClose = closeInset + closeSize - margin;  // from the edge of the card's content

// Whether a user can leave the screen by one of its components. On the main screen, the button that opens the
// preferences counts, because that screen always has a way out.
bool hasWayOut(const CardScreen::Items& items, bool isMainScreen) {
  return std::ranges::any_of(items, [=](const BannerCustomization::ComponentItem& item) {
    return item.id == "buttons" && item.buttons &&
           std::ranges::any_of(*item.buttons, [=](const auto& button) {
             return button.id && isKnownAction(*button.id, isMainScreen) &&
                    (isMainScreen || !opensPreferences(*button.id));
           });
  });
}

bool hasControls(const BannerCustomization::ComponentItem& item) {
  return item.id == "buttons" || item.id == "links" || item.id == "tabs";
}

bool isText(const BannerCustomization::ComponentItem& item) {
  return item.id == "title" || item.id == "description";
}

}  // namespace

bool isAtTop(const BannerCustomization::Customization& customization) {
  return lowercased(customization.settings.positioning) == "top";
}

void CardScreen::setHeader(AnyView control, AnyView title) {
  control_ = std::move(control);
  title_ = std::move(title);
}

void CardScreen::addText(std::string_view key) {
  views_.push_back(localizedText(key, {.color = palette_.font}).padding({.trailing = roomForClose}));
  linksFrom_ = buttonsFrom_ = views_.size();
}

void CardScreen::addComponents(const Items& items, const TabsRenderer& renderTabs) {
  const auto close = std::ranges::find(items, "closeButton", &BannerCustomization::ComponentItem::id);
  hasClose_ = close != items.end() || !hasWayOut(items, !renderTabs);
  for (const auto& item : items) {
    if (item.id == "closeButton") continue;
    AnyView view = componentView(item, renderTabs);
    if (view.isEmpty()) continue;
    const bool isFirst = title_.isEmpty() && views_.empty();
    if (isFirst && item.id == "title") {
      title_ = view;
      continue;
    }
    if (isFirst && hasClose_) {
      if (isText(item)) view = view.padding({.trailing = roomForClose});
      isBelowClose_ = hasControls(item);
    }
    views_.push_back(std::move(view));
    const bool isLinks = item.id == "links";
    const bool isBelowButtons = isLinks && buttonsFrom_ < views_.size() - 1;
    if (item.id == "buttons" || isBelowButtons) continue;
    buttonsFrom_ = views_.size();
    if (!isLinks) linksFrom_ = views_.size();
  }
}

AnyView CardScreen::render() const {
  const auto& customization = context_.customization;
  const bool isTop = isAtTop(customization);
  const Shadow shadow{Color::black().withAlpha(0.2), 10, 0, isTop ? 2.0 : -2.0};
  const AnyView card = content()
                           .frame({.maxWidth = maxWidth, .alignment = {HorizontalAlignment::leading}})
                           .padding(Insets::all(margin))
                           .background({palette_.background, cornerRadius, shadow, palette_.font})
                           .overlay(closeControl(), {HorizontalAlignment::trailing, VerticalAlignment::top})
                           .accessibility({.role = Role::dialog,
                                           .label = customization.messages.bannerMessages.title,
                                           .isModal = customization.settings.isShowBlurBackground});
  return verticalStack({}, {card})
      .padding(
          {.top = isTop ? margin : 0, .leading = margin, .bottom = isTop ? 0 : margin, .trailing = margin});
}

AnyView CardScreen::componentView(const BannerCustomization::ComponentItem& item,
                                  const TabsRenderer& renderTabs) const {
  if (renderTabs && item.id == "tabs" && ComponentRendererFactory::isComplete(item)) {
    return renderTabs(*item.tabs);
  }
  return ComponentRenderable(item, context_).render();
}

AnyView CardScreen::content() const {
  const auto stack = [this](std::size_t first, std::size_t end) {
    const auto at = [this](std::size_t index) { return views_.begin() + static_cast<std::ptrdiff_t>(index); };
    return verticalStack({.alignment = HorizontalAlignment::leading},
                         std::vector<AnyView>(at(first), at(end)));
  };
  if (title_.isEmpty() && control_.isEmpty() && views_.empty())
    return AnyView().frame({.minHeight = hasClose_ ? roomForClose : 0});
  const AnyView rest = stack(0, linksFrom_);
  return pinnedEnds({.closeRoom = hasClose_ ? roomForClose : 0, .growsUp = !isAtTop(context_.customization)},
                    {
                        control_,
                        title_,
                        isBelowClose_ ? rest.padding({.top = roomForClose}) : rest,
                        stack(linksFrom_, buttonsFrom_),
                        stack(buttonsFrom_, views_.size()),
                    });
}

// Content that scrolls below the cross is hidden by its background.
AnyView CardScreen::closeControl() const {
  if (!hasClose_) return {};
  const auto close = [report = context_.onButtonAction](const std::string&) {
    report(std::string(closeAction));
  };
  return CloseButtonRenderer(context_.customization, close)
      .render()
      .background({.color = palette_.background, .cornerRadius = closeSize / 2})
      .padding(Insets::all(closeInset));
}

}  // namespace TalvoConsentSDK
