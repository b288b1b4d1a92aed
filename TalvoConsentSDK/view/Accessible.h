#pragma once

// The banner as assistive technology and scripts know it: a flat list in reading order, and the controls in
// it.

#include <optional>
#include <string>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/view/Element.h"
#include "TalvoConsentSDK/view/ViewTypes.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

/// The least side of an area that a finger can hit, in points (WCAG 2.2, target size enhanced).
inline constexpr double minTarget = 44;

/// A button or switch to use. Stays valid when its element is gone.
struct AccessibleControl {
  AnyView view;
  Rect frame;  // as drawn
};

/// One thing to read or use.
struct AccessibleElement {
  ElementId id = 0;
  Role role = Role::text;
  std::string name;
  std::string value;  // of a switch "on" or "off", of an expander "expanded" or "collapsed"
  std::string description;
  bool isEnabled = true;
  bool isModal = false;
  bool isDismissal = false;
  Rect frame;                // in window coordinates; of a control the area that can be hit
  std::optional<Rect> clip;  // what of the window it is seen in
  std::optional<AccessibleControl> control;

  bool isControl() const { return control.has_value(); }
};

/// Everything in a laid-out tree, what is scrolled out of sight included.
TALVO_EXPORT std::vector<AccessibleElement> accessibleElements(const ElementTree& tree);

/// The control that a touch at `point` is meant for: the topmost one drawn there, else the nearest one whose
/// hit area holds the point. Disabled controls take part, so that a touch on one goes nowhere else.
TALVO_EXPORT const AccessibleElement* controlAt(const std::vector<AccessibleElement>& elements, Point point);

/// Whether anything is drawn at `point` that keeps touches from the host.
TALVO_EXPORT bool isCovered(const ElementTree& tree, Point point);

/// Does what a control is for.
TALVO_EXPORT void activate(const AccessibleControl& control);

}  // namespace view
}  // namespace TalvoConsentSDK
