#include "TalvoConsentSDK/ui/VendorDetailRenderer.h"

#include <optional>

#include "TalvoConsentSDK/base/ASCII.h"
#include "TalvoConsentSDK/ui/ExternalLink.h"
#include "TalvoConsentSDK/ui/Localized.h"
#include "TalvoConsentSDK/ui/Palette.h"
#include "TalvoConsentSDK/ui/VendorRow.h"
#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

using Text = std::optional<std::string>;

bool hasValue(const Text& value) {
  return value && !isBlank(*value);
}

AnyView labelled(const char* label, const AnyView& value, const Palette& palette) {
  return verticalStack({.alignment = HorizontalAlignment::leading, .spacing = 2},
                       {
                           localizedText(label, {.font = {TextStyle::footnote, FontWeight::semibold},
                                                 .color = palette.secondaryFont()}),
                           value,
                       })
      .padding({.bottom = 12});
}

AnyView plain(const std::string& value, const Palette& palette) {
  return text(value, {.font = {TextStyle::subheadline, FontWeight::regular}, .color = palette.font});
}

AnyView link(const char* label, const std::string& url, const Palette& palette) {
  const AnyView shown = text(
      url,
      {.font = {TextStyle::subheadline, FontWeight::regular}, .color = palette.font, .isUnderlined = true});
  return button(shown, [label = std::string(label), url] { openExternally(label, url); })
      .accessibility({.role = Role::link});
}

AnyView serviceView(const Services::Service& service, const Palette& palette) {
  std::vector<AnyView> lines;
  const Text& name = hasValue(service.fullName) ? service.fullName : service.name;
  if (hasValue(name)) {
    lines.push_back(
        text(*name, {.font = {TextStyle::subheadline, FontWeight::semibold}, .color = palette.font}));
  }
  const auto add = [&](const std::string& line) {
    lines.push_back(
        text(line, {.font = {TextStyle::footnote, FontWeight::regular}, .color = palette.secondaryFont()}));
  };
  for (const Text* value : {&service.domain, &service.description}) {
    if (hasValue(*value)) add(**value);
  }
  if (hasValue(service.version)) add(localized("Version") + " " + *service.version);
  if (lines.empty()) return {};
  return verticalStack({.alignment = HorizontalAlignment::leading, .spacing = 2}, lines)
      .padding(Insets::vertical(8));
}

}  // namespace

AnyView VendorDetailRenderer::title() const {
  const AnyView name =
      text(vendorGroup_.vendor, {.font = {TextStyle::headline, FontWeight::bold}, .color = palette_.font})
          .frame({.maxWidth = infinity, .alignment = {HorizontalAlignment::leading}})
          .accessibility({.role = Role::heading});
  return titleLine(name,
                   vendorSwitchView(vendorGroup_.vendor, categoryId_, "", palette_, readOnly_, bindings_))
      .padding({.top = -4, .bottom = 16});
}

AnyView VendorDetailRenderer::render() const {
  const auto& details = vendorGroup_.details;
  std::vector<AnyView> views;
  const auto add = [&](const char* label, const Text& value) {
    if (hasValue(value)) views.push_back(labelled(label, plain(*value, palette_), palette_));
  };
  add("Company Name", details.processingCompanyName);
  add("Location", details.processingCompanyLocation);
  add("Privacy Contact", details.DTOProbableEmails);
  if (hasValue(details.privacyPolicyURL)) {
    views.push_back(labelled("Privacy Policy URL",
                             link("privacyPolicyURL", *details.privacyPolicyURL, palette_), palette_));
  }
  add("Description", details.description);

  views.push_back(localizedText("Stored Information",
                                {.font = {TextStyle::body, FontWeight::semibold}, .color = palette_.font})
                      .accessibility({.role = Role::heading})
                      .padding({.top = 8, .bottom = 4}));
  views.push_back(divider(palette_.line()));
  for (const auto& service : vendorGroup_.services) {
    const AnyView view = serviceView(service, palette_);
    if (view.isEmpty()) continue;
    views.push_back(view);
    views.push_back(divider(palette_.line()));
  }
  return verticalStack({.alignment = HorizontalAlignment::leading}, views).padding({.bottom = 12});
}

}  // namespace TalvoConsentSDK
