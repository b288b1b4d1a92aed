#include "TalvoConsentSDK/ui/Labels.h"

namespace TalvoConsentSDK {

namespace {

// The first letter of each word in upper case, the others in lower case. ASCII letters only.
std::string capitalized(std::string text) {
  bool startsWord = true;
  for (char& c : text) {
    if (startsWord && c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    if (!startsWord && c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    startsWord = c == ' ' || c == '\t' || c == '\n' || c == '\r';
  }
  return text;
}

}  // namespace

std::string buttonLabel(const std::string& id, const BannerCustomization::BannerMessages& messages) {
  if (id == "acceptAll") return messages.acceptButton;
  if (id == "rejectAll") return messages.rejectButton;
  if (id == "managePreferences" || id == "preferences") {
    return messages.preferencesButton.value_or("Manage Preferences");
  }
  if (id == "savePreferences") return messages.savePreference.value_or("Save Preferences");
  return capitalized(id);
}

std::string linkLabel(const std::string& id, const BannerCustomization::BannerMessages& messages) {
  if (id == "privacyPolicy") return messages.privacyPolicyURLText.value_or("Privacy Policy");
  if (id == "cookiePolicy") return messages.cookiePolicyURLText.value_or("Cookie Policy");
  if (id == "termsAndConditions") return messages.TACURLText.value_or("Terms & Conditions");
  if (id == "doNotSell" || id == "doNotSellMyData") {
    return messages.doNotSellURLText.value_or("Don't Sell My Data");
  }
  if (id == "dsr") return messages.dsrURLText.value_or("Data Subject Rights");
  return capitalized(id);
}

std::string linkURLKey(const std::string& link) {
  return link == "dsr" ? "dsrForm" : link;
}

}  // namespace TalvoConsentSDK
