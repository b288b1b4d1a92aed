#pragma once

// The seam for what is stored on the device: small values under string keys.

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

/// One of several changes that are made together: the new value of `key`, or `std::monostate` to remove the
/// key.
struct StoreChange {
  StoreChange(std::string changedKey, std::variant<std::monostate, Data, std::string> newValue)
      : key(std::move(changedKey)), value(std::move(newValue)) {}

  std::string key;
  std::variant<std::monostate, Data, std::string> value;
};

/// A device's key-value store. Safe to call from any thread. A new value is visible at once to every reader
/// in the process, and durable once `synchronize` has returned without an error. After a failed
/// `synchronize`, what was set stays visible. Any other failed operation changes nothing. The store is also
/// called while a client is being created, so it must not create one.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  /// Returns the data under `key`; nothing if the key is missing or holds a string.
  virtual Result<std::optional<Data>> data(std::string_view key) = 0;

  /// Returns the string under `key`; nothing if the key is missing or holds data.
  virtual Result<std::optional<std::string>> string(std::string_view key) = 0;

  /// Stores a value under `key`, replacing any value of either kind.
  virtual Result<void> set(std::string_view key, Data value) = 0;
  virtual Result<void> set(std::string_view key, std::string value) = 0;

  /// Stores `value` if the data under `key` is still `expected`, in one step that no other writer can
  /// interrupt. Returns whether it did. If `expected` is absent, the key must be missing or hold a string,
  /// which is then replaced.
  virtual Result<bool> replace(std::string_view key, const std::optional<Data>& expected, Data value) = 0;

  /// Removes the key and its value, if any.
  virtual Result<void> remove(std::string_view key) = 0;

  /// Makes all of the changes, or none if it fails, in one step that no reader or writer can interrupt. A
  /// store without transactions may keep this default, which makes one change after the other in the given
  /// order and stops at the first that fails; callers order the changes so that nothing is lost in that case.
  virtual Result<void> commit(const std::vector<StoreChange>& changes);

  /// Makes everything set and removed so far durable.
  virtual Result<void> synchronize() = 0;
};

}  // namespace platform
}  // namespace TalvoConsentSDK
