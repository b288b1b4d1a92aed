#pragma once

// A view as indented text, for tests and for looking at.

#include <string>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/view/AnyView.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// One line a view, children indented under it, components by what they show at first. What wraps a view
/// stands behind it on its line, in the order of wrapping:
///
///     vertical leading | padding 12 | background #ffffffff radius 16
///       text "We value your privacy" headline bold #14181fff | padding 0 0 16 0
///
/// Colours are RRGGBBAA, paddings top, leading, bottom, trailing.
TALVO_EXPORT std::string textPicture(const view::AnyView& view);

}  // namespace TalvoConsentSDK
