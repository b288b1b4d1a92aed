#pragma once

// How the components that a customization lists become views.

#include <functional>
#include <set>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/view/AnyView.h"

namespace TalvoConsentSDK {

/// Called with the identifier of the button or link that was used. Main thread.
using ActionHandler = std::function<void(const std::string&)>;

/// The unknown components that a banner has printed a line of; it prints one each, however often it is drawn.
using ToldComponents = std::set<std::string>;

/// Draws one component. Renderers are made for one rendering and refer to the screen's customization; what
/// they render does not.
class ComponentRenderer {
 public:
  virtual ~ComponentRenderer() = default;

  virtual view::AnyView render() const = 0;
};

/// Chooses the renderer for a component. Has no state.
class ComponentRendererFactory {
 public:
  /// The view of a component, by its identifier. A component without identifier gives an empty view; so does
  /// an unknown one, or one whose list is absent or empty, of which a line is printed unless `told` names it.
  view::AnyView render(const BannerCustomization::ComponentItem& item,
                       const BannerCustomization::Customization& customization,
                       const BannerCustomization::BannerMessages& messages,
                       const ActionHandler& onButtonAction, const ActionHandler& onLinkAction,
                       ToldComponents* told = nullptr) const;

  /// Whether a component of that identifier exists; with a list, whether `item` holds it as well.
  static bool isKnown(std::string_view id);
  static bool isComplete(const BannerCustomization::ComponentItem& item);
};

/// A component together with the screen it stands on, ready to be drawn through the factory.
class ComponentRenderable {
 public:
  ComponentRenderable(const BannerCustomization::ComponentItem& item,
                      const BannerCustomization::Customization& customization, ActionHandler onButtonAction,
                      ActionHandler onLinkAction, ToldComponents& told)
      : item_(item),
        customization_(customization),
        onButtonAction_(std::move(onButtonAction)),
        onLinkAction_(std::move(onLinkAction)),
        told_(told) {}

  view::AnyView render() const {
    return ComponentRendererFactory().render(item_, customization_, customization_.messages.bannerMessages,
                                             onButtonAction_, onLinkAction_, &told_);
  }

 private:
  const BannerCustomization::ComponentItem& item_;
  const BannerCustomization::Customization& customization_;
  const ActionHandler onButtonAction_;
  const ActionHandler onLinkAction_;
  ToldComponents& told_;
};

}  // namespace TalvoConsentSDK
