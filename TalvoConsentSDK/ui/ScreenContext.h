#pragma once

// What a screen of the banner shares with the parts that it draws.

#include <functional>
#include <set>
#include <string>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/Services.h"

namespace TalvoConsentSDK {

/// Called with the identifier of the tapped button or link. Main thread.
using ActionHandler = std::function<void(const std::string&)>;

/// Called with the vendor whose details the user wants to see.
using VendorDetailHandler = std::function<void(const Services::ServiceGroup&)>;

/// The unknown or incomplete components that a banner has already reported. It prints one line for each,
/// however often it is drawn.
using ReportedComponents = std::set<std::string>;

/// What a screen provides to all of its components. The two references must outlive it.
struct ScreenContext {
  const BannerCustomization::Customization& customization;
  ActionHandler onButtonAction;
  ActionHandler onLinkAction;
  ReportedComponents& reportedComponents;
};

}  // namespace TalvoConsentSDK
