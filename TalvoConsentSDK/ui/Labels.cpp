#include "TalvoConsentSDK/ui/Labels.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "TalvoConsentSDK/base/ASCII.h"
#include "TalvoConsentSDK/ui/BannerActions.h"

namespace TalvoConsentSDK {

namespace {

using Messages = BannerCustomization::BannerMessages;

struct LinkLabel {
  std::string_view id;
  std::optional<std::string> Messages::* message;
  const char* defaultLabel;
};

constexpr LinkLabel linkLabels[] = {
    {"privacyPolicy", &Messages::privacyPolicyURLText, "Privacy Policy"},
    {"cookiePolicy", &Messages::cookiePolicyURLText, "Cookie Policy"},
    {"termsAndConditions", &Messages::TACURLText, "Terms & Conditions"},
    {"doNotSell", &Messages::doNotSellURLText, "Don't Sell My Data"},
    {"doNotSellMyData", &Messages::doNotSellURLText, "Don't Sell My Data"},
    {"dsr", &Messages::dsrURLText, "Data Subject Rights"},
};

// The first letter of each word in upper case, the others in lower case. ASCII letters only.
std::string capitalized(std::string text) {
  bool startsWord = true;
  for (char& c : text) {
    if (startsWord && c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    if (!startsWord) c = lowercased(c);
    startsWord = c == ' ' || c == '\t' || c == '\n' || c == '\r';
  }
  return text;
}

}  // namespace

std::string buttonLabel(const std::string& id, const BannerCustomization::BannerMessages& messages) {
  if (id == acceptAction) return messages.acceptButton;
  if (id == rejectAction) return messages.rejectButton;
  if (opensPreferences(id)) return messages.preferencesButton.value_or("Manage Preferences");
  if (id == saveAction) return messages.savePreference.value_or("Save Preferences");
  return capitalized(id);
}

std::string linkLabel(const std::string& id, const BannerCustomization::BannerMessages& messages) {
  const auto* link = std::ranges::find(linkLabels, id, &LinkLabel::id);
  if (link == std::end(linkLabels)) return capitalized(id);
  return (messages.*link->message).value_or(link->defaultLabel);
}

bool isKnownLink(std::string_view id) {
  return std::ranges::find(linkLabels, id, &LinkLabel::id) != std::end(linkLabels);
}

std::string linkURLKey(const std::string& link) {
  return link == "dsr" ? "dsrForm" : link;
}

}  // namespace TalvoConsentSDK
