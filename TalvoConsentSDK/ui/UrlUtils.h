#pragma once

// A name of the library's that stands for nothing yet.

namespace TalvoConsentSDK {

/// Has no operations: links are opened by `openExternally`.
class UrlUtils {};

}  // namespace TalvoConsentSDK
