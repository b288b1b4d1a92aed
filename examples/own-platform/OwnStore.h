#pragma once

// The host's own store: a file that is read once, and replaced as a whole by each change. A second process
// would not see the changes of this one. A real store would also set a damaged file aside.

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <TalvoConsentSDK/platform/UserDefaults.h>
#include <fcntl.h>
#include <unistd.h>

namespace own {
using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;

class OwnStore : public platform::UserDefaults {
  using Value = std::variant<std::monostate, Data, std::string>;

 public:
  // Throws if the file exists but cannot be read, because the next save would replace it.
  explicit OwnStore(std::filesystem::path file) : file_(std::move(file)) {
    std::ifstream in(file_, std::ios::binary);
    if (!in && std::filesystem::exists(file_)) throw std::runtime_error("The store cannot be read");
    char kind = 0;  // an entry: D (data) or S (string), two lengths and a line end, the key, the value
    for (std::size_t keySize = 0, size = 0; in >> kind >> keySize >> size && in.get() == '\n';) {
      std::string key(keySize, '\0'), value(size, '\0');
      if (!in.read(key.data(), std::ssize(key)).read(value.data(), std::ssize(value))) break;
      values_[key] = kind == 'D' ? Value(Data(value)) : Value(value);
    }
  }

  Result<std::optional<Data>> data(std::string_view key) override { return get<Data>(key); }
  Result<std::optional<std::string>> string(std::string_view key) override { return get<std::string>(key); }
  Result<void> set(std::string_view key, Data value) override { return commit({{std::string(key), value}}); }
  Result<void> set(std::string_view key, std::string value) override {
    return commit({{std::string(key), value}});
  }
  Result<void> remove(std::string_view key) override {
    return commit({{std::string(key), std::monostate()}});
  }

  Result<bool> replace(std::string_view key, const std::optional<Data>& expected, Data value) override {
    const std::scoped_lock guard(lock_);
    if (*get<Data>(key) != expected) return false;
    const auto stored = set(key, std::move(value));
    return stored ? Result<bool>(true) : stored.error();
  }

  // Once the file is replaced, killing the process loses nothing.
  Result<void> commit(const std::vector<StoreChange>& changes) override {
    const std::scoped_lock guard(lock_);
    Values changed = values_;
    for (const auto& [key, value] : changes) changed[key] = value;
    std::erase_if(changed,
                  [](const auto& entry) { return std::holds_alternative<std::monostate>(entry.second); });
    const std::filesystem::path fresh = file_.string() + ".new";
    std::ofstream out(fresh, std::ios::binary);
    for (const auto& [key, value] : changed) {
      const Data* const data = std::get_if<Data>(&value);
      const std::string& bytes = data ? data->bytes : std::get<std::string>(value);
      out << (data ? "D " : "S ") << key.size() << ' ' << bytes.size() << '\n' << key << bytes;
    }
    out.close();
    if (!out || std::rename(fresh.c_str(), file_.c_str()) != 0) return failure("The file cannot be written");
    values_ = std::move(changed);
    return {};
  }

  // Flushes the file and its folder to the disk, so that a power cut loses nothing either.
  Result<void> synchronize() override {
    const std::scoped_lock guard(lock_);
    for (const auto& path : {file_, std::filesystem::absolute(file_).parent_path()}) {
      const int opened = open(path.c_str(), O_RDONLY | O_CLOEXEC);
      if (opened < 0 && errno == ENOENT) continue;  // nothing has been stored yet
      const bool isFlushed = opened >= 0 && fsync(opened) == 0;
      if (opened >= 0) close(opened);
      if (!isFlushed) return failure("The file cannot be flushed");
    }
    return {};
  }

 private:
  using Values = std::map<std::string, Value, std::less<>>;

  static PlatformError failure(const char* what) { return {"OwnStore", 1, what}; }

  template <class T>
  Result<std::optional<T>> get(std::string_view key) {
    const std::scoped_lock guard(lock_);
    const auto entry = values_.find(key);
    if (entry == values_.end() || !std::holds_alternative<T>(entry->second)) return std::optional<T>();
    return std::optional<T>(std::get<T>(entry->second));
  }

  const std::filesystem::path file_;
  std::recursive_mutex lock_;
  Values values_;
};

}  // namespace own
