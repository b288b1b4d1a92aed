#pragma once

// The card that every screen of the banner is drawn on, and how its list of components fills it.

#include <functional>
#include <optional>
#include <vector>

#include "TalvoConsentSDK/ui/ComponentRenderer.h"

namespace TalvoConsentSDK {

/// Whether the banner sits at the top of the screen; at the bottom otherwise.
bool isAtTop(const BannerCustomization::Customization& customization);

/// Builds one screen, top to bottom. Buttons and links at the end of the list stay in reach where the window
/// is too small for all of it, and the rest scrolls. For assistive technology the card is the banner's
/// dialog.
class CardScreen {
 public:
  using Items = std::vector<BannerCustomization::ComponentItem>;

  /// Draws an item that the screen has a view of its own for; nothing leaves it to the factory.
  using OwnRenderer = std::function<std::optional<view::AnyView>(const BannerCustomization::ComponentItem&)>;

  CardScreen(const BannerCustomization::Customization& customization, ActionHandler onButtonAction,
             ActionHandler onLinkAction, ToldComponents& told);

  /// Adds a view that no component stands for.
  void add(view::AnyView view);

  /// Adds a view per component that draws anything. A "closeButton" takes no place in the list: it is drawn
  /// once, over the card's top trailing corner, and reports "closeButton". Texts that come first end before
  /// it, controls that come first begin below it.
  void addComponents(const Items& items, const OwnRenderer& own = nullptr);

  /// The card with its distance from the edges of the screen.
  view::AnyView render() const;

 private:
  view::AnyView component(const BannerCustomization::ComponentItem& item, const OwnRenderer& own) const;
  view::AnyView content() const;
  view::AnyView closeControl() const;

  const BannerCustomization::Customization& customization_;
  const ActionHandler onButtonAction_;
  const ActionHandler onLinkAction_;
  ToldComponents& told_;
  std::vector<view::AnyView> views_;
  std::size_t actionsFrom_ = 0;  // index of the first view of the trailing run of buttons and links
  std::optional<BannerCustomization::ComponentItem> closeButton_;
  bool isBelowClose_ = false;  // all content is
};

}  // namespace TalvoConsentSDK
