#pragma once

// The document that decides how the banner looks and what it says.

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// A site's banner, in one language. Where a text is absent, the banner draws a default.
struct BannerCustomization {
  /// Colour texts; see `colorFromText`.
  struct Colors {
    Colors() {}

    std::string background;
    std::string buttonBackground;
    std::string buttonFontColor;
    std::string font;
  };

  struct Settings {
    Settings() {}

    std::string positioning;            // "top" in any letter case; anything else means the bottom
    bool isShowBlurBackground = false;  // a dimmed backdrop
    bool isShowPoweredBy = false;       // reported to the service, never drawn
  };

  struct BannerMessages {
    BannerMessages() {}

    std::string acceptButton;
    std::optional<std::string> cookiePolicyURLText;
    std::optional<std::string> doNotSellURLText;
    std::optional<std::string> doNotSellLabelText;
    std::optional<std::string> doNotSellDescription;
    std::optional<std::string> dsrURLText;
    std::string mainMessage;
    std::optional<std::string> marketing;
    std::optional<std::string> marketingTitle;
    std::optional<std::string> necessary;
    std::optional<std::string> necessaryTitle;
    std::optional<std::string> preferenceCookiesCategories;
    std::optional<std::string> preferenceMainMessage;
    std::optional<std::string> preferences;
    std::optional<std::string> preferencesButton;
    std::optional<std::string> preferencesTitle;
    std::optional<std::string> preferenceTitle;
    std::optional<std::string> privacyPolicyURLText;
    std::string rejectButton;
    std::optional<std::string> savePreference;
    std::optional<std::string> statistics;
    std::optional<std::string> statisticsTitle;
    std::optional<std::string> TACURLText;
    std::string title;
  };

  struct Messages {
    Messages() {}

    BannerMessages bannerMessages;
  };

  struct Resources {
    Resources() {}

    std::optional<std::string> mainLogoUrl;
  };

  struct ButtonItem {
    ButtonItem() {}

    std::optional<std::string> id;
    std::optional<std::string> color;
  };

  struct TabItem {
    TabItem() {}

    std::optional<std::string> id;
    bool services = false;  // list the categories' vendors too
    bool showCategoryDescription = false;
    bool readOnly = false;
    std::optional<std::vector<std::string>> categories;  // absent or empty: all
  };

  /// A category as the preferences screen shows it. Documents do not contain any.
  struct CategoryItem {
    CategoryItem() {}

    std::optional<std::string> id;
    std::optional<std::string> name;
    std::optional<std::string> description;
    std::optional<bool> enabled;
    std::optional<bool> required;
  };

  /// One component of a screen. `id` chooses the kind of component; each kind reads only its own list.
  struct ComponentItem {
    ComponentItem() {}

    std::optional<std::string> id;
    std::optional<std::vector<std::string>> links;
    std::optional<std::vector<ButtonItem>> buttons;
    std::optional<std::vector<TabItem>> tabs;
  };

  /// What each screen shows, top to bottom.
  struct Components {
    Components() {}

    std::optional<std::vector<ComponentItem>> mainScreen;
    std::optional<std::vector<ComponentItem>> secondaryScreen;
  };

  struct Customization {
    Customization() {}

    Colors colors;
    std::optional<std::map<std::string, std::string, std::less<>>> urls;  // link identifier to URL text
    Settings settings;
    Messages messages;
    std::optional<Resources> resources;
    std::optional<Components> components;
  };

  BannerCustomization() {}

  std::string bannerType;
  std::optional<Customization> customization;
};

}  // namespace TalvoConsentSDK
