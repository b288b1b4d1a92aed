#pragma once

// The host's own store: a file that is read once and replaced as a whole. A second process would not see the
// changes of this one.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>

#include <TalvoConsentSDK/platform/UserDefaults.h>

namespace own {
using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;

class OwnStore : public platform::UserDefaults {
  using Value = std::variant<Data, std::string>;

 public:
  // Throws if the file exists but cannot be read, because the next save would replace it.
  explicit OwnStore(std::filesystem::path file) : file_(std::move(file)) {
    std::ifstream in(file_, std::ios::binary);
    if (!in && std::filesystem::exists(file_)) throw std::runtime_error("The store cannot be read");
    std::string kind, key, value;  // an entry: D (data) or S (string), the key, the value
    while (in >> kind >> std::quoted(key) >> std::quoted(value)) {
      values_[key] = kind == "D" ? Value(Data(value)) : Value(value);
    }
  }

  Result<std::optional<Data>> data(std::string_view key) override { return get<Data>(key); }
  Result<std::optional<std::string>> string(std::string_view key) override { return get<std::string>(key); }
  Result<void> set(std::string_view key, Data value) override { return put(key, std::move(value)); }
  Result<void> set(std::string_view key, std::string value) override { return put(key, std::move(value)); }

  Result<bool> replace(std::string_view key, const std::optional<Data>& expected, Data value) override {
    const std::scoped_lock guard(lock_);
    return *get<Data>(key) == expected && put(key, std::move(value)).has_value();
  }

  Result<void> remove(std::string_view key) override {
    const std::scoped_lock guard(lock_);
    values_.erase(std::string(key));
    return {};
  }

  // To survive a power cut, a host must also flush the file to the disk here.
  Result<void> synchronize() override {
    const std::scoped_lock guard(lock_);
    const std::filesystem::path fresh = file_.string() + ".new";
    std::ofstream out(fresh, std::ios::binary);
    for (const auto& [key, value] : values_) {
      const Data* const data = std::get_if<Data>(&value);
      out << (data ? "D " : "S ") << std::quoted(key) << ' ';
      out << std::quoted(data ? data->bytes : std::get<std::string>(value)) << '\n';
    }
    out.close();
    if (out && std::rename(fresh.c_str(), file_.c_str()) == 0) return {};
    return PlatformError("OwnStore", 1, "The file cannot be written");
  }

 private:
  template <class T>
  Result<std::optional<T>> get(std::string_view key) {
    const std::scoped_lock guard(lock_);
    const auto entry = values_.find(key);
    if (entry == values_.end() || !std::holds_alternative<T>(entry->second)) return std::optional<T>();
    return std::optional<T>(std::get<T>(entry->second));
  }
  Result<void> put(std::string_view key, Value value) {
    const std::scoped_lock guard(lock_);
    values_[std::string(key)] = std::move(value);
    return {};
  }
  const std::filesystem::path file_;
  std::recursive_mutex lock_;
  std::map<std::string, Value, std::less<>> values_;
};

}  // namespace own
