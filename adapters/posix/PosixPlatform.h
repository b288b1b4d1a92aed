#pragma once

// A ready-made platform for programs without a toolkit: tools, servers, tests.

#include <cstddef>
#include <filesystem>
#include <memory>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Platform.h"

#include "adapters/curl/CurlURLSession.h"
#include "adapters/threads/MainQueue.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// The default path of an application's consent store: "consent.sqlite" in a folder named after the running
/// program, inside XDG_DATA_HOME or, if that is not an absolute path, in ".local/share" of the home folder.
/// Creates nothing. Throws a `PlatformError` if XDG_DATA_HOME is not an absolute path and there is no home
/// folder.
TALVO_EXPORT std::filesystem::path defaultStoreFile();

/// Makes a platform with HTTP through libcurl, consents in the SQLite file `store`, one thread for work and
/// one for callbacks, and lines printed to standard output. Replies are kept, as far as their headers allow,
/// in a file of at most `maxCacheBytes` whose name is that of `store` with ".cache" appended; 0 switches this
/// off. `mainQueue` is the main actor; the host's main loop must drain it. There are no windows. Throws what
/// `CurlURLSession` throws. A store that cannot be opened does not throw here; only its own operations fail.
///
///     const auto mainQueue = std::make_shared<MainQueue>();
///     Platform::install(makePosixPlatform(mainQueue));
TALVO_EXPORT Platform makePosixPlatform(std::shared_ptr<MainQueue> mainQueue,
                                        const std::filesystem::path& store = defaultStoreFile(),
                                        const CurlOptions& options = {},
                                        std::size_t maxCacheBytes = 10'000'000);

}  // namespace TalvoConsentSDK
