#pragma once

// The sample host's command line.

#include <QSize>
#include <QStringList>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/platform/Application.h"

namespace TalvoConsentHost {

enum class Toolkit {
  qt,    // a window
  draw,  // draw lists in memory, without a display
};

struct HostOptions {
  Toolkit toolkit = Toolkit::qt;
  std::string apiUrl = "http://127.0.0.1:8787";
  std::string site = "demo";
  std::string language = "en";
  std::filesystem::path store;
  std::filesystem::path certificates;  // of authorities to trust; empty: only the system's
  QSize size{390, 844};
  double pixelRatio = 0;            // 0: that of the screen
  std::optional<double> textScale;  // absent: as the system requests
  std::optional<TalvoConsentSDK::platform::LayoutDirection> layoutDirection;
  TalvoConsentSDK::platform::SafeArea safeArea;
  std::size_t maxCacheBytes = 10'000'000;  // 0: no cache
  bool highContrast = false;               // false: as the system requests
  bool reducesMotion = false;              // false: as the system requests
  std::optional<std::string> script;       // a file, or "-" for standard input
  bool isHidden = false;                   // as if in the background, without a window
  bool isEmpty = false;                    // an empty window, which is drawn before the client is created
};

/// Parses the arguments. For wrong arguments, and for --help, prints a text and ends the process.
HostOptions parseOptions(const QStringList& arguments);

}  // namespace TalvoConsentHost
