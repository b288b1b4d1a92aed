#pragma once

// What a host gives a ConsentSurface: fonts, settings and callbacks.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/platform/Application.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// A font file: TrueType, OpenType or a collection of them; variable fonts and colour fonts too.
struct FontSource {
  std::string path;                            // used if `bytes` is null
  std::shared_ptr<const std::string> bytes{};  // the content of a font file
};

/// The size of a surface in pixels, and the number of pixels in a point (the display's scale).
struct SurfaceSize {
  std::int32_t width = 0;
  std::int32_t height = 0;
  double scale = 1;
  friend bool operator==(const SurfaceSize&, const SurfaceSize&) = default;
};

/// The user's settings. They may change while a banner is shown.
struct SurfaceSettings {
  double textScale = 1;  // multiplies every font size; from 1 to about 3
  bool highContrast = false;
  bool reducesMotion = false;
  platform::SafeArea safeArea = {};

  /// If absent, the direction of the banner's texts.
  std::optional<platform::LayoutDirection> layoutDirection = {};

  /// The language of the banner as a BCP 47 tag such as "ar" or "pt-BR", used to shape text and break lines.
  /// It is not taken from the client: set it to what you pass to `setLanguage`. May be empty.
  std::string language = {};
};

struct SurfaceOptions {
  SurfaceSize size = {};
  SurfaceSettings settings = {};

  /// Fonts in order of preference. Each letter is drawn with the first font that has it, in the weight
  /// nearest to the one wanted. A font that cannot be read is left out, and one line is printed.
  std::vector<FontSource> fonts = {};

  /// Whether the system's fonts are used for letters that `fonts` lacks. Works on Linux, through fontconfig.
  bool usesSystemFonts = true;

  /// The largest width and height of a texture that the renderer can make; at least 512.
  std::int32_t maxTextureSize = 2048;

  /// Returns the positions in UTF-8 `text`, in bytes, at which a line may begin. Called on the main thread
  /// for texts in scripts whose words are not separated by blanks (Thai, Lao, Khmer, Burmese), for which a
  /// dictionary is needed. If absent, lines in these scripts end between any two characters that users
  /// perceive.
  std::function<std::vector<std::size_t>(std::string_view text, std::string_view language)> breakLines = {};

  /// The state of the host's surface when a banner is to be shown. If absent, the surface is in the
  /// foreground.
  std::function<platform::ActivationState()> activationState = {};

  /// Opens a URL outside the host. If absent, nothing is opened, and one line is printed.
  std::function<void(const URL&)> openURL = {};

  /// Called on the main thread when `ConsentSurface::needsFrame` becomes true, so that a host that draws only
  /// when something changes draws a frame. It must not call the surface.
  std::function<void()> onNeedsFrame = {};

  /// The time. If absent, the steady clock's.
  std::function<std::chrono::steady_clock::time_point()> now = {};
};

}  // namespace TalvoConsentSDK
