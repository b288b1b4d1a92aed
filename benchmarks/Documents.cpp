#include "benchmarks/Documents.h"

#include <optional>
#include <utility>
#include <vector>

namespace TalvoConsentBenchmarks {

using namespace TalvoConsentSDK;

namespace {

std::string sixDigits(std::size_t number) {
  std::string text = std::to_string(number);
  return text.insert(0, 6 - text.size(), '0');
}

BannerCustomization::ComponentItem component(const char* id) {
  BannerCustomization::ComponentItem item;
  item.id = id;
  return item;
}

BannerCustomization::Customization customization() {
  BannerCustomization::Customization result;
  result.colors.background = "#101B36";
  result.colors.buttonBackground = "#2F6BEB";
  result.colors.buttonFontColor = "#FFFFFF";
  result.colors.font = "#E9EEF9";
  result.settings.positioning = "bottom";
  result.settings.isShowBlurBackground = true;
  auto& messages = result.messages.bannerMessages;
  messages.title = "Your privacy, your choice";
  messages.mainMessage = "We and our partners use cookies and similar technologies to run this app.";
  messages.acceptButton = "Accept all";
  messages.rejectButton = "Reject all";

  auto buttons = component("buttons");
  for (const char* id : {"acceptAll", "rejectAll", "savePreferences"}) {
    buttons.buttons.emplace(buttons.buttons.value_or(std::vector<BannerCustomization::ButtonItem>()))
        .emplace_back()
        .id = id;
  }
  BannerCustomization::TabItem tab;
  tab.services = true;
  tab.showCategoryDescription = true;
  auto tabs = component("tabs");
  tabs.tabs = {tab};
  auto& components = result.components.emplace();
  components.mainScreen = {component("title"), component("description"), buttons};
  components.secondaryScreen = {component("closeButton"), component("title"), tabs, buttons};
  return result;
}

Services catalogue(std::size_t vendorCount) {
  Services services;
  auto& libraries = services.libraries.emplace();
  for (std::size_t i = 0; i < vendorCount; ++i) {
    auto& service = libraries.emplace_back();
    const std::string number = sixDigits(i);
    service.id = "service-" + number;
    service.name = "Advertising " + number;
    service.category = "marketing";
    service.vendor = "Vendor " + number;
  }
  return services;
}

}  // namespace

Services fullCatalogue(std::size_t count) {
  constexpr const char* categories[] = {"necessary", "preferences", "statistics", "marketing"};
  Services result;
  result.model = "generated";
  auto& libraries = result.libraries.emplace();
  auto& vendors = result.services.emplace();
  for (std::size_t i = 0; i < count; ++i) {
    const std::string number = sixDigits(i);
    const std::string domain = "vendor-" + number + ".example.com";
    auto& service = libraries.emplace_back();
    service.id = "service-" + number;
    service.name = "Service " + number;
    service.category = categories[i % 4];
    service.description = "Measures how pages are used, and by whom.";
    service.version = "1.0";
    service.domain = domain;
    service.vendor = "Vendor " + number;
    service.fullName = "The service with the number " + number;
    auto& details = vendors.emplace_back();
    details.domain = domain;
    details.description = "A company that offers a service to apps and pages.";
    details.processingCompanyName = "Vendor " + number + " Limited";
    details.processingCompanyLocation = "1 Example Street, Example Town";
    details.DTOProbableEmails = "privacy@" + domain;
    details.legalBasis = "consent";
    details.privacyPolicyURL = "https://" + domain + "/privacy";
    details.cookiePolicyURL = "https://" + domain + "/cookies";
    details.id = "Vendor " + number;
  }
  return result;
}

ConsentBannerView makeBanner(std::size_t vendorCount) {
  const ConsentBannerView banner(customization(), catalogue(vendorCount), std::nullopt, std::nullopt, {});
  banner.handleMainAction("preferences");
  return banner;
}

}  // namespace TalvoConsentBenchmarks
