#pragma once

// The direction in which a text is written.

#include <string_view>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Application.h"
#include "TalvoConsentSDK/view/ViewTypes.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

/// Returns the direction of most letters in `text`, which is UTF-8. So an Arabic sentence that starts with a
/// Latin name is still right to left. Returns left to right if both directions have the same number of
/// letters.
TALVO_EXPORT LayoutDirection dominantDirection(std::string_view text);

}  // namespace view
}  // namespace TalvoConsentSDK
