#pragma once

// What is kept on the device for one site: the consent, a consent set aside, and who the person is.

#include <memory>
#include <optional>
#include <string>

#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/platform/UserDefaults.h"

namespace TalvoConsentSDK {

/// A consent and the data that stands for it in the store, where damaged data stands for no consent. One that
/// is not from the store has no data until it is saved.
struct KeptConsent {
  std::optional<BasicConsent> value;
  std::optional<platform::Data> data;
  bool isUnknown = false;  // the store has failed, so that there may be one
};

/// Who is identified; no value for nobody in particular.
struct KeptUser {
  std::optional<std::string> value;
  bool isUnknown = false;  // the store has failed, so that there may be one
};

/// All that is kept for a site.
struct KeptValues {
  KeptConsent consent;
  KeptConsent original;  // kept aside while the person is identified
  KeptUser user;

  bool isUnknown() const { return consent.isUnknown || original.isUnknown || user.isUnknown; }
};

/// A site's values in the device's store. As safe to call from any thread as the store is. Nothing throws,
/// also when the store does: what cannot be read counts as absent and what cannot be written leaves the
/// stored value as it was; either prints one line. There is no way to remove the current consent, only to
/// overwrite it.
class ConsentStorage {
 public:
  ConsentStorage(const std::string& siteId, std::shared_ptr<platform::UserDefaults> userDefaults);

  /// Where a site's consent is stored.
  static std::string consentKey(const std::string& siteId);

  std::optional<BasicConsent> loadConsent() const;

  /// Tells whether the consent now is on the device.
  bool saveConsent(const BasicConsent& consent);

  /// The consent kept aside while the person is identified.
  std::optional<BasicConsent> loadOriginalConsent() const;
  void saveOriginalConsent(const BasicConsent& consent);
  void removeOriginalConsent();

  std::optional<std::string> loadUserId() const;
  void saveUserId(const std::string& userId);
  void removeUserId();

  /// All values; of each that cannot be read one line is printed.
  KeptValues load() const;

  /// Stores in one commit how `after` differs from `before`, which was loaded; what is unknown in `after`
  /// stays as it is, and so does a consent that `after` lacks. Also when a store without commits is
  /// interrupted, an original stays until the consent is as it should be. Tells whether it succeeded, and
  /// fills in the data of new consents.
  bool save(const KeptValues& before, KeptValues& after);

  /// Saves `consent` unless the stored data is no longer `expected`, for a consent that must not overrule one
  /// that somebody has chosen meanwhile; gives the data saved.
  std::optional<platform::Data> saveConsentIfStill(const std::optional<platform::Data>& expected,
                                                   const BasicConsent& consent);

 private:
  KeptConsent load(const std::string& key, const char* failure) const;
  KeptUser loadUser() const;
  bool save(const std::string& key, const BasicConsent& consent, const char* failure);
  bool commit(const Result<void>& written, const char* failure);

  const std::shared_ptr<platform::UserDefaults> userDefaults_;
  const std::string storageKey_;
  const std::string userIdKey_;
  const std::string originalConsentKey_;
};

}  // namespace TalvoConsentSDK
