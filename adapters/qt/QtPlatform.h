#pragma once

// Combines the library with Qt, libcurl and SQLite.

#include <filesystem>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Platform.h"

#include "adapters/qt/QtOptions.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Creates a platform for Qt hosts: `Platform::install(makeQtPlatform(store))`. Create the QGuiApplication
/// first, and call this on its thread. `store` is the file for the consents; it is created when it is first
/// needed. Replies are kept, as far as their headers allow, in a file beside it whose name is that of `store`
/// with ".cache" appended (`QtOptions::maxCacheBytes`).
TALVO_EXPORT Platform makeQtPlatform(const std::filesystem::path& store, const QtOptions& options = {});

/// Adds Qt's windows to a platform whose other parts the host chooses itself. They load pictures with the
/// session and the executors that `platform` has at the time of the call.
TALVO_EXPORT void addQtWindows(Platform& platform, const QtOptions& options);

}  // namespace TalvoConsentSDK
