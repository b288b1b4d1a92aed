#pragma once

// How the window system can show one window on top of another.

namespace TalvoConsentSDK {

enum class OverlayKind {
  translucent,  // a top-level window through which the host is visible
  child,        // a child window of the host, blended with it
  opaque,       // no blending: the overlay must draw a picture of the host below the banner
};

/// Returns the kind that fits the platform on which the application runs now.
OverlayKind overlayKind();

}  // namespace TalvoConsentSDK
