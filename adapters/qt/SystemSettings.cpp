#include "adapters/qt/SystemSettings.h"

#include <algorithm>
#include <cmath>

namespace TalvoConsentSDK {

namespace {

constexpr double minTextScale = 0.5;
constexpr double maxTextScale = 3;

}  // namespace

void SystemSettings::set(DisplayPreferences preferences) {
  std::optional<double>& scale = preferences.textScale;
  if (scale && std::isnan(*scale)) scale.reset();
  if (scale) scale = std::clamp(*scale, minTextScale, maxTextScale);
  if (preferences == preferences_) return;
  preferences_ = preferences;
  emit changed();
}

}  // namespace TalvoConsentSDK
