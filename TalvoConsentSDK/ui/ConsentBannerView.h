#pragma once

// The root of the banner: its state, its screens, and what an action does.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/models/SiteConfiguration.h"
#include "TalvoConsentSDK/ui/ComponentRenderer.h"
#include "TalvoConsentSDK/ui/ConsentSwitches.h"
#include "TalvoConsentSDK/ui/VendorCatalogue.h"
#include "TalvoConsentSDK/view/AnyView.h"
#include "TalvoConsentSDK/view/State.h"

namespace TalvoConsentSDK {

namespace view {
class RenderContext;
}

/// How the person's decision leaves the banner. Main thread.
struct BannerCallbacks {
  std::function<void()> onAcceptAll;
  std::function<void()> onRejectAll;
  std::function<void()> onManagePreferences;
  std::function<void(const BasicConsent&)> onSavePreferences;
  std::function<void()> onClose;
};

/// A view as a value: copies share the state, which begins with the consent stored so far. It ends nothing
/// itself; closing is the business of whoever set the callbacks. Main thread only.
class ConsentBannerView {
 public:
  /// Which screen is on show.
  struct VendorDetailScreen {
    Services::ServiceGroup group;
  };
  struct MainScreen {};
  struct PreferencesScreen {};
  using Screen = std::variant<VendorDetailScreen, MainScreen, PreferencesScreen>;

  ConsentBannerView(BannerCustomization::Customization customization, std::optional<Services> services,
                    std::optional<SiteConfiguration> siteConfiguration,
                    std::optional<BasicConsent> initialConsent, BannerCallbacks callbacks);

  /// The same banner, reporting elsewhere.
  ConsentBannerView withCallbacks(BannerCallbacks callbacks) const;
  const BannerCallbacks& callbacks() const { return *callbacks_; }

  const BannerCustomization::Customization& customization() const { return inputs_->customization; }

  /// The banner as a component of a larger view.
  view::AnyView view() const;

  /// The screen on show.
  view::AnyView body() const;

  /// What the screens report. Unknown actions and links that cannot be opened print one line.
  void handleMainAction(const std::string& action) const;
  void handlePreferencesAction(const std::string& action) const;
  void handleLinkAction(const std::string& link) const;
  void showVendorDetail(const Services::ServiceGroup& group) const;

  /// The consent that saving would give for a category.
  ConsentValue consentValue(ConsentCategory category) const;

  const Screen& currentScreen() const { return currentScreen_.get(); }

  /// The switches' state, to read and to change.
  ConsentBindings bindings() const;

 private:
  struct Inputs {
    BannerCustomization::Customization customization;
    VendorCataloguePointer services;  // null: could not be fetched
    std::optional<SiteConfiguration> siteConfiguration;
    std::optional<BasicConsent> initialConsent;
  };

  void performCommonAction(const std::string& action) const;

  std::shared_ptr<const Inputs> inputs_;
  std::shared_ptr<const BannerCallbacks> callbacks_;
  std::shared_ptr<ToldComponents> told_ = std::make_shared<ToldComponents>();
  view::State<Screen> currentScreen_;
  view::State<CategoryStates> categoryStates_;
  view::State<VendorStates> vendorStates_;
  view::State<bool> doNotSellEnabled_;
};

}  // namespace TalvoConsentSDK
