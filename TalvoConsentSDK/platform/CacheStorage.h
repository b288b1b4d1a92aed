#pragma once

// The seam for what an HTTP cache keeps. Only the cache uses it, not the library itself. A host can choose
// where the cache keeps its replies.

#include <optional>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Result.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// What is kept under one key: bytes that only the cache understands.
struct CacheEntry {
  std::string head;  // small; changes when the service confirms that the body is current
  std::string body;

  friend bool operator==(const CacheEntry&, const CacheEntry&) = default;
};

/// Keeps entries, one for each key, and forgets those used least recently when there is no more room. It may
/// forget any entry at any time, but every entry that it returns must have been written as a whole under the
/// same key. The cache calls it on one thread at a time and treats a failure as if nothing were kept.
class CacheStorage {
 public:
  virtual ~CacheStorage() = default;

  /// Returns the entry under `key`, and counts it as used.
  virtual Result<std::optional<CacheEntry>> read(std::string_view key) = 0;

  /// Replaces the entry under `key`. If the new entry cannot be kept, the former one must be gone.
  virtual Result<void> write(std::string_view key, const CacheEntry& entry) = 0;

  /// Replaces the head under `key` if it still is `former`, and otherwise does nothing.
  virtual Result<void> replaceHead(std::string_view key, std::string_view former, std::string_view head) = 0;

  /// Forgets the entry under `key`, if there is one.
  virtual Result<void> remove(std::string_view key) = 0;
};

}  // namespace platform
}  // namespace TalvoConsentSDK
