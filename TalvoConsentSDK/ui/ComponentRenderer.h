#pragma once

// Turns the components that a customization lists into views.

#include <string_view>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/ui/Palette.h"
#include "TalvoConsentSDK/ui/ScreenContext.h"
#include "TalvoConsentSDK/view/AnyView.h"

namespace TalvoConsentSDK {

/// Draws one component. A renderer is created for one rendering and refers to the screen's customization,
/// which must outlive it. The views that it returns do not refer to the customization.
class ComponentRenderer {
 public:
  virtual ~ComponentRenderer() = default;

  virtual view::AnyView render() const = 0;

 protected:
  explicit ComponentRenderer(const BannerCustomization::Customization& customization)
      : customization_(customization), palette_(customization.colors) {}

  const BannerCustomization::Customization& customization_;
  const Palette palette_;
};

/// Chooses the renderer of a component. Stateless.
class ComponentRendererFactory {
 public:
  /// Returns the view of a component, chosen by its identifier. Returns an empty view if the component has no
  /// identifier, is unknown, or lacks the entries of its list. In the last two cases it also prints a line,
  /// unless `reported` already contains the component, and adds the component to `reported`.
  view::AnyView render(const BannerCustomization::ComponentItem& item,
                       const BannerCustomization::Customization& customization,
                       const BannerCustomization::BannerMessages& messages,
                       const ActionHandler& onButtonAction, const ActionHandler& onLinkAction,
                       ReportedComponents* reported = nullptr) const;

  /// Whether there is a component with this identifier.
  static bool isKnown(std::string_view id);

  /// Whether the component is known and, if its kind needs a list, has entries in it.
  static bool isComplete(const BannerCustomization::ComponentItem& item);
};

/// A component together with what its screen provides, ready to be drawn by the factory.
class ComponentRenderable {
 public:
  ComponentRenderable(const BannerCustomization::ComponentItem& item, const ScreenContext& context)
      : item_(item), context_(context) {}

  view::AnyView render() const {
    const auto& customization = context_.customization;
    return ComponentRendererFactory().render(item_, customization, customization.messages.bannerMessages,
                                             context_.onButtonAction, context_.onLinkAction,
                                             &context_.reportedComponents);
  }

 private:
  const BannerCustomization::ComponentItem& item_;
  const ScreenContext& context_;
};

}  // namespace TalvoConsentSDK
