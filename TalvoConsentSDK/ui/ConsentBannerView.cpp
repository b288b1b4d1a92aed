#include "TalvoConsentSDK/ui/ConsentBannerView.h"

#include <algorithm>
#include <set>
#include <utility>

#include "TalvoConsentSDK/base/NeverDestroyed.h"
#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/ui/ExternalLink.h"
#include "TalvoConsentSDK/ui/Labels.h"
#include "TalvoConsentSDK/ui/MainScreenView.h"
#include "TalvoConsentSDK/ui/PreferencesScreenView.h"
#include "TalvoConsentSDK/ui/VendorDetailScreenView.h"
#include "TalvoConsentSDK/view/Element.h"
#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

using StoredConsent = std::optional<BasicConsent>;

std::optional<ConsentValue> storedValue(const StoredConsent& consent, ConsentCategory category) {
  if (category == ConsentCategory::necessary) return ConsentValue::all();
  if (!consent) return std::nullopt;
  if (category == ConsentCategory::preferences) return consent->preferences;
  if (category == ConsentCategory::statistics) return consent->statistics;
  if (category == ConsentCategory::marketing) return consent->marketing;
  return std::nullopt;
}

constexpr ConsentCategory categories[] = {ConsentCategory::necessary, ConsentCategory::preferences,
                                          ConsentCategory::statistics, ConsentCategory::marketing};

CategoryStates initialCategories(const StoredConsent& consent) {
  CategoryStates states;
  for (const ConsentCategory category : categories) {
    const auto value = storedValue(consent, category);
    states[std::string(rawValue(category))] = value && value->isEnabled();
  }
  return states;
}

bool isOnInitially(const std::optional<ConsentValue>& value, const std::string& vendor) {
  if (!value) return false;
  if (!value->isPartial()) return value->isAll();
  return std::ranges::find(value->items(), vendor) != value->items().end();
}

VendorStates initialVendors(const StoredConsent& consent, const VendorCataloguePointer& services) {
  VendorStates states;
  if (!services) return states;
  for (const ConsentCategory category : categories) {
    const auto value = storedValue(consent, category);
    auto& vendors = states[std::string(rawValue(category))];
    for (const std::string& vendor : services->vendors(rawValue(category)))
      vendors[vendor] = isOnInitially(value, vendor);
  }
  return states;
}

// In the catalogue's order. Vendors that the catalogue no longer lists are included and come last.
std::vector<std::string> enabledVendors(const VendorStates& states, const std::string& category,
                                        const std::vector<std::string>& listed) {
  const auto vendors = states.find(category);
  if (vendors == states.end()) return {};
  std::vector<std::string> enabled;
  std::set<std::string> stale;
  for (const auto& [vendor, isOn] : vendors->second) {
    if (isOn) stale.insert(vendor);
  }
  for (const std::string& vendor : listed) {
    if (stale.erase(vendor) > 0) enabled.push_back(vendor);
  }
  enabled.insert(enabled.end(), stale.begin(), stale.end());
  return enabled;
}

bool hasOptedOut(const StoredConsent& consent) {
  return consent && consent->optedIn == false;
}

// The consent from which the switches take their initial state. If do-not-sell is on in the stored
// consent, saving would give no consent, so all switches except necessary and do-not-sell start off.
const StoredConsent& shownConsent(const StoredConsent& stored) {
  static const auto& none = neverDestroyed<StoredConsent>();
  return hasOptedOut(stored) ? none : stored;
}

bool startsWithPreferences(const StoredConsent& consent,
                           const std::optional<SiteConfiguration>& configuration) {
  return consent && configuration && configuration->returnSecondaryView.value_or(false);
}

}  // namespace

ConsentBannerView::ConsentBannerView(BannerCustomization::Customization customization,
                                     std::optional<Services> services,
                                     std::optional<SiteConfiguration> siteConfiguration,
                                     std::optional<BasicConsent> initialConsent, BannerCallbacks callbacks,
                                     std::string language)
    : inputs_(std::make_shared<const Inputs>(Inputs{
          std::move(customization),
          services ? std::make_shared<const VendorCatalogue>(*std::move(services)) : nullptr,
          siteConfiguration,
          std::move(initialConsent),
          std::move(language),
      })),
      callbacks_(std::make_shared<const BannerCallbacks>(std::move(callbacks))),
      currentScreen_(startsWithPreferences(inputs_->initialConsent, inputs_->siteConfiguration)
                         ? Screen(PreferencesScreen())
                         : Screen(MainScreen())),
      categoryStates_(initialCategories(shownConsent(inputs_->initialConsent))),
      vendorStates_(initialVendors(shownConsent(inputs_->initialConsent), inputs_->services)),
      doNotSellEnabled_(hasOptedOut(inputs_->initialConsent)) {}

ConsentBannerView ConsentBannerView::withCallbacks(BannerCallbacks callbacks) const {
  ConsentBannerView copy = *this;
  copy.callbacks_ = std::make_shared<const BannerCallbacks>(std::move(callbacks));
  return copy;
}

AnyView ConsentBannerView::view() const {
  return component("banner",
                   [banner = *this](RenderContext& context) {
                     context.observe(banner.currentScreen_, banner.categoryStates_, banner.vendorStates_,
                                     banner.doNotSellEnabled_);
                     return banner.body();
                   })
      .accessibility({.language = inputs_->language});
}

AnyView ConsentBannerView::body() const {
  const auto& customization = inputs_->customization;
  const auto mainAction = [view = *this](const std::string& action) { view.handleMainAction(action); };
  const auto action = [view = *this](const std::string& id) { view.handlePreferencesAction(id); };
  const auto link = [view = *this](const std::string& id) { view.handleLinkAction(id); };
  const auto detail = [view = *this](const Services::ServiceGroup& group) { view.showVendorDetail(group); };
  const auto back = [view = *this] { view.currentScreen_.set(PreferencesScreen()); };

  const Screen& screen = currentScreen_.get();
  if (std::holds_alternative<MainScreen>(screen)) {
    return MainScreenView(customization, mainAction, link, *reportedComponents_).body().key("main");
  }
  if (const auto* vendor = std::get_if<VendorDetailScreen>(&screen)) {
    return VendorDetailScreenView(vendor->group, customization, inputs_->services, bindings(), back, action,
                                  link, detail, *reportedComponents_)
        .body()
        .key("vendor " + vendor->group.vendor);
  }
  return PreferencesScreenView(customization, inputs_->services, bindings(), action, link, detail,
                               *reportedComponents_, std::get<PreferencesScreen>(screen).doNotSellRequests)
      .body()
      .key("preferences");
}

void ConsentBannerView::handleMainAction(const std::string& action) const {
  if (action == closeAction) return callbacks_->onClose();
  if (opensPreferences(action)) return currentScreen_.set(PreferencesScreen());
  performCommonAction(action);
}

void ConsentBannerView::handlePreferencesAction(const std::string& action) const {
  if (action == closeAction) return callbacks_->onClose();
  if (action == saveAction) {
    const auto& initial = inputs_->initialConsent;
    return callbacks_->onSavePreferences(
        BasicConsent(consentValue(ConsentCategory::preferences), consentValue(ConsentCategory::statistics),
                     consentValue(ConsentCategory::marketing), initial ? initial->id : std::nullopt,
                     !doNotSellEnabled_.get()));
  }
  performCommonAction(action);
}

void ConsentBannerView::performCommonAction(const std::string& action) const {
  for (const auto& [id, callback] : commonActions) {
    if (action == id) return ((*callbacks_).*callback)();
  }
  print("⚠️ Unknown button action: " + action);
}

void ConsentBannerView::handleLinkAction(const std::string& link) const {
  if (link == "doNotSellMyData") {
    static int requests = 0;
    return currentScreen_.set(PreferencesScreen{++requests});
  }
  const std::string key = linkURLKey(link);
  if (const auto& urls = inputs_->customization.urls; urls && urls->contains(key)) {
    return openExternally(link, urls->find(key)->second);
  }
  // Not reached as long as the first line handles this link. Kept so that the link never prints the line
  // below.
  if (link == "doNotSellMyData") return;
  print("No URL found for link: " + link + " (URL key: " + key + ")");
}

void ConsentBannerView::showVendorDetail(const Services::ServiceGroup& group) const {
  currentScreen_.set(VendorDetailScreen{group});
}

ConsentValue ConsentBannerView::consentValue(ConsentCategory category) const {
  const std::string key(rawValue(category));
  if (doNotSellEnabled_.get() && category != ConsentCategory::necessary) return ConsentValue::none();
  if (!isOn(categoryStates_.get(), key)) return ConsentValue::none();
  if (!inputs_->services) return ConsentValue::all();

  const std::vector<std::string>& total = inputs_->services->vendors(key);
  if (total.empty()) return ConsentValue::all();
  return ConsentValue::fromSelection(enabledVendors(vendorStates_.get(), key, total),
                                     static_cast<int>(total.size()));
}

ConsentBindings ConsentBannerView::bindings() const {
  return {categoryStates_.binding(), vendorStates_.binding(), doNotSellEnabled_.binding()};
}

}  // namespace TalvoConsentSDK
