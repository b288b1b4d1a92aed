#pragma once

// A view as indented text, for tests and for people to read.

#include <string>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/view/AnyView.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Writes one line per view, with its children indented below it. A component's line is its name, and
/// its children are the views that it shows initially. Wrappers follow the view that they wrap on the same
/// line, innermost first. The content of an overlay follows the view's children, below a line `over it`:
///
///     vertical leading | padding 12 | background #ffffffff radius 16
///       text "We value your privacy" headline bold #14181fff | padding 0 0 16 0
///
/// Colours are RRGGBBAA; paddings are in the order top, leading, bottom, trailing.
TALVO_EXPORT std::string textPicture(const view::AnyView& view);

}  // namespace TalvoConsentSDK
