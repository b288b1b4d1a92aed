#pragma once

// What the window system can do with a window on top of another.

namespace TalvoConsentSDK {

enum class OverlayKind {
  translucent,  // a top-level window that the host is seen through
  child,        // a child window of the host's, which is blended with it
  opaque,       // nothing is blended: the host must be drawn again below the banner
};

/// The kind for the platform the application runs on, now.
OverlayKind overlayKind();

}  // namespace TalvoConsentSDK
