#pragma once

// A name kept for hosts that refer to it.

namespace TalvoConsentSDK {

/// Has no operations; the banner view opens links itself.
class UrlUtils {};

}  // namespace TalvoConsentSDK
