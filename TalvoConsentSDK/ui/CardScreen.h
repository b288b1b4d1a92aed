#pragma once

// The card that every screen of the banner is drawn on, and how a list of components fills it.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/ui/Palette.h"
#include "TalvoConsentSDK/ui/ScreenContext.h"
#include "TalvoConsentSDK/view/AnyView.h"

namespace TalvoConsentSDK {

/// Whether the banner sits at the top of the screen rather than at the bottom.
bool isAtTop(const BannerCustomization::Customization& customization);

/// Builds one screen from top to bottom. If the window is too small for the whole list, the title at its
/// start and the buttons and links at its end stay visible as far as there is room, and the rest scrolls.
/// Assistive technology sees the card as the banner's dialog.
class CardScreen {
 public:
  using Items = std::vector<BannerCustomization::ComponentItem>;

  using Tabs = std::vector<BannerCustomization::TabItem>;

  /// Draws what a screen shows in place of a component's tabs.
  using TabsRenderer = std::function<view::AnyView(const Tabs&)>;

  explicit CardScreen(const ScreenContext& context)
      : context_(context), palette_(context.customization.colors) {}

  /// Puts a control and a title on the first line, instead of a title among the components.
  void setHeader(view::AnyView control, view::AnyView title);

  void addText(std::string_view key);

  /// Adds a view for each component that draws something. A "closeButton" takes no place in the list: it is
  /// drawn once, over the card's top trailing corner, and reports "closeButton". If the first component is a
  /// title, it shares its line with the close control. If it is another text, its lines stop short of the
  /// close control. If it has controls, it starts below the close control, but scrolls under it. A list
  /// without a way out gets a close control, too.
  void addComponents(const Items& items, const TabsRenderer& renderTabs = nullptr);

  /// The card with its margin to the edges of the screen.
  view::AnyView render() const;

 private:
  view::AnyView componentView(const BannerCustomization::ComponentItem& item,
                              const TabsRenderer& renderTabs) const;
  view::AnyView content() const;
  view::AnyView closeControl() const;

  const ScreenContext& context_;
  const Palette palette_;
  view::AnyView control_;
  view::AnyView title_;
  std::vector<view::AnyView> views_;
  std::size_t linksFrom_ = 0;    // index of the first view of the trailing run of links and buttons
  std::size_t buttonsFrom_ = 0;  // index of the first buttons of that run
  bool hasClose_ = true;         // a screen without components has nothing else to leave it by
  bool isBelowClose_ = false;    // whether the first component starts below the close control
};

}  // namespace TalvoConsentSDK
