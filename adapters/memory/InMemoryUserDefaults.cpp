#include "adapters/memory/InMemoryUserDefaults.h"

#include <utility>

namespace TalvoConsentSDK {

Result<bool> InMemoryUserDefaults::replace(std::string_view key, const std::optional<Data>& expected,
                                           Data value) {
  const std::scoped_lock guard(lock_);
  if (getLocked<Data>(key) != expected) return false;
  values_.insert_or_assign(std::string(key), std::move(value));
  return true;
}

Result<void> InMemoryUserDefaults::remove(std::string_view key) {
  const std::scoped_lock guard(lock_);
  if (const auto entry = values_.find(key); entry != values_.end()) values_.erase(entry);
  return {};
}

Result<void> InMemoryUserDefaults::synchronize() {
  const std::scoped_lock guard(lock_);
  ++synchronizations_;
  return {};
}

std::map<std::string, InMemoryUserDefaults::Value, std::less<>> InMemoryUserDefaults::values() const {
  const std::scoped_lock guard(lock_);
  return values_;
}

int InMemoryUserDefaults::synchronizations() const {
  const std::scoped_lock guard(lock_);
  return synchronizations_;
}

Result<void> InMemoryUserDefaults::put(std::string_view key, Value value) {
  const std::scoped_lock guard(lock_);
  values_.insert_or_assign(std::string(key), std::move(value));
  return {};
}

}  // namespace TalvoConsentSDK
