#include "TalvoConsentSDK/storage/ConsentStorage.h"

#include <utility>

#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

constexpr const char* loadFailure = "⚠️ Failed to load consent from UserDefaults: ";
constexpr const char* saveFailure = "⚠️ Failed to save consent to UserDefaults: ";
constexpr const char* removeFailure = "⚠️ Failed to remove consent from UserDefaults: ";
constexpr const char* loadOriginalFailure = "⚠️ Failed to load original consent from UserDefaults: ";
constexpr const char* saveOriginalFailure = "⚠️ Failed to save original consent to UserDefaults: ";
constexpr const char* removeOriginalFailure = "⚠️ Failed to remove original consent from UserDefaults: ";
constexpr const char* loadUserFailure = "⚠️ Failed to load user identifier from UserDefaults: ";
constexpr const char* saveUserFailure = "⚠️ Failed to save user identifier to UserDefaults: ";
constexpr const char* removeUserFailure = "⚠️ Failed to remove user identifier from UserDefaults: ";

// Returns whether the operation succeeded; prints a line if it did not.
template <class T>
bool succeeded(const Result<T>& result, const char* failure) {
  if (!result) print(std::string(failure) + result.error().what());
  return result.has_value();
}

// Runs an operation on the host's store. If it throws, returns the exception as an Error.
template <class Operation>
auto attempt(const Operation& operation) -> decltype(operation()) {
  try {
    return operation();
  } catch (...) {
    return Error::current();
  }
}

// Encodes a consent that has no data yet. Returns whether this succeeded; prints a line if it did not.
bool encodeData(KeptConsent& kept, const char* failure) {
  if (!kept.value || kept.data) return true;
  auto json = JSONEncoder().encode(*kept.value);
  if (!succeeded(json, failure)) return false;
  kept.data = Data(*std::move(json));
  return true;
}

bool differs(const KeptConsent& after, const KeptConsent& before) {
  return !after.isUnknown && (before.isUnknown || after.data != before.data);
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

std::optional<BasicConsent> ConsentStorage::loadConsent() const {
  return loadKeptConsent().value;
}

KeptConsent ConsentStorage::loadKeptConsent() const {
  return load(storageKey_, loadFailure);
}

bool ConsentStorage::saveConsent(const BasicConsent& consent) {
  return save(storageKey_, consent, saveFailure);
}

std::optional<BasicConsent> ConsentStorage::loadOriginalConsent() const {
  return load(originalConsentKey_, loadOriginalFailure).value;
}

void ConsentStorage::saveOriginalConsent(const BasicConsent& consent) {
  save(originalConsentKey_, consent, saveOriginalFailure);
}

void ConsentStorage::removeOriginalConsent() {
  commit(attempt([&] { return userDefaults_->remove(originalConsentKey_); }), removeOriginalFailure);
}

std::optional<std::string> ConsentStorage::loadUserId() const {
  return loadUser().value;
}

void ConsentStorage::saveUserId(const std::string& userId) {
  commit(attempt([&] { return userDefaults_->set(userIdKey_, userId); }), saveUserFailure);
}

void ConsentStorage::removeUserId() {
  commit(attempt([&] { return userDefaults_->remove(userIdKey_); }), removeUserFailure);
}

KeptValues ConsentStorage::load() const {
  KeptValues kept;
  kept.consent = loadKeptConsent();
  kept.user = loadUser();
  kept.original = load(originalConsentKey_, loadOriginalFailure);
  return kept;
}

ConsentStorage::Saved ConsentStorage::save(const KeptValues& before, KeptValues& after) {
  if (!encodeData(after.consent, saveFailure) || !encodeData(after.original, saveOriginalFailure))
    return Saved::no;
  const bool setsConsent = after.consent.data && differs(after.consent, before.consent);
  const bool removesConsent = after.isErased && !after.consent.data && differs(after.consent, before.consent);
  const bool changesOriginal = differs(after.original, before.original);
  const std::optional<std::string>& newUser = after.user.value;
  const bool changesUser = !after.user.isUnknown && (before.user.isUnknown || newUser != before.user.value);

  std::vector<StoreChange> changes;
  const bool removesOriginal = changesOriginal && !after.original.data;
  if (removesOriginal && after.isErased) changes.emplace_back(originalConsentKey_, std::monostate());
  if (changesOriginal && after.original.data) {
    changes.emplace_back(originalConsentKey_, *after.original.data);
  } else if (!after.isErased && changesOriginal && setsConsent &&
             after.consent.data != before.original.data) {
    // The original is removed last. If the commit is interrupted before that, the original will be restored
    // later. Overwrite it with the new consent first, so that restoring it does not bring back an older one.
    changes.emplace_back(originalConsentKey_, *after.consent.data);
  }
  if (setsConsent) changes.emplace_back(storageKey_, *after.consent.data);
  if (removesConsent) changes.emplace_back(storageKey_, std::monostate());
  if (changesUser && newUser) changes.emplace_back(userIdKey_, *newUser);
  if (changesUser && !newUser) changes.emplace_back(userIdKey_, std::monostate());
  if (removesOriginal && !after.isErased) changes.emplace_back(originalConsentKey_, std::monostate());
  if (changes.empty() && !owesSynchronizing_) return Saved::durably;
  const bool savesOnlyOriginal = changesOriginal && !setsConsent;
  const char* const failure = after.isErased      ? removeFailure
                              : changesUser       ? newUser ? saveUserFailure : removeUserFailure
                              : savesOnlyOriginal ? saveOriginalFailure
                                                  : saveFailure;
  if (!changes.empty() && !succeeded(attempt([&] { return userDefaults_->commit(changes); }), failure))
    return Saved::no;
  return synchronize(failure) ? Saved::durably : Saved::notDurably;
}

std::optional<Data> ConsentStorage::saveConsentIfStill(const std::optional<Data>& expected,
                                                       const BasicConsent& consent) {
  KeptConsent kept{consent, {}};
  if (!encodeData(kept, saveFailure)) return std::nullopt;
  const auto replaced = attempt([&] { return userDefaults_->replace(storageKey_, expected, *kept.data); });
  if (!succeeded(replaced, saveFailure) || !*replaced) return std::nullopt;
  commit({}, saveFailure);
  return kept.data;
}

KeptConsent ConsentStorage::load(const std::string& key, const char* failure) const {
  KeptConsent loaded;
  auto data = attempt([&] { return userDefaults_->data(key); });
  loaded.isUnknown = !succeeded(data, failure);
  if (loaded.isUnknown || !*data) return loaded;
  loaded.data = *std::move(data);
  auto consent = JSONDecoder().decode<BasicConsent>(loaded.data->bytes);
  if (succeeded(consent, failure)) loaded.value = *std::move(consent);
  return loaded;
}

KeptUser ConsentStorage::loadUser() const {
  auto userId = attempt([&] { return userDefaults_->string(userIdKey_); });
  if (!succeeded(userId, loadUserFailure)) return {{}, true};
  return {*std::move(userId)};
}

bool ConsentStorage::save(const std::string& key, const BasicConsent& consent, const char* failure) {
  auto json = JSONEncoder().encode(consent);
  if (!succeeded(json, failure)) return false;
  return commit(attempt([&] { return userDefaults_->set(key, Data(*std::move(json))); }), failure);
}

bool ConsentStorage::commit(const Result<void>& written, const char* failure) {
  return succeeded(written, failure) && synchronize(failure);
}

bool ConsentStorage::synchronize(const char* failure) {
  owesSynchronizing_ = !succeeded(attempt([&] { return userDefaults_->synchronize(); }), failure);
  return !owesSynchronizing_;
}

}  // namespace TalvoConsentSDK
