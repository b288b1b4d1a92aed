#pragma once

// The library on Qt, libcurl and SQLite, put together.

#include <filesystem>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Platform.h"

#include "adapters/qt/QtOptions.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// A platform for Qt hosts: `Platform::install(makeQtPlatform(store))`. Call it on the thread of the
/// QGuiApplication, once that exists. `store` is the file that consents are kept in; it is made when it is
/// first needed.
TALVO_EXPORT Platform makeQtPlatform(const std::filesystem::path& store, const QtOptions& options = {});

/// Puts Qt's windows into a platform whose other parts a host has chosen itself. Pictures are fetched with
/// the platform's own session and executors.
TALVO_EXPORT void addQtWindows(Platform& platform, const QtOptions& options);

}  // namespace TalvoConsentSDK
