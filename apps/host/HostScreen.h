#pragma once

// The sample host's own screen: the stored consent, a log of events, and a button for every public operation.

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "TalvoConsentSDK/view/AnyView.h"
#include "TalvoConsentSDK/view/State.h"

namespace TalvoConsentHost {

struct HostContent {
  std::string stored = "Nothing yet";
  std::vector<std::string> log;      // newest first
  std::optional<unsigned> busyStep;  // of the indicator that the banner is on its way
};

/// An operation that the user can start.
struct HostOperation {
  std::string title;
  std::function<void()> start;
  bool showsBanner = false;
};

/// What assistive technology is told about a button that is busy.
inline constexpr const char* busyDescription = "The banner is on its way";

/// The screen as a view that updates when `content` changes.
TalvoConsentSDK::view::AnyView hostScreen(const TalvoConsentSDK::view::State<HostContent>& content,
                                          std::vector<HostOperation> operations);

}  // namespace TalvoConsentHost
