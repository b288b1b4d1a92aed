#pragma once

// The banner as assistive technology sees it.

#include <cstdint>
#include <string>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/view/ViewTypes.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// What assistive technology can do with an element; the values are bits.
enum class SurfaceAction : std::uint32_t {
  activate = 1,  // press a button, switch a switch, open or close an expander
  focus = 2,     // give it the keyboard focus and scroll it into view
  reveal = 4,    // scroll it into view
};

/// Something that the user can read or operate.
struct SurfaceElement {
  std::uint64_t id = 0;
  view::Role role = view::Role::none;
  std::string name;
  std::string value;  // "on" or "off" for a switch, "expanded" or "collapsed" for an expander
  std::string description;
  std::string language;  // of the name; if the banner does not state it, the surface's own
  platform::Rect
      frame;  // in pixels; for a control, the area that can be touched; may be scrolled out of sight
  bool isEnabled = true;
  bool isFocused = false;
  bool isModal = false;
  std::uint32_t actions = 0;  // SurfaceActions
};

}  // namespace TalvoConsentSDK
