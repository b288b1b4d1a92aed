#pragma once

// The banner as assistive technology and scripts see it: a flat list of elements in reading order.

#include <optional>
#include <string>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/view/Element.h"
#include "TalvoConsentSDK/view/ViewTypes.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

/// The minimum width and height of a control's hit area, in points (WCAG 2.2, Target Size (Enhanced)). Hit
/// areas grow with the text, see `ViewEnvironment::controlScale`.
inline constexpr double minTarget = 44;

/// A button or switch. Stays valid after its element is gone.
struct AccessibleControl {
  AnyView view;
  Rect frame;  // as drawn
};

/// Something that the user can read or operate.
struct AccessibleElement {
  ElementId id = 0;
  Role role = Role::text;
  std::string name;
  std::string value;  // "on" or "off" for a switch, "expanded" or "collapsed" for an expander
  std::string description;
  std::string language;  // of the name, such as "de-AT"; empty if it is unknown
  bool isEnabled = true;
  bool isModal = false;
  bool isDismissal = false;
  int focusRequests = 0;     // see node::Accessibility
  Rect frame;                // in window coordinates; for a control, its hit area
  std::optional<Rect> clip;  // the part of the window in which it is visible
  std::optional<AccessibleControl> control;

  bool isControl() const { return control.has_value(); }
};

/// Returns all elements of a laid-out tree, including those that are scrolled out of sight. Leaves out lazy
/// rows that do not exist yet.
TALVO_EXPORT std::vector<AccessibleElement> collectAccessibleElements(const ElementTree& tree,
                                                                      double controlScale);

/// Returns the control that a touch at `point` is meant for: the topmost one drawn there, or else the nearest
/// one whose hit area contains the point. Disabled controls count too, so that touching a disabled control
/// does not trigger its neighbour. Returns null if there is no such control.
TALVO_EXPORT const AccessibleElement* controlAt(const std::vector<AccessibleElement>& elements, Point point);

/// Whether a filled area at `point` keeps touches from reaching the host.
TALVO_EXPORT bool isCovered(const ElementTree& tree, Point point);

/// Runs a button's action or switches a switch.
TALVO_EXPORT void performAction(const AccessibleControl& control);

}  // namespace view
}  // namespace TalvoConsentSDK
