#pragma once

// The interfaces through which Qt's accessibility bridges read and operate an AccessibleTree.

#include <QAccessible>

#include "TalvoConsentSDK/view/Element.h"

namespace TalvoConsentSDK {

class AccessibleTree;

/// Creates the interface of the root. The caller must register it with QAccessible, which then owns it.
QAccessibleInterface* makeAccessibleWindow(AccessibleTree& tree, QObject& window);

/// Creates the interface of one element, which is invalid while the tree has no such element. The caller must
/// register it with QAccessible, which then owns it.
QAccessibleInterface* makeAccessibleItem(AccessibleTree& tree, view::ElementId id);

}  // namespace TalvoConsentSDK
