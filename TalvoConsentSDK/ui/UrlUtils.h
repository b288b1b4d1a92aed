#pragma once

// A type that the library's interface names but does not use yet.

namespace TalvoConsentSDK {

/// Has no operations. `openExternally` opens links.
class UrlUtils {};

}  // namespace TalvoConsentSDK
