#pragma once

// The fonts that are installed on the system. Without fontconfig there are none.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "adapters/draw/SurfaceOptions.h"

namespace TalvoConsentSDK {

/// Main thread only.
class SystemFonts {
 public:
  SystemFonts();
  ~SystemFonts();
  SystemFonts(const SystemFonts&) = delete;
  SystemFonts& operator=(const SystemFonts&) = delete;

  /// Returns the upright files of a family, or nothing if it is not installed.
  std::vector<FontSource> family(const std::string& name) const;

  /// Returns the family that the system prefers for a character.
  std::optional<std::string> familyWith(char32_t character);

 private:
  struct Sorted;
  std::unique_ptr<Sorted> sorted_;
};

}  // namespace TalvoConsentSDK
