#include "testing/fakes/InMemoryUserDefaults.h"

#include <utility>

namespace TalvoConsentSDK {

using namespace platform;

Result<bool> InMemoryUserDefaults::replace(std::string_view key, const std::optional<Data>& expected,
                                           Data value) {
  const std::scoped_lock guard(lock_);
  if (getLocked<Data>(key) != expected) return false;
  values_.insert_or_assign(std::string(key), std::move(value));
  return true;
}

Result<void> InMemoryUserDefaults::remove(std::string_view key) {
  const std::scoped_lock guard(lock_);
  eraseLocked(key);
  return {};
}

Result<void> InMemoryUserDefaults::commit(const std::vector<StoreChange>& changes) {
  const std::scoped_lock guard(lock_);
  for (const StoreChange& change : changes) {
    if (const auto* data = std::get_if<Data>(&change.value)) {
      values_.insert_or_assign(change.key, *data);
    } else if (const auto* text = std::get_if<std::string>(&change.value)) {
      values_.insert_or_assign(change.key, *text);
    } else {
      eraseLocked(change.key);
    }
  }
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

void InMemoryUserDefaults::eraseLocked(std::string_view key) {
  if (const auto entry = values_.find(key); entry != values_.end()) values_.erase(entry);
}

}  // namespace TalvoConsentSDK
