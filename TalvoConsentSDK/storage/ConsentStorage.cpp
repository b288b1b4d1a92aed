#include "TalvoConsentSDK/storage/ConsentStorage.h"

#include <utility>

#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

namespace {

constexpr const char* loadFailure = "⚠️ Failed to load consent from UserDefaults: ";
constexpr const char* saveFailure = "⚠️ Failed to save consent to UserDefaults: ";
constexpr const char* loadOriginalFailure = "⚠️ Failed to load original consent from UserDefaults: ";
constexpr const char* saveOriginalFailure = "⚠️ Failed to save original consent to UserDefaults: ";
constexpr const char* removeOriginalFailure = "⚠️ Failed to remove original consent from UserDefaults: ";
constexpr const char* loadUserFailure = "⚠️ Failed to load user identifier from UserDefaults: ";
constexpr const char* saveUserFailure = "⚠️ Failed to save user identifier to UserDefaults: ";
constexpr const char* removeUserFailure = "⚠️ Failed to remove user identifier from UserDefaults: ";

// Tells whether it succeeded, and prints a line if not.
template <class T>
bool succeeded(const Result<T>& result, const char* failure) {
  if (!result) print(std::string(failure) + result.error().what());
  return result.has_value();
}

}  // namespace

ConsentStorage::ConsentStorage(const std::string& siteId, std::shared_ptr<UserDefaults> userDefaults)
    : userDefaults_(std::move(userDefaults)),
      storageKey_("com.talvo.consent.basicConsent." + siteId),
      userIdKey_("com.talvo.consent.userId." + siteId),
      originalConsentKey_("com.talvo.consent.originalConsent." + siteId) {}

std::optional<BasicConsent> ConsentStorage::loadConsent() const {
  return load(storageKey_, loadFailure);
}

void ConsentStorage::saveConsent(const BasicConsent& consent) {
  save(storageKey_, consent, saveFailure);
}

std::optional<BasicConsent> ConsentStorage::loadOriginalConsent() const {
  return load(originalConsentKey_, loadOriginalFailure);
}

void ConsentStorage::saveOriginalConsent(const BasicConsent& consent) {
  save(originalConsentKey_, consent, saveOriginalFailure);
}

void ConsentStorage::removeOriginalConsent() {
  commit(userDefaults_->remove(originalConsentKey_), removeOriginalFailure);
}

std::optional<std::string> ConsentStorage::loadUserId() const {
  auto userId = userDefaults_->string(userIdKey_);
  if (!succeeded(userId, loadUserFailure)) return std::nullopt;
  return *std::move(userId);
}

void ConsentStorage::saveUserId(const std::string& userId) {
  commit(userDefaults_->set(userIdKey_, userId), saveUserFailure);
}

void ConsentStorage::removeUserId() {
  commit(userDefaults_->remove(userIdKey_), removeUserFailure);
}

Result<std::optional<Data>> ConsentStorage::consentData() const {
  return userDefaults_->data(storageKey_);
}

void ConsentStorage::saveConsentIfStill(const std::optional<Data>& expected, const BasicConsent& consent) {
  auto json = JSONEncoder().encode(consent);
  if (!succeeded(json, saveFailure)) return;
  const auto replaced = userDefaults_->replace(storageKey_, expected, Data(*std::move(json)));
  if (succeeded(replaced, saveFailure) && *replaced) succeeded(userDefaults_->synchronize(), saveFailure);
}

std::optional<BasicConsent> ConsentStorage::load(const std::string& key, const char* failure) const {
  const auto data = userDefaults_->data(key);
  if (!succeeded(data, failure) || !*data) return std::nullopt;
  auto consent = JSONDecoder().decode<BasicConsent>((*data)->bytes);
  if (!succeeded(consent, failure)) return std::nullopt;
  return *std::move(consent);
}

void ConsentStorage::save(const std::string& key, const BasicConsent& consent, const char* failure) {
  auto json = JSONEncoder().encode(consent);
  if (!succeeded(json, failure)) return;
  commit(userDefaults_->set(key, Data(*std::move(json))), failure);
}

void ConsentStorage::commit(const Result<void>& written, const char* failure) {
  if (succeeded(written, failure)) succeeded(userDefaults_->synchronize(), failure);
}

}  // namespace TalvoConsentSDK
