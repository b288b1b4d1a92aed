#pragma once

// The seam for what is kept on the device: small values under string keys.

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Result.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// A binary value, distinct from a string with the same bytes.
struct Data {
  Data() {}
  explicit Data(std::string content) : bytes(std::move(content)) {}

  std::string bytes;

  friend bool operator==(const Data&, const Data&) = default;
};

/// One change of several that belong together: the value that `key` gets, or nothing to remove the key.
struct StoreChange {
  StoreChange(std::string changedKey, std::variant<std::monostate, Data, std::string> newValue)
      : key(std::move(changedKey)), value(std::move(newValue)) {}

  std::string key;
  std::variant<std::monostate, Data, std::string> value;
};

/// A device's key-value store. Safe to call from any thread; a value set is visible at once to every reader
/// of the process, and durable once `synchronize` has returned. A failed operation changes nothing. Also
/// called while a client is being created, so a store must not create one.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  /// The data under `key`; nothing when the key is missing or holds a string.
  virtual Result<std::optional<Data>> data(std::string_view key) = 0;

  /// The string under `key`; nothing when the key is missing or holds data.
  virtual Result<std::optional<std::string>> string(std::string_view key) = 0;

  /// Stores a value under `key` in place of whatever stood there.
  virtual Result<void> set(std::string_view key, Data value) = 0;
  virtual Result<void> set(std::string_view key, std::string value) = 0;

  /// Stores `value` if the data under `key` still is `expected`, as one step that no other writer can come
  /// between; tells whether it did.
  virtual Result<bool> replace(std::string_view key, const std::optional<Data>& expected, Data value) = 0;

  /// Removes the key and its value, if any.
  virtual Result<void> remove(std::string_view key) = 0;

  /// Makes all of the changes or, should it fail, none, as one step that no reader or writer can come
  /// between. A store without transactions may keep this default, which makes one change after the other in
  /// the order given and stops at the first that fails; callers order them so that nothing is lost then.
  virtual Result<void> commit(const std::vector<StoreChange>& changes);

  /// Makes everything set and removed so far durable.
  virtual Result<void> synchronize() = 0;
};

}  // namespace platform
}  // namespace TalvoConsentSDK
