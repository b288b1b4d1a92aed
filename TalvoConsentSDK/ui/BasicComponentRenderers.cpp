#include "TalvoConsentSDK/ui/BasicComponentRenderers.h"

#include "TalvoConsentSDK/base/ASCII.h"
#include "TalvoConsentSDK/ui/Localized.h"
#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

AnyView TitleComponentRenderer::render() const {
  if (isBlank(text_)) return {};
  return text(text_, {.font = {TextStyle::headline, FontWeight::bold}, .color = palette_.font})
      .padding({.bottom = 16})
      .accessibility({.role = Role::heading});
}

AnyView DescriptionComponentRenderer::render() const {
  if (isBlank(text_)) return {};
  return text(text_, {.font = {TextStyle::subheadline, FontWeight::regular}, .color = palette_.font})
      .padding({.bottom = 8});
}

AnyView BannerLogoRenderer::render() const {
  constexpr double logoHeight = 46;
  constexpr double roomForClose = 28;  // keeps a wide logo clear of a close control beside it
  if (!customization_.resources || !customization_.resources->mainLogoUrl) return {};
  const auto url = URL::parse(*customization_.resources->mainLogoUrl);
  if (!url) return {};
  return verticalStack({.alignment = HorizontalAlignment::leading, .spacing = 16},
                       {
                           asyncImage(*url, logoHeight).padding({.trailing = roomForClose}),
                           divider(palette_.line()),
                       })
      .padding({.bottom = 20});
}

AnyView CloseButtonRenderer::render() const {
  const AnyView cross =
      symbol({.glyph = Glyph::xmark, .size = 10, .weight = FontWeight::medium, .color = palette_.font});
  return button(cross.frame({.minWidth = 32, .maxWidth = 32, .minHeight = 32, .maxHeight = 32}),
                [onAction = onAction_] { onAction("close"); })
      .accessibility({.role = Role::button,
                      .label = localized("Close"),
                      .language = localizedLanguage(),
                      .isDismissal = true});
}

AnyView BackButtonRenderer::render() const {
  const AnyView label = horizontalStack(
      {.spacing = 8},
      {
          symbol({.glyph = Glyph::chevronLeft,
                  .size = 14,
                  .weight = FontWeight::medium,
                  .color = palette_.font}),
          text(localized("Back"), {.font = {TextStyle::body, FontWeight::medium}, .color = palette_.font}),
      });
  return button(label.padding(Insets::vertical(4)), onAction_)
      .padding({.top = -4, .bottom = 8})  // its text is on the same line as a title beside it
      .accessibility({.language = localizedLanguage(), .isDismissal = true});
}

}  // namespace TalvoConsentSDK
