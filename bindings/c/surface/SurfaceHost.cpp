#include "bindings/c/surface/SurfaceHost.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/base/URL.h"
#include "TalvoConsentSDK/platform/Printer.h"

#include "bindings/c/Boundary.h"

namespace TalvoConsentSDK::c {

using namespace platform;

namespace {

constexpr double maxSize = 16384;

// The sizes of the structures in version 1.0.0.
constexpr std::size_t firstSettings =
    offsetof(talvo_surface_settings, reserved) + sizeof(talvo_surface_settings::reserved);
constexpr std::size_t firstOptions =
    offsetof(talvo_surface_options, release) + sizeof(talvo_surface_options::release);

// Without padding at the end, a field added there always makes the structure larger, and `size` shows it.
static_assert(sizeof(talvo_surface_settings) == firstSettings);
static_assert(sizeof(talvo_surface_options) == firstOptions);

std::optional<LayoutDirection> directionOf(talvo_direction direction) {
  switch (direction) {
    case TALVO_DIRECTION_OF_TEXT:
      return std::nullopt;
    case TALVO_LEFT_TO_RIGHT:
      return LayoutDirection::leftToRight;
    case TALVO_RIGHT_TO_LEFT:
      return LayoutDirection::rightToLeft;
    default:
      refuse("direction", "is unknown");
  }
}

std::vector<FontSource> fontsOf(const talvo_surface_options& options) {
  std::vector<FontSource> fonts;
  if (options.font_count > 0) required(options.fonts, "fonts");
  for (std::size_t i = 0; i < options.font_count; ++i) {
    const talvo_font& font = options.fonts[i];
    if (font.bytes) {
      const auto* const bytes = static_cast<const char*>(font.bytes);
      fonts.push_back({.path = {}, .bytes = std::make_shared<const std::string>(bytes, font.length)});
    } else {
      fonts.push_back({.path = requiredText(font.path, "the path of a font")});
    }
  }
  return fonts;
}

}  // namespace

double inRange(double number, double least, double most, const char* name) {
  if (!(number >= least && number <= most)) refuse(name, "is out of range");  // NaN, too
  return number;
}

SurfaceSize surfaceSize(std::int32_t width, std::int32_t height, double scale) {
  inRange(width, 0, maxSize, "width");
  inRange(height, 0, maxSize, "height");
  return {width, height, scale == 0 ? 1 : inRange(scale, 0.1, 16, "scale")};
}

SurfaceSettings surfaceSettings(const talvo_surface_settings* settings) {
  const talvo_surface_settings given = copied(settings, firstSettings, "settings");
  SurfaceSettings result;
  if (given.text_scale != 0) result.textScale = inRange(given.text_scale, 0, 100, "text_scale");
  result.safeArea = {.top = inRange(given.safe_area_top, 0, maxSize, "safe_area_top"),
                     .left = inRange(given.safe_area_left, 0, maxSize, "safe_area_left"),
                     .bottom = inRange(given.safe_area_bottom, 0, maxSize, "safe_area_bottom"),
                     .right = inRange(given.safe_area_right, 0, maxSize, "safe_area_right")};
  result.layoutDirection = directionOf(given.direction);
  result.highContrast = given.high_contrast != 0;
  result.reducesMotion = given.reduces_motion != 0;
  if (given.language) result.language = given.language;
  return result;
}

talvo_surface_options copiedOptions(const talvo_surface_options* options) {
  return copied(options, firstOptions, "options");
}

template <class Answer, class Question>
Answer SurfaceHost::ask(Answer otherwise, const Question& question) const {
  const auto callbacks = callbacks_;  // the function may destroy the surface
  if (!callbacks) return otherwise;
  return askHost(std::move(otherwise),
                 [&] { return question(callbacks->functions, callbacks->userData.get()); });
}

void SurfaceHost::open(const talvo_surface_options& options) {
  callbacks_ =
      std::make_shared<const Callbacks>(Callbacks{options, owned(options.user_data, options.release)});
}

void SurfaceHost::needFrame() const {
  ask(false, [](const auto& host, void* userData) {
    if (host.on_needs_frame) host.on_needs_frame(userData);
    return true;
  });
}

SurfaceOptions SurfaceHost::surfaceOptions(const talvo_surface_options& options,
                                           const std::shared_ptr<SurfaceHost>& host) {
  SurfaceOptions result;
  result.size = surfaceSize(options.width, options.height, options.scale);
  if (options.settings) result.settings = surfaceSettings(options.settings);
  result.fonts = fontsOf(options);
  result.usesSystemFonts = options.without_system_fonts == 0;
  if (options.max_texture_size != 0) {
    result.maxTextureSize =
        static_cast<std::int32_t>(inRange(options.max_texture_size, 512, INT32_MAX, "max_texture_size"));
  }
  result.onNeedsFrame = [host] { host->needFrame(); };
  if (options.is_in_foreground) {
    result.activationState = [host] {
      const int isInForeground = host->ask(
          0, [](const auto& functions, void* userData) { return functions.is_in_foreground(userData); });
      return isInForeground ? ActivationState::foregroundActive : ActivationState::background;
    };
  }
  if (options.open_url) {
    result.openURL = [host](const URL& url) {
      host->ask(false, [&](const auto& functions, void* userData) {
        functions.open_url(url.text().c_str(), userData);
        return true;
      });
    };
  }
  if (options.break_lines) {
    result.breakLines = [host](std::string_view text, std::string_view language) {
      return host->ask(std::vector<std::size_t>(), [&](const auto& functions, void* userData) {
        const std::string textCopy(text), languageCopy(language);
        std::vector<std::size_t> positions(text.size());
        const std::size_t count = functions.break_lines(textCopy.c_str(), textCopy.size(),
                                                        languageCopy.c_str(), positions.data(), userData);
        positions.resize(std::min(count, positions.size()));
        return positions;
      });
    };
  }
  return result;
}

}  // namespace TalvoConsentSDK::c
