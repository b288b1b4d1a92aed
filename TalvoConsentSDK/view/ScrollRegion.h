#pragma once

// The scrolling parts of a window, and how far they are scrolled.

#include <algorithm>
#include <optional>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/view/Element.h"
#include "TalvoConsentSDK/view/ViewTypes.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

/// A part of the window whose content scrolls.
struct ScrollRegion {
  ElementId id = 0;
  Element* element = nullptr;  // with what stays around `frame`; valid until the next rendering
  Rect frame;
  double contentHeight = 0;

  /// The height of the part at each edge in which content fades, if there is more of it.
  static constexpr double fadedEdge = 20;

  double maxOffset() const { return std::max(0.0, contentHeight - frame.height); }
};

/// How far a region is scrolled, in points from the top. Stored under the region's identity. Layout reduces
/// an offset that is past the end to the region's maximum.
///
/// A card whose bottom stays in place would lift everything in it by growing. So when a list in it opens, it
/// keeps the height that it had, and grows only by as much as the content is then moved up.
struct ScrollOffset {
  double y = 0;
  double height = 0;       // at the last layout
  double held = infinity;  // the height that is kept
  double growth = 0;       // how much taller it could be than `held`
  double cut = 0;          // how much of the bottom is left empty, so that the edge cuts a line
  std::optional<ElementId> revealed = {};  // what the last scrolling brought into view, which is never cut

  /// Moves the content up: by growing as long as possible, then by scrolling.
  void moveUp(double distance) {
    const double grown = std::clamp(distance, 0.0, growth);
    if (grown > 0) held += grown;
    growth -= grown;
    y += distance - grown;
  }
};

}  // namespace view
}  // namespace TalvoConsentSDK
