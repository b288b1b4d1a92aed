#pragma once

// The sample host's command line.

#include <QSize>
#include <QStringList>
#include <filesystem>
#include <optional>
#include <string>

#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/platform/Application.h"

namespace TalvoConsentHost {

struct HostOptions {
  std::string apiUrl = "http://127.0.0.1:8787";
  std::string site = "demo";
  std::string language = "en";
  std::filesystem::path store;  // empty: the application's own
  QSize size{390, 844};
  double pixelRatio = 0;  // 0: the screen's
  double textScale = 1;
  std::optional<TalvoConsentSDK::platform::LayoutDirection> layoutDirection;
  TalvoConsentSDK::platform::Insets safeArea;
  bool highContrast = false;  // else as the system asks for
  bool reducesMotion = false;
  std::optional<std::string> script;  // a file, or "-" for standard input
  bool isHidden = false;              // as in the background: the window is not shown
};

/// Reads the arguments; on a mistake, or when help is asked for, prints what is to be said and ends the
/// process.
HostOptions parseOptions(const QStringList& arguments);

}  // namespace TalvoConsentHost
