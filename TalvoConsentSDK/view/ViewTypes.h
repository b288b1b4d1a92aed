#pragma once

// Small types that describe views.

#include <array>
#include <limits>

#include "TalvoConsentSDK/base/Color.h"
#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/RawValue.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

using namespace platform;  // for colours, fonts, rectangles and pictures

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

}  // namespace view

template <>
struct RawValues<view::Role> {
  static constexpr std::array table{
      RawValue<view::Role>{view::Role::none, "none"},
      RawValue<view::Role>{view::Role::text, "text"},
      RawValue<view::Role>{view::Role::heading, "heading"},
      RawValue<view::Role>{view::Role::image, "image"},
      RawValue<view::Role>{view::Role::button, "button"},
      RawValue<view::Role>{view::Role::link, "link"},
      RawValue<view::Role>{view::Role::toggle, "switch"},
      RawValue<view::Role>{view::Role::expander, "expander"},
      RawValue<view::Role>{view::Role::dialog, "dialog"},
  };
};

}  // namespace TalvoConsentSDK
