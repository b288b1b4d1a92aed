#pragma once

// What is kept on the device for one site: the consent, a consent set aside, and who the person is.

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/platform/UserDefaults.h"

namespace TalvoConsentSDK {

/// What a load found: nothing also when the value is damaged or the store has failed.
template <class T>
struct Loaded : std::optional<T> {
  using std::optional<T>::optional;
  Loaded(std::optional<T> found) : std::optional<T>(std::move(found)) {}

  bool isUnknown = false;  // the store has failed, so that there may be a value
};

/// A site's values in the device's store. As safe to call from any thread as the store is. Nothing throws,
/// also when the store does: what cannot be read counts as absent and what cannot be written leaves the
/// stored value as it was; either prints one line. There is no way to remove the current consent, only to
/// overwrite it.
class ConsentStorage {
 public:
  ConsentStorage(const std::string& siteId, std::shared_ptr<UserDefaults> userDefaults);

  /// Where a site's consent is stored.
  static std::string consentKey(const std::string& siteId);

  Loaded<BasicConsent> loadConsent() const;

  /// Tells whether the consent now is on the device.
  bool saveConsent(const BasicConsent& consent);

  /// The consent kept aside while the person is identified.
  Loaded<BasicConsent> loadOriginalConsent() const;
  void saveOriginalConsent(const BasicConsent& consent);
  void removeOriginalConsent();

  Loaded<std::string> loadUserId() const;
  void saveUserId(const std::string& userId);
  void removeUserId();

  /// One reading of the consent: what stands under its key, and what that says; nothing when it is damaged.
  struct Snapshot {
    std::optional<Data> data;
    std::optional<BasicConsent> consent;
  };

  /// The error, which is not printed, when the store cannot tell.
  Result<Snapshot> consentSnapshot() const;

  /// Saves `consent` unless the stored data is no longer `expected`: for a consent that nobody chose and that
  /// must not overrule one that somebody has chosen meanwhile.
  void saveConsentIfStill(const std::optional<Data>& expected, const BasicConsent& consent);

 private:
  Loaded<BasicConsent> load(const std::string& key, const char* failure) const;
  bool save(const std::string& key, const BasicConsent& consent, const char* failure);
  bool commit(const Result<void>& written, const char* failure);

  const std::shared_ptr<UserDefaults> userDefaults_;
  const std::string storageKey_;
  const std::string userIdKey_;
  const std::string originalConsentKey_;
};

}  // namespace TalvoConsentSDK
