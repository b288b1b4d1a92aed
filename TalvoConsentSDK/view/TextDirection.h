#pragma once

// Which way a text is written.

#include <string_view>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Application.h"
#include "TalvoConsentSDK/view/ViewTypes.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

/// The direction of most of the letters in UTF-8 `text`, so that a Latin name at its beginning does not
/// decide for an Arabic sentence. Left to right when there are as many of one kind as of the other.
TALVO_EXPORT LayoutDirection dominantDirection(std::string_view text);

}  // namespace view
}  // namespace TalvoConsentSDK
