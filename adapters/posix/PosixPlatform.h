#pragma once

// A ready-made platform for programs without a toolkit: tools, servers, tests.

#include <filesystem>
#include <memory>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Platform.h"

#include "adapters/curl/CurlURLSession.h"
#include "adapters/threads/MainQueue.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Where an application's consents are kept unless it says otherwise: "consent.sqlite" in a folder that is
/// named after the running program, inside XDG_DATA_HOME or else ".local/share" of the home folder. Nothing
/// is created. Throws a `PlatformError` when the person has no home folder either.
TALVO_EXPORT std::filesystem::path defaultStoreFile();

/// HTTP through libcurl, consents in the SQLite file `store`, threads for work and for callbacks, lines on
/// standard output,
/// and `mainQueue` as the main actor, which the host's main loop drains. There are no windows. Throws what
/// `CurlURLSession` throws; a store that cannot be opened fails its own operations only.
///
///     const auto mainQueue = std::make_shared<MainQueue>();
///     Platform::install(makePosixPlatform(mainQueue));
TALVO_EXPORT Platform makePosixPlatform(std::shared_ptr<MainQueue> mainQueue,
                                        const std::filesystem::path& store = defaultStoreFile(),
                                        const CurlOptions& options = {});

}  // namespace TalvoConsentSDK
