#pragma once

// The values stored on the device for one site: the consent, an original consent that is set aside while a
// user is identified, and the user.

#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/platform/UserDefaults.h"

namespace TalvoConsentSDK {

/// A consent and the data it is stored as. If the data cannot be decoded, `value` is empty. If the consent
/// was not read from the store, `data` is empty until the consent is saved.
struct KeptConsent {
  std::optional<BasicConsent> value;
  std::optional<platform::Data> data;
  bool isUnknown = false;  // the store failed: there may be a consent
};

/// The identified user; no value if nobody is identified.
struct KeptUser {
  std::optional<std::string> value;
  bool isUnknown = false;  // the store failed: there may be a user
};

/// All values stored for a site.
struct KeptValues {
  KeptConsent consent;
  KeptConsent original;  // set aside while a user is identified
  KeptUser user;
  bool isErased = false;  // removes what the store held before

  bool isUnknown() const { return consent.isUnknown || original.isUnknown || user.isUnknown; }
};

/// A site's values in the device's store. As thread-safe as the store is. Nothing throws, even if the store
/// does. A value that cannot be read counts as absent; `load` marks it as unknown if the store failed. A
/// failed write leaves the stored values as they were, but a store without transactions may have made part of
/// a `save`. Either failure prints one line. The current consent can be overwritten, but only erasing removes
/// it.
class ConsentStorage {
 public:
  ConsentStorage(const std::string& siteId, std::shared_ptr<platform::UserDefaults> userDefaults);

  /// Returns the key under which a site's consent is stored.
  static std::string consentKey(const std::string& siteId);

  std::optional<BasicConsent> loadConsent() const;
  KeptConsent loadKeptConsent() const;

  /// Returns whether the consent has been stored.
  bool saveConsent(const BasicConsent& consent);

  /// The consent set aside while a user is identified.
  std::optional<BasicConsent> loadOriginalConsent() const;
  void saveOriginalConsent(const BasicConsent& consent);
  void removeOriginalConsent();

  std::optional<std::string> loadUserId() const;
  void saveUserId(const std::string& userId);
  void removeUserId();

  /// Loads all values; prints one line for each that cannot be read.
  KeptValues load() const;

  /// Writes the differences between `before`, which was loaded, and `after` in one commit. Values that are
  /// unknown in `after` stay as they are. So does the stored consent if `after` has none, unless `after` is
  /// erased. In case a store without transactions is interrupted, the original is removed last, only after
  /// the consent has been written; but if it is erased, it goes first, so that it cannot be restored.
  /// Sets the data of new consents. If an earlier write could not be made durable, this also tries that
  /// again, even if there are no differences.
  enum class Saved { no, notDurably, durably };
  Saved save(const KeptValues& before, KeptValues& after);

  /// Whether the last attempt to make the writes durable failed.
  bool owesSynchronizing() const { return owesSynchronizing_; }

  /// Saves `consent` only if the stored data is still `expected`, so that it does not replace a consent
  /// chosen in the meantime. Returns the data it saved; nothing if it saved none.
  std::optional<platform::Data> saveConsentIfStill(const std::optional<platform::Data>& expected,
                                                   const BasicConsent& consent);

 private:
  KeptConsent load(const std::string& key, const char* failure) const;
  KeptUser loadUser() const;
  bool save(const std::string& key, const BasicConsent& consent, const char* failure);
  bool commit(const Result<void>& written, const char* failure);
  bool synchronize(const char* failure);

  const std::shared_ptr<platform::UserDefaults> userDefaults_;
  const std::string storageKey_;
  const std::string userIdKey_;
  const std::string originalConsentKey_;
  std::atomic<bool> owesSynchronizing_ = false;
};

}  // namespace TalvoConsentSDK
