#include "TalvoConsentSDK/core/ConsentLedger.h"

#include <chrono>
#include <utility>

#include "TalvoConsentSDK/core/IdentityRules.h"
#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/platform/StoreDeadline.h"

namespace TalvoConsentSDK {

namespace {

constexpr std::chrono::milliseconds patience(250);  // of somebody who waits for the main thread
constexpr std::chrono::hours noLimit(1);  // where only other threads' work on the store is waited for

}  // namespace

// The calling thread's turn at the store. There is none, when it converts to false, while another thread
// works there for longer than may be waited, or when this thread works there already.
class ConsentLedger::Turn {
 public:
  explicit Turn(ConsentLedger& ledger)
      : guard_(ledger.store_, StoreDeadline::remaining(noLimit)),
        isAtWork_(guard_ && !ledger.isAtWork_ ? &ledger.isAtWork_ : nullptr) {
    if (isAtWork_) *isAtWork_ = true;
  }
  ~Turn() {
    if (isAtWork_) *isAtWork_ = false;
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  explicit operator bool() const { return isAtWork_; }

 private:
  std::unique_lock<std::recursive_timed_mutex> guard_;
  bool* const isAtWork_;
};

void ConsentLedger::Unwritten::add(const Unwritten& later) {
  if (later.logOut) *this = {true, std::nullopt};
  if (later.logIn) logIn = later.logIn;
}

void ConsentLedger::Unwritten::applyTo(KeptValues& kept) const {
  logOut ? TalvoConsentSDK::logOut(kept) : restoreOwed(kept);
  if (logIn) TalvoConsentSDK::logIn(kept, *logIn);
}

ConsentLedger::ConsentLedger(std::shared_ptr<ConsentStorage> storage) : storage_(std::move(storage)) {
  userId_.isUnknown = consent_.isUnknown = true;
}

std::optional<BasicConsent> ConsentLedger::consent() {
  const StoreDeadline deadline(patience);
  if (isAllWritten()) return storage_->loadConsent();
  return settle(Turn(*this)).values.consent;
}

ConsentLedger::Decision ConsentLedger::beginDecision() {
  const StoreDeadline deadline(patience);
  settle(Turn(*this));
  const std::scoped_lock guard(lock_);
  return {{userId_, identity_}, consent_.has_value(), ++numbers_};
}

void ConsentLedger::fileDecision(const Decision& decision, const BasicConsent& consent) {
  const Turn turn(*this);
  if (!turn) print("⚠️ Failed to save consent to UserDefaults: The store is being used");
  bool isUsersOwn = false;
  const Settled settled =
      settle(turn, [&](KeptValues& kept) { isUsersOwn = decide(kept, decision, consent); });
  const std::scoped_lock guard(lock_);
  if (isUsersOwn && settled.isWritten) hasUserDecided_ = true;
}

ConsentLedger::Login ConsentLedger::logIn(const std::string& userId) {
  const StoreDeadline deadline(patience);
  Login login = change({false, userId});
  settle(Turn(*this));
  const std::scoped_lock guard(lock_);
  if (consent_ && !unwritten_) login.consentId = consent_->id;
  return login;
}

void ConsentLedger::logOut() {
  const StoreDeadline deadline(patience);
  change({true, std::nullopt});
  settle(Turn(*this));
}

std::optional<ConsentLedger::Login> ConsentLedger::storedLogin() {
  const StoreDeadline deadline(patience);
  settle(Turn(*this));
  const std::scoped_lock guard(lock_);
  if (!userId_) return std::nullopt;
  return Login{*userId_, consent_ ? consent_->id : std::nullopt, identity_, decisions_};
}

void ConsentLedger::fileIdentified(const Login& login, const BasicConsent& consent) {
  const StoreDeadline deadline(patience);
  const Turn turn(*this);
  const Settled settled = settle(turn);
  if (!settled.isWritten || settled.values.userId != login.userId) return;
  std::optional<Data> stood, implicit;
  {
    const std::scoped_lock guard(lock_);
    if (identity_ != login.identity || decisions_ != login.decisions) return;
    stood = stood_;
    implicit = implicit_;
  }
  if (storage_->saveConsentIfStill(stood, consent) ||
      (implicit && storage_->saveConsentIfStill(implicit, consent))) {
    const std::scoped_lock guard(lock_);
    hasUserDecided_ = true;
  }
}

std::optional<ConsentLedger::Implicit> ConsentLedger::beginImplicit(bool mayReplace) {
  const StoreDeadline deadline(patience);
  const Turn turn(*this);
  const KeptValues kept = settle(turn).values;
  if (kept.isUnknown() || (kept.consent && !mayReplace)) return std::nullopt;
  const std::scoped_lock guard(lock_);
  return Implicit{kept.consent.data, kept.consent.has_value(), decisions_};
}

void ConsentLedger::fileImplicit(const Implicit& implicit, const BasicConsent& consent) {
  const StoreDeadline deadline(patience);
  const Turn turn(*this);
  if (!settle(turn).isWritten) return;
  {
    const std::scoped_lock guard(lock_);
    if (decisions_ != implicit.decisions) return;
  }
  auto data = storage_->saveConsentIfStill(implicit.replaced, consent);
  const std::scoped_lock guard(lock_);
  if (data) implicit_ = std::move(data);
}

bool ConsentLedger::isAllWritten() {
  const std::scoped_lock guard(lock_);
  return !unwritten_ && !beingWritten_ && !mayBeOwed_;
}

// Does what is unwritten, then `step`, and tells what then is stored, or would be if the store took it.
// Without a turn nothing is read or written, and so everything is unknown.
ConsentLedger::Settled ConsentLedger::settle(const Turn& turn, const Step& step) {
  Settled settled;
  KeptValues& after = settled.values;
  if (!turn) {
    after.consent.isUnknown = after.original.isUnknown = after.userId.isUnknown = true;
    return settled;
  }
  Unwritten due;
  {
    const std::scoped_lock guard(lock_);
    due = beingWritten_ = std::exchange(unwritten_, {});
  }
  const KeptValues before = after = storage_->load();
  due.applyTo(after);
  const bool isRestored = before.original && !after.original;
  const Loaded<BasicConsent> standing = after.consent;
  if (step) step(after);
  settled.isWritten = storage_->save(before, after);

  const std::scoped_lock guard(lock_);
  const Unwritten later = std::exchange(unwritten_, {});
  if (!settled.isWritten || after.isUnknown()) unwritten_ = due;
  unwritten_.add(later);
  beingWritten_ = {};
  mayBeOwed_ = after.isUnknown() || (isRestored && !settled.isWritten);
  if (later) return settled;
  const std::uint64_t identity = identity_;
  if (userId_.isUnknown || !after.isUnknown()) adopt(after.userId);
  if (identity != identity_ || due || isRestored || consent_.isUnknown) {
    consent_ = standing;
    stood_ = after.consent.data;
  }
  return settled;
}

ConsentLedger::Login ConsentLedger::change(const Unwritten& change) {
  const std::scoped_lock guard(lock_);
  unwritten_.add(change);
  if (change.logOut ||
      (!userId_ && !userId_.isUnknown)) {  // a further user takes over what the one before had
    hasUserDecided_ = false;
    implicit_.reset();
  }
  userId_ = change.logIn;
  consent_ = Loaded<BasicConsent>();
  consent_.isUnknown = true;
  return {change.logIn.value_or(""), std::nullopt, ++identity_, decisions_};
}

// Goes by the user who is stored, whom another process may have changed.
void ConsentLedger::adopt(const Loaded<std::string>& userId) {
  // Compared as what they derive from: as a value of the other, nothing would differ from nothing.
  const std::optional<std::string>&known = userId_, &stored = userId;
  if (!userId_.isUnknown && known != stored) {
    ++identity_;
    hasUserDecided_ = false;
    implicit_.reset();
  }
  userId_ = userId;
}

// Tells whether the decision is one of the user who is identified.
bool ConsentLedger::decide(KeptValues& kept, const Decision& decision, const BasicConsent& consent) {
  const std::scoped_lock guard(lock_);
  const Loaded<std::string>& identified = kept.userId.isUnknown ? userId_ : kept.userId;
  const Person& person = decision.person;
  const bool isWhoeverItIs = person.userId.isUnknown && person.identity == identity_;
  const std::optional<std::string> userId = isWhoeverItIs ? identified : person.userId;
  const bool isIdentified = userId == identified;
  if (userId && !isIdentified && userId != userId_) return false;  // no longer identified
  std::uint64_t& latest = latest_[userId];
  if (decision.number < latest) return false;
  latest = decision.number;
  ++decisions_;
  if (userId) {
    if (isIdentified) kept.consent = consent;  // otherwise the login could not be written
    return isIdentified;
  }
  if (isWhoeverItIs && identified.isUnknown) {
    kept.consent = consent;
    return false;
  }
  if (identified || identified.isUnknown) {
    const bool isImplicit = implicit_ && kept.consent.data == implicit_;
    if (!hasUserDecided_ && (isImplicit || isInherited(kept))) kept.consent = withoutId(consent);
    kept.original = consent;
  } else {
    kept = {consent, {}, {}};
  }
  return false;
}

}  // namespace TalvoConsentSDK
