#include "TalvoConsentSDK/core/ConsentLedger.h"

#include <chrono>
#include <utility>

#include "TalvoConsentSDK/core/IdentityRules.h"
#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/platform/StoreDeadline.h"

namespace TalvoConsentSDK {

using namespace platform;

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
  user_.isUnknown = standing_.isUnknown = true;
}

std::optional<BasicConsent> ConsentLedger::consent() {
  const StoreDeadline deadline(patience);
  if (isAllWritten()) return storage_->loadConsent();
  return settle(Turn(*this)).values.consent.value;
}

ConsentLedger::Decision ConsentLedger::beginDecision() {
  const StoreDeadline deadline(patience);
  settle(Turn(*this));
  const std::scoped_lock guard(lock_);
  return {{user_, identity_}, standing_.value.has_value(), ++numbers_};
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
  if (standing_.value && !unwritten_) login.consentId = standing_.value->id;
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
  if (!user_.value) return std::nullopt;
  return Login{*user_.value, standing_.value ? standing_.value->id : std::nullopt, identity_, decisions_};
}

void ConsentLedger::fileIdentified(const Login& login, const BasicConsent& consent) {
  const StoreDeadline deadline(patience);
  const Turn turn(*this);
  const Settled settled = settle(turn);
  if (!settled.isWritten || settled.values.user.value != login.userId) return;
  std::optional<Data> stood, implicit;
  {
    const std::scoped_lock guard(lock_);
    if (identity_ != login.identity || decisions_ != login.decisions) return;
    stood = standing_.data;
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
  if (kept.isUnknown() || (kept.consent.value && !mayReplace)) return std::nullopt;
  const std::scoped_lock guard(lock_);
  return Implicit{kept.consent.data, kept.consent.value.has_value(), decisions_};
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
    after.consent.isUnknown = after.original.isUnknown = after.user.isUnknown = true;
    return settled;
  }
  Unwritten due;
  {
    const std::scoped_lock guard(lock_);
    due = beingWritten_ = std::exchange(unwritten_, {});
  }
  const KeptValues before = after = storage_->load();
  due.applyTo(after);
  const bool isRestored = before.original.value && !after.original.value;
  KeptConsent standing = after.consent;
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
  if (user_.isUnknown || !after.isUnknown()) adopt(after.user);
  if (identity != identity_ || due || isRestored || standing_.isUnknown) {
    standing.data = after.consent.data;
    standing_ = std::move(standing);
  }
  return settled;
}

ConsentLedger::Login ConsentLedger::change(const Unwritten& change) {
  const std::scoped_lock guard(lock_);
  unwritten_.add(change);
  if (change.logOut ||
      (!user_.value && !user_.isUnknown)) {  // a further user takes over what the one before had
    hasUserDecided_ = false;
    implicit_.reset();
  }
  user_ = {change.logIn};
  standing_ = {{}, {}, true};
  return {change.logIn.value_or(""), std::nullopt, ++identity_, decisions_};
}

// Goes by the user who is stored, whom another process may have changed.
void ConsentLedger::adopt(const KeptUser& stored) {
  if (!user_.isUnknown && user_.value != stored.value) {
    ++identity_;
    hasUserDecided_ = false;
    implicit_.reset();
  }
  user_ = stored;
}

// Tells whether the decision is one of the user who is identified.
bool ConsentLedger::decide(KeptValues& kept, const Decision& decision, const BasicConsent& consent) {
  const std::scoped_lock guard(lock_);
  const KeptUser& identified = kept.user.isUnknown ? user_ : kept.user;
  const Person& person = decision.person;
  const bool isWhoeverItIs = person.user.isUnknown && person.identity == identity_;
  const std::optional<std::string> userId = isWhoeverItIs ? identified.value : person.user.value;
  const bool isIdentified = userId == identified.value;
  if (userId && !isIdentified && userId != user_.value) return false;  // no longer identified
  std::uint64_t& latest = latest_[userId];
  if (decision.number < latest) return false;
  latest = decision.number;
  ++decisions_;
  const KeptConsent chosen{consent, {}};
  if (userId) {
    if (isIdentified) kept.consent = chosen;  // otherwise the login could not be written
    return isIdentified;
  }
  if (isWhoeverItIs && identified.isUnknown) {
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
