#include "adapters/cache/MemoryCacheStorage.h"

#include <iterator>

namespace TalvoConsentSDK {

using namespace platform;

namespace {

constexpr std::size_t overhead = 200;  // of the containers, for each entry

std::size_t sizeOf(std::string_view key, const CacheEntry& entry) {
  return 2 * key.size() + entry.head.size() + entry.body.size() + overhead;
}

}  // namespace

Result<std::optional<CacheEntry>> MemoryCacheStorage::read(std::string_view key) {
  const std::scoped_lock guard(lock_);
  const auto found = byKey_.find(key);
  if (found == byKey_.end()) return std::optional<CacheEntry>();
  entries_.splice(entries_.begin(), entries_, found->second);
  return std::optional(found->second->second);
}

Result<void> MemoryCacheStorage::write(std::string_view key, const CacheEntry& entry) {
  const std::scoped_lock guard(lock_);
  put(key, entry);
  return {};
}

Result<void> MemoryCacheStorage::replaceHead(std::string_view key, std::string_view former,
                                             std::string_view head) {
  const std::scoped_lock guard(lock_);
  const auto found = byKey_.find(key);
  if (found == byKey_.end() || found->second->second.head != former) return {};
  put(key, {std::string(head), found->second->second.body});
  return {};
}

Result<void> MemoryCacheStorage::remove(std::string_view key) {
  const std::scoped_lock guard(lock_);
  if (const auto found = byKey_.find(key); found != byKey_.end()) erase(found->second);
  return {};
}

void MemoryCacheStorage::put(std::string_view key, CacheEntry entry) {
  if (const auto found = byKey_.find(key); found != byKey_.end()) erase(found->second);
  const std::size_t size = sizeOf(key, entry);
  if (size > maxBytes_ / 2) return;
  while (bytes_ + size > maxBytes_) erase(std::prev(entries_.end()));
  bytes_ += size;
  entries_.emplace_front(key, std::move(entry));
  byKey_.emplace(key, entries_.begin());
}

void MemoryCacheStorage::erase(Entries::iterator entry) {
  bytes_ -= sizeOf(entry->first, entry->second);
  byKey_.erase(byKey_.find(entry->first));
  entries_.erase(entry);
}

}  // namespace TalvoConsentSDK
