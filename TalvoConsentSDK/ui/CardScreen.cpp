#include "TalvoConsentSDK/ui/CardScreen.h"

#include <algorithm>
#include <string>
#include <utility>

#include "TalvoConsentSDK/base/ASCII.h"
#include "TalvoConsentSDK/ui/BannerActions.h"
#include "TalvoConsentSDK/ui/ComponentRenderer.h"
#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

constexpr double margin = 12;
constexpr double cornerRadius = 16;
constexpr double closeInset = 8;
constexpr double closeSize = 32;
constexpr double roomForClose = closeInset + closeSize - margin;  // from the edge of the card's content

bool isAction(const BannerCustomization::ComponentItem& item) {
  return item.id == "buttons" || item.id == "links";
}

bool hasControls(const BannerCustomization::ComponentItem& item) {
  return isAction(item) || item.id == "tabs";
}

bool isText(const BannerCustomization::ComponentItem& item) {
  return item.id == "title" || item.id == "description";
}

}  // namespace

bool isAtTop(const BannerCustomization::Customization& customization) {
  return lowercased(customization.settings.positioning) == "top";
}

void CardScreen::add(AnyView view) {
  views_.push_back(std::move(view));
  actionsFrom_ = views_.size();
}

void CardScreen::addText(std::string text) {
  add(view::text(std::move(text), {.color = palette_.font}));
}

void CardScreen::addComponents(const Items& items, const TabsRenderer& renderTabs) {
  const auto close = std::ranges::find(items, "closeButton", &BannerCustomization::ComponentItem::id);
  if (close != items.end()) closeButton_ = *close;
  for (const auto& item : items) {
    if (item.id == "closeButton") continue;
    AnyView view = componentView(item, renderTabs);
    if (view.isEmpty()) continue;
    if (closeButton_ && views_.empty()) {
      if (isText(item)) view = view.padding({.trailing = roomForClose});
      isBelowClose_ = hasControls(item);
    }
    views_.push_back(std::move(view));
    if (!isAction(item)) actionsFrom_ = views_.size();
  }
}

AnyView CardScreen::render() const {
  const auto& customization = context_.customization;
  const bool isTop = isAtTop(customization);
  const Shadow shadow{Color::black().withAlpha(0.2), 10, 0, isTop ? 2.0 : -2.0};
  const AnyView card = content()
                           .frame({.maxWidth = infinity, .alignment = {HorizontalAlignment::leading}})
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
  const auto stack = [](auto first, auto last) {
    return verticalStack({.alignment = HorizontalAlignment::leading}, std::vector<AnyView>(first, last));
  };
  const auto actions = views_.begin() + static_cast<std::ptrdiff_t>(actionsFrom_);
  if (views_.empty()) return {};
  const double room = closeButton_ ? roomForClose : 0;
  const AnyView all =
      pinnedFooter(stack(views_.begin(), actions), stack(actions, views_.end()), isBelowClose_ ? 0 : room);
  return isBelowClose_ ? all.padding({.top = room}) : all;
}

AnyView CardScreen::closeControl() const {
  if (!closeButton_) return {};
  ScreenContext context = context_;
  context.onButtonAction = [report = context_.onButtonAction](const std::string&) {
    report(std::string(closeAction));
  };
  return ComponentRenderable(*closeButton_, context).render().padding(Insets::all(closeInset));
}

}  // namespace TalvoConsentSDK
