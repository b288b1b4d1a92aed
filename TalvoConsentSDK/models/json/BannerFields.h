#pragma once

// The keys of the site configuration and the banner customization. Golden files keep them from changing.

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/SiteConfiguration.h"
#include "TalvoConsentSDK/models/json/Codec.h"

namespace TalvoConsentSDK::json {

template <>
struct Fields<SiteConfiguration> {
  static constexpr Field table[] = {
      field<&SiteConfiguration::implicitConsent>("implicitConsent"),
      field<&SiteConfiguration::returnSecondaryView>("returnSecondaryView"),
  };
};

template <>
struct Fields<BannerCustomization::Colors> {
  using Record = BannerCustomization::Colors;
  static constexpr Field table[] = {
      field<&Record::background>("background"),
      field<&Record::buttonBackground>("buttonBackground"),
      field<&Record::buttonFontColor>("buttonFontColor"),
      field<&Record::font>("font"),
  };
};

template <>
struct Fields<BannerCustomization::Settings> {
  using Record = BannerCustomization::Settings;
  static constexpr Field table[] = {
      field<&Record::positioning>("positioning"),
      field<&Record::isShowBlurBackground>("showBlurBackground"),
      field<&Record::isShowPoweredBy>("showPoweredBy"),
  };
};

template <>
struct Fields<BannerCustomization::BannerMessages> {
  using Record = BannerCustomization::BannerMessages;
  static constexpr Field table[] = {
      field<&Record::acceptButton>("acceptButton"),
      field<&Record::cookiePolicyURLText>("cookiePolicyURLText"),
      field<&Record::doNotSellURLText>("doNotSellURLText"),
      field<&Record::doNotSellLabelText>("doNotSellLabelText"),
      field<&Record::doNotSellDescription>("doNotSellDescription"),
      field<&Record::dsrURLText>("dsrURLText"),
      field<&Record::mainMessage>("mainMessage"),
      field<&Record::marketing>("marketing"),
      field<&Record::marketingTitle>("marketingTitle"),
      field<&Record::necessary>("necessary"),
      field<&Record::necessaryTitle>("necessaryTitle"),
      field<&Record::preferenceCookiesCategories>("preferenceCookiesCategories"),
      field<&Record::preferenceMainMessage>("preferenceMainMessage"),
      field<&Record::preferences>("preferences"),
      field<&Record::preferencesButton>("preferencesButton"),
      field<&Record::preferencesTitle>("preferencesTitle"),
      field<&Record::preferenceTitle>("preferenceTitle"),
      field<&Record::privacyPolicyURLText>("privacyPolicyURLText"),
      field<&Record::rejectButton>("rejectButton"),
      field<&Record::savePreference>("savePreference"),
      field<&Record::statistics>("statistics"),
      field<&Record::statisticsTitle>("statisticsTitle"),
      field<&Record::TACURLText>("TACURLText"),
      field<&Record::title>("title"),
  };
};

template <>
struct Fields<BannerCustomization::Messages> {
  using Record = BannerCustomization::Messages;
  static constexpr Field table[] = {
      field<&Record::bannerMessages>("bannerMessages"),
  };
};

template <>
struct Fields<BannerCustomization::Resources> {
  using Record = BannerCustomization::Resources;
  static constexpr Field table[] = {
      field<&Record::mainLogoUrl>("mainLogoUrl"),
  };
};

template <>
struct Fields<BannerCustomization::ButtonItem> {
  using Record = BannerCustomization::ButtonItem;
  static constexpr Field table[] = {
      field<&Record::id>("id"),
      field<&Record::color>("color"),
  };
};

template <>
struct Fields<BannerCustomization::TabItem> {
  using Record = BannerCustomization::TabItem;
  static constexpr Field table[] = {
      field<&Record::id>("id"),
      field<&Record::services>("services"),
      field<&Record::showCategoryDescription>("showCategoryDescription"),
      field<&Record::readOnly>("readOnly"),
      field<&Record::categories>("categories"),
  };
};

template <>
struct Fields<BannerCustomization::CategoryItem> {
  using Record = BannerCustomization::CategoryItem;
  static constexpr Field table[] = {
      field<&Record::id>("id"),
      field<&Record::name>("name"),
      field<&Record::description>("description"),
      field<&Record::enabled>("enabled"),
      field<&Record::required>("required"),
  };
};

template <>
struct Fields<BannerCustomization::ComponentItem> {
  using Record = BannerCustomization::ComponentItem;
  static constexpr Field table[] = {
      field<&Record::id>("id"),
      field<&Record::links>("links"),
      field<&Record::buttons>("buttons"),
      field<&Record::tabs>("tabs"),
  };
};

template <>
struct Fields<BannerCustomization::Components> {
  using Record = BannerCustomization::Components;
  static constexpr Field table[] = {
      field<&Record::mainScreen>("mainScreen"),
      field<&Record::secondaryScreen>("secondaryScreen"),
  };
};

template <>
struct Fields<BannerCustomization::Customization> {
  using Record = BannerCustomization::Customization;
  static constexpr Field table[] = {
      field<&Record::colors>("colors"),       field<&Record::urls>("urls"),
      field<&Record::settings>("settings"),   field<&Record::messages>("messages"),
      field<&Record::resources>("resources"), field<&Record::components>("components"),
  };
};

template <>
struct Fields<BannerCustomization> {
  static constexpr Field table[] = {
      field<&BannerCustomization::bannerType>("bannerType"),
      field<&BannerCustomization::customization>("customization"),
  };
};

}  // namespace TalvoConsentSDK::json
