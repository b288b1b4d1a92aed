#pragma once

// What the ready-made platforms put in front of their session. Not installed.

#include <cstddef>
#include <filesystem>
#include <memory>
#include <utility>

#include "TalvoConsentSDK/platform/URLSession.h"

#include "adapters/cache/CachingURLSession.h"
#include "adapters/sqlite/SQLiteCacheStorage.h"
#include "adapters/threads/BackgroundThread.h"

namespace TalvoConsentSDK {

/// The session behind a cache in a file beside `store`, which `executor` reads and writes; the session itself
/// if `maxBytes` is 0.
inline std::shared_ptr<platform::URLSession> cachedSession(
    std::shared_ptr<platform::URLSession> session, std::filesystem::path store, std::size_t maxBytes,
    std::shared_ptr<platform::Executor> executor = std::make_shared<BackgroundThread>()) {
  if (maxBytes == 0 || !store.has_filename()) return session;
  return std::make_shared<CachingURLSession>(
      std::move(session), std::make_shared<SQLiteCacheStorage>(store += ".cache", maxBytes),
      std::move(executor));
}

}  // namespace TalvoConsentSDK
