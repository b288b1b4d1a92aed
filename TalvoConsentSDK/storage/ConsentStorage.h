#pragma once

// What is kept on the device for one site: the consent, a consent set aside, and who the person is.

#include <memory>
#include <optional>
#include <string>

#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/platform/UserDefaults.h"

namespace TalvoConsentSDK {

/// A site's values in the device's store. As safe to call from any thread as the store is. Nothing reports an
/// error to its caller: what cannot be read counts as absent and what cannot be written leaves the stored
/// value as it was; either prints one line. There is no way to remove the current consent, only to overwrite
/// it.
class ConsentStorage {
 public:
  ConsentStorage(const std::string& siteId, std::shared_ptr<UserDefaults> userDefaults);

  std::optional<BasicConsent> loadConsent() const;
  void saveConsent(const BasicConsent& consent);

  /// The consent kept aside while the person is identified.
  std::optional<BasicConsent> loadOriginalConsent() const;
  void saveOriginalConsent(const BasicConsent& consent);
  void removeOriginalConsent();

  std::optional<std::string> loadUserId() const;
  void saveUserId(const std::string& userId);
  void removeUserId();

  /// What stands under the consent's key, readable or not; an error when the store cannot tell.
  Result<std::optional<Data>> consentData() const;

  /// Saves `consent` unless the stored data is no longer `expected`: for a consent that nobody chose and that
  /// must not overrule one that somebody has chosen meanwhile.
  void saveConsentIfStill(const std::optional<Data>& expected, const BasicConsent& consent);

 private:
  std::optional<BasicConsent> load(const std::string& key, const char* failure) const;
  void save(const std::string& key, const BasicConsent& consent, const char* failure);
  void commit(const Result<void>& written, const char* failure);

  const std::shared_ptr<UserDefaults> userDefaults_;
  const std::string storageKey_;
  const std::string userIdKey_;
  const std::string originalConsentKey_;
};

}  // namespace TalvoConsentSDK
