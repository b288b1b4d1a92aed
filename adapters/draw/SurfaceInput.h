#pragma once

// The names of keys, buttons and sticks with which the user operates the banner.

#include <cstdint>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

enum class MouseButton : std::int32_t { left = 0, right = 1, middle = 2, other = 3 };

/// Keys of a keyboard, and buttons of a remote control or a game controller. The values are fixed.
enum class SurfaceKey : std::int32_t {
  other = 0,  // any key that is not listed here
  tab = 1,
  backtab = 2,
  space = 3,
  enter = 4,
  escape = 5,  // also the Back key of a phone
  up = 6,      // the arrows, like the D-pad, move the focus to the nearest control in their direction
  down = 7,
  pageUp = 8,
  pageDown = 9,
  home = 10,
  end = 11,
  padUp = 12,
  padDown = 13,
  padLeft = 14,
  padRight = 15,
  padAccept = 16,
  padCancel = 17,
  left = 18,
  right = 19,
};

/// The sticks of a controller: the left one moves the focus as the D-pad does, the right one scrolls.
enum class ControllerStick : std::int32_t { left = 0, right = 1 };

}  // namespace TalvoConsentSDK
