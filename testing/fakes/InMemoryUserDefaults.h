#pragma once

// A device store that lives in memory.

#include <map>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/UserDefaults.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Keeps values until it is destroyed. No operation fails.
class InMemoryUserDefaults : public platform::UserDefaults {
 public:
  using Value = std::variant<platform::Data, std::string>;

  Result<std::optional<platform::Data>> data(std::string_view key) override {
    return get<platform::Data>(key);
  }
  Result<std::optional<std::string>> string(std::string_view key) override { return get<std::string>(key); }
  Result<void> set(std::string_view key, platform::Data value) override { return put(key, std::move(value)); }
  Result<void> set(std::string_view key, std::string value) override { return put(key, std::move(value)); }
  Result<bool> replace(std::string_view key, const std::optional<platform::Data>& expected,
                       platform::Data value) override;
  Result<void> remove(std::string_view key) override;
  Result<void> commit(const std::vector<platform::StoreChange>& changes) override;
  Result<void> synchronize() override;

  /// Everything stored now.
  std::map<std::string, Value, std::less<>> values() const;

  /// How often `synchronize` was called.
  int synchronizations() const;

 private:
  template <class T>
  std::optional<T> get(std::string_view key) const {
    const std::scoped_lock guard(lock_);
    return getLocked<T>(key);
  }

  template <class T>
  std::optional<T> getLocked(std::string_view key) const {
    const auto entry = values_.find(key);
    if (entry == values_.end() || !std::holds_alternative<T>(entry->second)) return std::nullopt;
    return std::get<T>(entry->second);
  }

  Result<void> put(std::string_view key, Value value);
  void eraseLocked(std::string_view key);

  mutable std::mutex lock_;
  std::map<std::string, Value, std::less<>> values_;
  int synchronizations_ = 0;
};

}  // namespace TalvoConsentSDK
