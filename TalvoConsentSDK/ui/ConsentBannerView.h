#pragma once

// The root of the banner: its state, its screens, and what each action does.

#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/models/SiteConfiguration.h"
#include "TalvoConsentSDK/ui/BannerActions.h"
#include "TalvoConsentSDK/ui/ConsentSwitches.h"
#include "TalvoConsentSDK/ui/ScreenContext.h"
#include "TalvoConsentSDK/ui/VendorCatalogue.h"
#include "TalvoConsentSDK/view/AnyView.h"
#include "TalvoConsentSDK/view/State.h"

namespace TalvoConsentSDK {

/// A view as a value: copies share their state, which starts from the stored consent. The banner does not
/// close itself; the owner of the callbacks closes it. Main thread only.
class ConsentBannerView {
 public:
  /// The screens of the banner; one at a time is shown.
  struct VendorDetailScreen {
    Services::ServiceGroup group;
  };
  struct MainScreen {};
  struct PreferencesScreen {
    int doNotSellRequests =
        0;  // how often the link to the do-not-sell switch was tapped; 0 if another way led here
  };
  using Screen = std::variant<VendorDetailScreen, MainScreen, PreferencesScreen>;

  ConsentBannerView(BannerCustomization::Customization customization, std::optional<Services> services,
                    std::optional<SiteConfiguration> siteConfiguration,
                    std::optional<BasicConsent> initialConsent, BannerCallbacks callbacks,
                    std::string language = {});

  /// Returns the same banner with other callbacks.
  ConsentBannerView withCallbacks(BannerCallbacks callbacks) const;
  const BannerCallbacks& callbacks() const { return *callbacks_; }

  const BannerCustomization::Customization& customization() const { return inputs_->customization; }

  /// The banner as a component of a larger view.
  view::AnyView view() const;

  /// The current screen.
  view::AnyView body() const;

  /// Handlers for what the screens report. They print a line for an unknown action or a link that cannot be
  /// opened.
  void handleMainAction(const std::string& action) const;
  void handlePreferencesAction(const std::string& action) const;
  void handleLinkAction(const std::string& link) const;
  void showVendorDetail(const Services::ServiceGroup& group) const;

  /// The consent that would be saved for a category now.
  ConsentValue consentValue(ConsentCategory category) const;

  const Screen& currentScreen() const { return currentScreen_.get(); }

  /// Read and write access to the state of the switches.
  ConsentBindings bindings() const;

 private:
  struct Inputs {
    BannerCustomization::Customization customization;
    VendorCataloguePointer services;  // null if it could not be fetched
    std::optional<SiteConfiguration> siteConfiguration;
    std::optional<BasicConsent> initialConsent;
    std::string language;
  };

  void performCommonAction(const std::string& action) const;

  std::shared_ptr<const Inputs> inputs_;
  std::shared_ptr<const BannerCallbacks> callbacks_;
  std::shared_ptr<ReportedComponents> reportedComponents_ = std::make_shared<ReportedComponents>();
  view::State<Screen> currentScreen_;
  view::State<CategoryStates> categoryStates_;
  view::State<VendorStates> vendorStates_;
  view::State<bool> doNotSellEnabled_;
};

}  // namespace TalvoConsentSDK
