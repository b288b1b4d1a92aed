#pragma once

// The interfaces through which Qt's accessibility bridges read and use an AccessibleTree.

#include <QAccessible>

#include "TalvoConsentSDK/view/Element.h"

namespace TalvoConsentSDK {

class AccessibleTree;

/// The root. Whoever makes one registers it with QAccessible, which owns it from then on.
QAccessibleInterface* makeAccessibleWindow(AccessibleTree& tree, QObject& window);

/// One element; invalid while the tree has none such. To be registered likewise.
QAccessibleInterface* makeAccessibleItem(AccessibleTree& tree, view::ElementId id);

}  // namespace TalvoConsentSDK
