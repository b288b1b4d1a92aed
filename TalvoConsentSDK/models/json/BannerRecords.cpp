// The JSON form of the site configuration and the banner customization. Frozen by golden files.

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/SiteConfiguration.h"
#include "TalvoConsentSDK/models/json/Codec.h"

namespace TalvoConsentSDK {

namespace json {

template <>
struct Fields<SiteConfiguration> {
  static constexpr auto table = std::tuple{
      field("implicitConsent", &SiteConfiguration::implicitConsent),
      field("returnSecondaryView", &SiteConfiguration::returnSecondaryView),
  };
};

template <>
struct Fields<BannerCustomization::Colors> {
  using Record = BannerCustomization::Colors;
  static constexpr auto table = std::tuple{
      field("background", &Record::background),
      field("buttonBackground", &Record::buttonBackground),
      field("buttonFontColor", &Record::buttonFontColor),
      field("font", &Record::font),
  };
};

template <>
struct Fields<BannerCustomization::Settings> {
  using Record = BannerCustomization::Settings;
  static constexpr auto table = std::tuple{
      field("positioning", &Record::positioning),
      field("showBlurBackground", &Record::isShowBlurBackground),
      field("showPoweredBy", &Record::isShowPoweredBy),
  };
};

template <>
struct Fields<BannerCustomization::BannerMessages> {
  using Record = BannerCustomization::BannerMessages;
  static constexpr auto table = std::tuple{
      field("acceptButton", &Record::acceptButton),
      field("cookiePolicyURLText", &Record::cookiePolicyURLText),
      field("doNotSellURLText", &Record::doNotSellURLText),
      field("doNotSellLabelText", &Record::doNotSellLabelText),
      field("doNotSellDescription", &Record::doNotSellDescription),
      field("dsrURLText", &Record::dsrURLText),
      field("mainMessage", &Record::mainMessage),
      field("marketing", &Record::marketing),
      field("marketingTitle", &Record::marketingTitle),
      field("necessary", &Record::necessary),
      field("necessaryTitle", &Record::necessaryTitle),
      field("preferenceCookiesCategories", &Record::preferenceCookiesCategories),
      field("preferenceMainMessage", &Record::preferenceMainMessage),
      field("preferences", &Record::preferences),
      field("preferencesButton", &Record::preferencesButton),
      field("preferencesTitle", &Record::preferencesTitle),
      field("preferenceTitle", &Record::preferenceTitle),
      field("privacyPolicyURLText", &Record::privacyPolicyURLText),
      field("rejectButton", &Record::rejectButton),
      field("savePreference", &Record::savePreference),
      field("statistics", &Record::statistics),
      field("statisticsTitle", &Record::statisticsTitle),
      field("TACURLText", &Record::TACURLText),
      field("title", &Record::title),
  };
};

template <>
struct Fields<BannerCustomization::Messages> {
  using Record = BannerCustomization::Messages;
  static constexpr auto table = std::tuple{
      field("bannerMessages", &Record::bannerMessages),
  };
};

template <>
struct Fields<BannerCustomization::Resources> {
  using Record = BannerCustomization::Resources;
  static constexpr auto table = std::tuple{
      field("mainLogoUrl", &Record::mainLogoUrl),
  };
};

template <>
struct Fields<BannerCustomization::ButtonItem> {
  using Record = BannerCustomization::ButtonItem;
  static constexpr auto table = std::tuple{
      field("id", &Record::id),
      field("color", &Record::color),
  };
};

template <>
struct Fields<BannerCustomization::TabItem> {
  using Record = BannerCustomization::TabItem;
  static constexpr auto table = std::tuple{
      field("id", &Record::id),
      field("services", &Record::services),
      field("showCategoryDescription", &Record::showCategoryDescription),
      field("readOnly", &Record::readOnly),
      field("categories", &Record::categories),
  };
};

template <>
struct Fields<BannerCustomization::CategoryItem> {
  using Record = BannerCustomization::CategoryItem;
  static constexpr auto table = std::tuple{
      field("id", &Record::id),
      field("name", &Record::name),
      field("description", &Record::description),
      field("enabled", &Record::enabled),
      field("required", &Record::required),
  };
};

template <>
struct Fields<BannerCustomization::ComponentItem> {
  using Record = BannerCustomization::ComponentItem;
  static constexpr auto table = std::tuple{
      field("id", &Record::id),
      field("links", &Record::links),
      field("buttons", &Record::buttons),
      field("tabs", &Record::tabs),
  };
};

template <>
struct Fields<BannerCustomization::Components> {
  using Record = BannerCustomization::Components;
  static constexpr auto table = std::tuple{
      field("mainScreen", &Record::mainScreen),
      field("secondaryScreen", &Record::secondaryScreen),
  };
};

template <>
struct Fields<BannerCustomization::Customization> {
  using Record = BannerCustomization::Customization;
  static constexpr auto table = std::tuple{
      field("colors", &Record::colors),       field("urls", &Record::urls),
      field("settings", &Record::settings),   field("messages", &Record::messages),
      field("resources", &Record::resources), field("components", &Record::components),
  };
};

template <>
struct Fields<BannerCustomization> {
  static constexpr auto table = std::tuple{
      field("bannerType", &BannerCustomization::bannerType),
      field("customization", &BannerCustomization::customization),
  };
};

}  // namespace json

template Result<SiteConfiguration> JSONDecoder::decode(std::string_view) const;
template Result<BannerCustomization> JSONDecoder::decode(std::string_view) const;
template Result<BannerCustomization::CategoryItem> JSONDecoder::decode(std::string_view) const;
template Result<std::string> JSONEncoder::encode(const SiteConfiguration&) const;
template Result<std::string> JSONEncoder::encode(const BannerCustomization&) const;
template Result<std::string> JSONEncoder::encode(const BannerCustomization::CategoryItem&) const;

}  // namespace TalvoConsentSDK
