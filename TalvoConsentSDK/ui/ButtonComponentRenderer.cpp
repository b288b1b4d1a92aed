#include "TalvoConsentSDK/ui/ButtonComponentRenderer.h"

#include "TalvoConsentSDK/ui/Labels.h"
#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

AnyView ButtonsComponentRenderer::render() const {
  constexpr double spacing = 12;
  std::vector<AnyView> rows;
  for (std::size_t i = 0; i < buttons_.size(); i += 2) {
    std::vector<AnyView> row;
    for (std::size_t j = i; j < i + 2 && j < buttons_.size(); ++j) {
      if (buttons_[j].id) row.push_back(buttonView(buttons_[j]));
    }
    if (row.empty()) continue;
    rows.push_back(horizontalStack({.spacing = spacing, .overflow = Overflow::stackAtBrokenWord}, row));
  }
  return verticalStack({.spacing = spacing}, rows);
}

AnyView ButtonsComponentRenderer::buttonView(const BannerCustomization::ButtonItem& item) const {
  const AnyView label =
      text(buttonLabel(*item.id, messages_), {.font = {TextStyle::body, FontWeight::semibold},
                                              .color = palette_.buttonFont,
                                              .alignment = HorizontalAlignment::center});
  return button(
      label.frame({.maxWidth = infinity, .maxHeight = infinity})
          .padding(Insets::all(12))
          .background({.color = palette_.buttonBackground, .cornerRadius = 8, .outline = palette_.font}),
      [onAction = onAction_, id = *item.id] { onAction(id); });
}

}  // namespace TalvoConsentSDK
