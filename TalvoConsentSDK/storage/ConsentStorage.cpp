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

// A host's store that throws has failed.
template <class Operation>
auto attempt(const Operation& operation) -> decltype(operation()) {
  try {
    return operation();
  } catch (...) {
    return Error::current();
  }
}

std::optional<BasicConsent> decoded(const std::optional<Data>& data, const char* failure) {
  if (!data) return std::nullopt;
  auto consent = JSONDecoder().decode<BasicConsent>(data->bytes);
  if (!succeeded(consent, failure)) return std::nullopt;
  return *std::move(consent);
}

}  // namespace

ConsentStorage::ConsentStorage(const std::string& siteId, std::shared_ptr<UserDefaults> userDefaults)
    : userDefaults_(std::move(userDefaults)),
      storageKey_(consentKey(siteId)),
      userIdKey_("com.talvo.consent.userId." + siteId),
      originalConsentKey_("com.talvo.consent.originalConsent." + siteId) {}

std::string ConsentStorage::consentKey(const std::string& siteId) {
  return "com.talvo.consent.basicConsent." + siteId;
}

Loaded<BasicConsent> ConsentStorage::loadConsent() const {
  return load(storageKey_, loadFailure);
}

bool ConsentStorage::saveConsent(const BasicConsent& consent) {
  return save(storageKey_, consent, saveFailure);
}

Loaded<BasicConsent> ConsentStorage::loadOriginalConsent() const {
  return load(originalConsentKey_, loadOriginalFailure);
}

void ConsentStorage::saveOriginalConsent(const BasicConsent& consent) {
  save(originalConsentKey_, consent, saveOriginalFailure);
}

void ConsentStorage::removeOriginalConsent() {
  commit(attempt([&] { return userDefaults_->remove(originalConsentKey_); }), removeOriginalFailure);
}

Loaded<std::string> ConsentStorage::loadUserId() const {
  Loaded<std::string> loaded;
  auto userId = attempt([&] { return userDefaults_->string(userIdKey_); });
  loaded.isUnknown = !succeeded(userId, loadUserFailure);
  if (!loaded.isUnknown) loaded = *std::move(userId);
  return loaded;
}

void ConsentStorage::saveUserId(const std::string& userId) {
  commit(attempt([&] { return userDefaults_->set(userIdKey_, userId); }), saveUserFailure);
}

void ConsentStorage::removeUserId() {
  commit(attempt([&] { return userDefaults_->remove(userIdKey_); }), removeUserFailure);
}

Result<ConsentStorage::Snapshot> ConsentStorage::consentSnapshot() const {
  auto data = attempt([&] { return userDefaults_->data(storageKey_); });
  if (!data) return data.error();
  auto consent = decoded(*data, loadFailure);
  return Snapshot{*std::move(data), std::move(consent)};
}

void ConsentStorage::saveConsentIfStill(const std::optional<Data>& expected, const BasicConsent& consent) {
  auto json = JSONEncoder().encode(consent);
  if (!succeeded(json, saveFailure)) return;
  const auto replaced =
      attempt([&] { return userDefaults_->replace(storageKey_, expected, Data(*std::move(json))); });
  if (succeeded(replaced, saveFailure) && *replaced) commit({}, saveFailure);
}

Loaded<BasicConsent> ConsentStorage::load(const std::string& key, const char* failure) const {
  Loaded<BasicConsent> loaded;
  const auto data = attempt([&] { return userDefaults_->data(key); });
  loaded.isUnknown = !succeeded(data, failure);
  if (!loaded.isUnknown) loaded = decoded(*data, failure);
  return loaded;
}

bool ConsentStorage::save(const std::string& key, const BasicConsent& consent, const char* failure) {
  auto json = JSONEncoder().encode(consent);
  if (!succeeded(json, failure)) return false;
  return commit(attempt([&] { return userDefaults_->set(key, Data(*std::move(json))); }), failure);
}

bool ConsentStorage::commit(const Result<void>& written, const char* failure) {
  return succeeded(written, failure) &&
         succeeded(attempt([&] { return userDefaults_->synchronize(); }), failure);
}

}  // namespace TalvoConsentSDK
