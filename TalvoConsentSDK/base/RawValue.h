#pragma once

// Enumerations with a raw text for each case, such as its text in JSON. To add an enumeration, specialise
// RawValues next to it.

#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// `RawValues<Enum>::table` pairs every case of `Enum` with its raw text, in declaration order.
template <class Enum>
struct RawValues;

/// An entry of `RawValues<Enum>::table`.
template <class Enum>
using RawValue = std::pair<Enum, std::string_view>;

/// Returns the raw text of a case.
template <class Enum>
constexpr std::string_view rawValue(Enum value) noexcept {
  for (const auto& [each, raw] : RawValues<Enum>::table) {
    if (each == value) return raw;
  }
  return {};
}

/// Returns the case whose raw text is exactly `raw` (case-sensitive), or nothing.
template <class Enum>
constexpr std::optional<Enum> fromRawValue(std::string_view raw) noexcept {
  for (const auto& [value, each] : RawValues<Enum>::table) {
    if (each == raw) return value;
  }
  return std::nullopt;
}

}  // namespace TalvoConsentSDK
