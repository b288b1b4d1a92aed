#pragma once

// Renderers of the components that have no list: title, description, logo, and the close and back controls.

#include <functional>
#include <string>

#include "TalvoConsentSDK/ui/ComponentRenderer.h"

namespace TalvoConsentSDK {

class TitleComponentRenderer : public ComponentRenderer {
 public:
  TitleComponentRenderer(std::string text, const BannerCustomization::Customization& customization)
      : ComponentRenderer(customization), text_(std::move(text)) {}

  view::AnyView render() const override;

 private:
  const std::string text_;
};

class DescriptionComponentRenderer : public ComponentRenderer {
 public:
  DescriptionComponentRenderer(std::string text, const BannerCustomization::Customization& customization)
      : ComponentRenderer(customization), text_(std::move(text)) {}

  view::AnyView render() const override;

 private:
  const std::string text_;
};

/// The site's logo, loaded from the network, with a line below it. Renders an empty view if the site has no
/// logo or its URL is invalid.
class BannerLogoRenderer : public ComponentRenderer {
 public:
  explicit BannerLogoRenderer(const BannerCustomization::Customization& customization)
      : ComponentRenderer(customization) {}

  view::AnyView render() const override;
};

/// Reports the action "close".
class CloseButtonRenderer : public ComponentRenderer {
 public:
  CloseButtonRenderer(const BannerCustomization::Customization& customization, ActionHandler onAction)
      : ComponentRenderer(customization), onAction_(std::move(onAction)) {}

  view::AnyView render() const override;

 private:
  const ActionHandler onAction_;
};

/// Created by the screens that can go back, never by the factory.
class BackButtonRenderer : public ComponentRenderer {
 public:
  BackButtonRenderer(const BannerCustomization::Customization& customization, std::function<void()> onAction)
      : ComponentRenderer(customization), onAction_(std::move(onAction)) {}

  view::AnyView render() const override;

 private:
  const std::function<void()> onAction_;
};

}  // namespace TalvoConsentSDK
