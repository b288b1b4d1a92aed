#include "TalvoConsentSDK/core/ConsentLedger.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "TalvoConsentSDK/core/IdentityRules.h"
#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/platform/StoreDeadline.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

constexpr std::chrono::milliseconds maxWait(250);  // for callers, which may be the main thread
constexpr std::chrono::hours noLimit(1);  // for work in the background, which waits for other threads' turns

}  // namespace

// The calling thread's turn at the store. Converts to false if the thread did not get one. Either another
// thread used the store until the deadline, or this thread is using it already and the store or the printer
// called back into the ledger.
class ConsentLedger::Turn {
 public:
  explicit Turn(ConsentLedger& ledger)
      : ledger_(ledger),
        guard_(ledger.storeLock_, StoreDeadline::remaining(noLimit)),
        isStoreInUse_(guard_ && !ledger.isStoreInUse_ ? &ledger.isStoreInUse_ : nullptr) {
    if (isStoreInUse_) *isStoreInUse_ = true;
  }
  ~Turn() {
    const bool isNested = guard_ && !isStoreInUse_;
    if (isStoreInUse_) *isStoreInUse_ = false;
    if (guard_) guard_.unlock();
    if (!isNested)
      ledger_.notifyOfChange();  // only now, because observers may run at once and use the ledger
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  explicit operator bool() const { return isStoreInUse_; }

 private:
  ConsentLedger& ledger_;
  std::unique_lock<std::recursive_timed_mutex> guard_;
  bool* const isStoreInUse_;  // the ledger's; null without a turn
};

void ConsentLedger::IdentityChange::add(const IdentityChange& later) {
  if (later.end != End::none) *this = {std::max(end, later.end), std::nullopt};
  if (later.logIn) logIn = later.logIn;
}

void ConsentLedger::IdentityChange::applyTo(KeptValues& kept) const {
  switch (end) {
    case End::none:
      restoreOriginal(kept);
      break;
    case End::logOut:
      TalvoConsentSDK::logOut(kept);
      break;
    case End::erasure:
      kept = {};
      kept.isErased = true;
      break;
  }
  if (logIn) TalvoConsentSDK::logIn(kept, *logIn);
}

ConsentLedger::ConsentLedger(std::shared_ptr<ConsentStorage> storage,
                             std::shared_ptr<ConsentObservers> observers)
    : storage_(std::move(storage)), observers_(std::move(observers)) {
  user_.isUnknown = initialConsent_.isUnknown = true;
}

// Notifies the observers if the known consent has changed since the last call.
void ConsentLedger::notifyOfChange() {
  {
    const std::scoped_lock guard(lock_);
    if (!std::exchange(isChangeDue_, false)) return;
  }
  ConsentObservers::notify(observers_);
}

std::optional<BasicConsent> ConsentLedger::consent() {
  const StoreDeadline deadline(maxWait);
  std::uint64_t turns = 0;
  {
    const std::scoped_lock guard(lock_);
    turns = turns_;
  }
  if (!isAllWritten()) return applyPending(Turn(*this)).values.consent.value;
  const KeptConsent stored = storage_->loadKeptConsent();
  {
    const std::scoped_lock guard(lock_);
    // If another thread has used the store meanwhile, `stored` may be older than what it has written.
    if (turns_ == turns && !pending_) learn(stored);
  }
  notifyOfChange();
  return stored.value;
}

ConsentLedger::Known ConsentLedger::known() const {
  const std::scoped_lock guard(lock_);
  return known_;
}

ConsentLedger::Decision ConsentLedger::beginDecision() {
  const StoreDeadline deadline(maxWait);
  applyPending(Turn(*this));
  const std::scoped_lock guard(lock_);
  return {{user_, identity_}, initialConsent_.value.has_value(), ++lastNumber_, erasures_};
}

void ConsentLedger::fileDecision(const Decision& decision, const BasicConsent& consent) {
  const Turn turn(*this);
  if (!turn) print("⚠️ Failed to save consent to UserDefaults: The store is in use");
  bool isUsersOwn = false;
  const Applied applied =
      applyPending(turn, [&](KeptValues& kept) { isUsersOwn = applyDecision(kept, decision, consent); });
  const std::scoped_lock guard(lock_);
  if (isUsersOwn && applied.isWritten) hasUserDecided_ = true;
}

ConsentLedger::Login ConsentLedger::logIn(const std::string& userId) {
  const StoreDeadline deadline(maxWait);
  Login login = changeIdentity({IdentityChange::End::none, userId});
  applyPending(Turn(*this));
  const std::scoped_lock guard(lock_);
  if (initialConsent_.value && !pending_) login.consentId = initialConsent_.value->id;
  return login;
}

void ConsentLedger::logOut() {
  const StoreDeadline deadline(maxWait);
  changeIdentity({IdentityChange::End::logOut, std::nullopt});
  applyPending(Turn(*this));
}

bool ConsentLedger::erase() {
  const StoreDeadline deadline(maxWait);
  changeIdentity({IdentityChange::End::erasure, std::nullopt});
  const Turn turn(*this);
  if (!turn) print("⚠️ Failed to remove consent from UserDefaults: The store is in use");
  return applyPending(turn).isDurable;
}

std::optional<ConsentLedger::Login> ConsentLedger::storedLogin() {
  const StoreDeadline deadline(maxWait);
  applyPending(Turn(*this));
  const std::scoped_lock guard(lock_);
  if (!user_.value) return std::nullopt;
  return Login{*user_.value, initialConsent_.value ? initialConsent_.value->id : std::nullopt, identity_,
               decisions_};
}

void ConsentLedger::fileIdentified(const Login& login, const BasicConsent& consent) {
  const StoreDeadline deadline(maxWait);
  const Turn turn(*this);
  const Applied applied = applyPending(turn);
  if (!applied.isWritten || applied.values.user.value != login.userId) return;
  std::optional<Data> atLogin, implicit;
  {
    const std::scoped_lock guard(lock_);
    if (identity_ != login.identity || decisions_ != login.decisions) return;
    atLogin = initialConsent_.data;
    implicit = implicit_;
  }
  auto data = storage_->saveConsentIfStill(atLogin, consent);
  if (!data && implicit) data = storage_->saveConsentIfStill(implicit, consent);
  if (data) learnStored(turn, consent, *data, false);
}

std::optional<ConsentLedger::Implicit> ConsentLedger::beginImplicit(bool mayReplace) {
  const StoreDeadline deadline(maxWait);
  const Turn turn(*this);
  const KeptValues kept = applyPending(turn).values;
  if (kept.isUnknown() || (kept.consent.value && !mayReplace)) return std::nullopt;
  const std::scoped_lock guard(lock_);
  if (erasures_ > 0) return std::nullopt;  // the app's next start may ask again
  return Implicit{kept.consent.data, kept.consent.value.has_value(), decisions_};
}

void ConsentLedger::fileImplicit(const Implicit& implicit, const BasicConsent& consent) {
  const StoreDeadline deadline(maxWait);
  const Turn turn(*this);
  if (!applyPending(turn).isWritten) return;
  {
    const std::scoped_lock guard(lock_);
    if (decisions_ != implicit.decisions) return;
  }
  const auto data = storage_->saveConsentIfStill(implicit.replaced, consent);
  if (data) learnStored(turn, consent, *data, true);
}

bool ConsentLedger::isAllWritten() {
  const std::scoped_lock guard(lock_);
  return !pending_ && !beingWritten_ && !mayNeedRestoring_ && !storage_->owesSynchronizing();
}

// Loads the stored values, applies the pending login or logout to them, then `step`, and writes the result.
// Without a turn nothing is read or written, and all returned values are unknown.
ConsentLedger::Applied ConsentLedger::applyPending(const Turn& turn, const Step& step) {
  Applied applied = applyOnce(turn, step);
  if (!turn || !applied.isOvertaken) return applied;
  Applied next = applyOnce(turn, nullptr);
  return step ? applied : next;
}

// Takes over a consent that was just stored, the service's or an implicit one. It does not count if a logout
// or an erasure has arrived meanwhile.
void ConsentLedger::learnStored(const Turn& turn, const BasicConsent& consent, const Data& data,
                                bool isImplicit) {
  {
    const std::scoped_lock guard(lock_);
    if (pending_.end == IdentityChange::End::none) {
      if (isImplicit) implicit_ = data;
      hasUserDecided_ = hasUserDecided_ || !isImplicit;
      learn(&consent, data);
    }
  }
  applyWhatArrived(turn);
}

// Writes a login or logout that arrived during a write that has succeeded, and got no turn of its own.
void ConsentLedger::applyWhatArrived(const Turn& turn) {
  bool hasArrived = false;
  {
    const std::scoped_lock guard(lock_);
    hasArrived = static_cast<bool>(pending_);
  }
  if (hasArrived) applyOnce(turn, nullptr);
}

ConsentLedger::Applied ConsentLedger::applyOnce(const Turn& turn, const Step& step) {
  Applied applied;
  KeptValues& after = applied.values;
  if (!turn) {
    after.consent.isUnknown = after.original.isUnknown = after.user.isUnknown = true;
    const std::scoped_lock guard(lock_);
    if (pending_.end != IdentityChange::End::none) learn(nullptr, std::nullopt);
    return applied;
  }
  IdentityChange due;
  {
    const std::scoped_lock guard(lock_);
    due = beingWritten_ = std::exchange(pending_, {});
  }
  const KeptValues before = after = storage_->load();
  due.applyTo(after);
  const bool isRestored = before.original.value && !after.original.value;
  KeptConsent initial = after.consent;
  if (step) step(after);
  const ConsentStorage::Saved saved = storage_->save(before, after);
  applied.isWritten = saved != ConsentStorage::Saved::no;
  applied.isDurable = saved == ConsentStorage::Saved::durably;
  KeptConsent current = after.consent;
  if (!applied.isWritten) {  // the store may have made some of the changes all the same
    KeptValues stored = storage_->load();
    due.applyTo(stored);
    current = std::move(stored.consent);
  }
  settle(due, applied, current, std::move(initial), isRestored);
  return applied;
}

// Takes over what applyOnce has done with the login or logout `due`: what should now be stored, the consent
// that counts now, the consent before the step, and whether an original was restored. Notes whether a login
// or logout arrived meanwhile.
void ConsentLedger::settle(const IdentityChange& due, Applied& applied, const KeptConsent& current,
                           KeptConsent initial, bool isRestored) {
  const std::scoped_lock guard(lock_);
  const KeptValues& after = applied.values;
  const IdentityChange later = std::exchange(pending_, {});
  if (!applied.isWritten || after.isUnknown()) pending_ = due;
  pending_.add(later);
  beingWritten_ = {};
  mayNeedRestoring_ = after.isUnknown() || (isRestored && !applied.isWritten);
  ++turns_;
  applied.isOvertaken = static_cast<bool>(later);
  if (later.end != IdentityChange::End::none) return;
  const bool isWithdrawn = current.isUnknown && due.end != IdentityChange::End::none;
  isWithdrawn ? learn(nullptr, std::nullopt) : learn(current);
  if (later) return;
  const std::uint64_t identity = identity_;
  if (user_.isUnknown || !after.isUnknown()) adopt(after.user);
  if (identity != identity_ || due || isRestored || initialConsent_.isUnknown) {
    initial.data = after.consent.data;
    initialConsent_ = std::move(initial);
  }
}

ConsentLedger::Login ConsentLedger::changeIdentity(const IdentityChange& change) {
  const std::scoped_lock guard(lock_);
  pending_.add(change);
  if (change.end == IdentityChange::End::erasure) {
    ++erasures_;
    ++decisions_;
    latest_.clear();
  }
  // A login that replaces another user takes over that user's consent, so both members below stay valid.
  if (change.end != IdentityChange::End::none || (!user_.value && !user_.isUnknown)) {
    hasUserDecided_ = false;
    implicit_.reset();
  }
  user_ = {change.logIn};
  initialConsent_ = {{}, {}, true};
  return {change.logIn.value_or(""), std::nullopt, ++identity_, decisions_};
}

// Takes over the stored user, which another process may have changed.
void ConsentLedger::adopt(const KeptUser& stored) {
  if (!user_.isUnknown && user_.value != stored.value) {
    ++identity_;
    hasUserDecided_ = false;
    implicit_.reset();
  }
  user_ = stored;
}

// Takes over a consent, null for none, and the data that it was read from or written as, if any.
void ConsentLedger::learn(const BasicConsent* consent, std::optional<Data> data) {
  if (!consent && !known_.consent) return;
  if (consent && !data) {  // it could not be written
    auto json = JSONEncoder().encode(*consent);
    if (json) data = Data(*std::move(json));
  }
  if (consent && known_.consent && data == knownData_) return;
  knownData_ = std::move(data);
  known_.consent = consent ? std::make_shared<const BasicConsent>(*consent) : nullptr;
  ++known_.version;
  isChangeDue_ = true;
}

void ConsentLedger::learn(const KeptConsent& consent) {
  if (!consent.isUnknown) learn(consent.value ? &*consent.value : nullptr, consent.data);
}

// Changes `kept` as the decision requires. Returns whether the decision is the identified user's own.
bool ConsentLedger::applyDecision(KeptValues& kept, const Decision& decision, const BasicConsent& consent) {
  const std::scoped_lock guard(lock_);
  if (decision.erasures != erasures_) return false;
  const KeptUser& identified = kept.user.isUnknown ? user_ : kept.user;
  const Person& person = decision.person;
  // If the user was unknown when the decision was made, and the identity has not changed since, the decision
  // belongs to the user who is identified now.
  const bool isByIdentified = person.user.isUnknown && person.identity == identity_;
  const std::optional<std::string> userId = isByIdentified ? identified.value : person.user.value;
  const bool isIdentified = userId == identified.value;
  if (userId && !isIdentified && userId != user_.value) return false;  // no longer identified
  std::uint64_t& latest = latest_[userId];
  if (decision.number < latest) return false;
  latest = decision.number;
  ++decisions_;
  const KeptConsent chosen{consent, {}};
  if (userId) {
    if (isIdentified) kept.consent = chosen;  // otherwise the login has not been written yet
    return isIdentified;
  }
  if (isByIdentified && identified.isUnknown) {
    kept.consent = chosen;
    return false;
  }
  if (identified.value || identified.isUnknown) {
    const bool isImplicit = implicit_ && kept.consent.data == implicit_;
    if (!hasUserDecided_ && (isImplicit || isInherited(kept))) kept.consent = withoutId(chosen);
    kept.original = chosen;
  } else {
    kept = {chosen, {}, {}};
  }
  return false;
}

}  // namespace TalvoConsentSDK
