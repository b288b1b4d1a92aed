#pragma once

// Keeps a cache's replies in memory.

#include <cstddef>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/CacheStorage.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Thread-safe. No operation fails.
class MemoryCacheStorage : public platform::CacheStorage {
 public:
  /// Keeps entries of at most `maxBytes` in total, and none that is larger than half of that.
  explicit MemoryCacheStorage(std::size_t maxBytes = 10'000'000) : maxBytes_(maxBytes) {}

  Result<std::optional<platform::CacheEntry>> read(std::string_view key) override;
  Result<void> write(std::string_view key, const platform::CacheEntry& entry) override;
  Result<void> replaceHead(std::string_view key, std::string_view former, std::string_view head) override;
  Result<void> remove(std::string_view key) override;

 private:
  using Entries = std::list<std::pair<std::string, platform::CacheEntry>>;  // most recently used first

  void put(std::string_view key, platform::CacheEntry entry);
  void erase(Entries::iterator entry);

  const std::size_t maxBytes_;
  std::mutex lock_;
  Entries entries_;
  std::map<std::string, Entries::iterator, std::less<>> byKey_;
  std::size_t bytes_ = 0;
};

}  // namespace TalvoConsentSDK
