#pragma once

// Small types that describe views.

#include <array>
#include <limits>

#include "TalvoConsentSDK/base/Color.h"
#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/RawValue.h"

namespace TalvoConsentSDK TALVO_EXPORT {

inline constexpr double infinity = std::numeric_limits<double>::infinity();

enum class HorizontalAlignment { leading, center, trailing };
enum class VerticalAlignment { top, center, bottom };

struct Alignment {
  HorizontalAlignment horizontal = HorizontalAlignment::center;
  VerticalAlignment vertical = VerticalAlignment::center;
  friend bool operator==(const Alignment&, const Alignment&) = default;
};

/// Symbols that every toolkit can draw.
enum class Glyph { xmark, chevronLeft, chevronRight };

/// The kind of an element, for assistive technology. Scripts and text pictures use its raw text.
enum class Role { none, text, heading, image, button, link, toggle, expander, dialog };

template <>
struct RawValues<Role> {
  static constexpr std::array table{
      RawValue<Role>{Role::none, "none"},       RawValue<Role>{Role::text, "text"},
      RawValue<Role>{Role::heading, "heading"}, RawValue<Role>{Role::image, "image"},
      RawValue<Role>{Role::button, "button"},   RawValue<Role>{Role::link, "link"},
      RawValue<Role>{Role::toggle, "switch"},   RawValue<Role>{Role::expander, "expander"},
      RawValue<Role>{Role::dialog, "dialog"},
  };
};

/// What a horizontal stack does if its children do not fit side by side.
enum class Overflow {
  compress,           // gives each child less room
  stackAtBrokenWord,  // places the children one below the other if a word would be split otherwise
  wrap,               // continues on further lines
};

struct Shadow {
  Color color;
  double radius = 0;  // blur radius
  double x = 0;
  double y = 0;
  friend bool operator==(const Shadow&, const Shadow&) = default;
};

}  // namespace TalvoConsentSDK
