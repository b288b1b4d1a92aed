#pragma once

// Keeps track of whose consent is stored. Decisions, replies, logins and logouts arrive on several threads,
// some of them late or while the store fails; the ledger makes sure that each consent is stored for the user
// it belongs to.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "TalvoConsentSDK/core/ConsentObservers.h"
#include "TalvoConsentSDK/storage/ConsentStorage.h"

namespace TalvoConsentSDK {

/// One site's consents and its identified user, kept in the device's store. Safe from any thread. The consent
/// that is set aside at a login is called the original; a logout restores it. If the store fails to write a
/// login, a logout or a restored original, every later operation first tries again; until the write succeeds,
/// this process behaves as if the login or logout had been written. If the store has written a change but
/// could not make it durable, later operations only try to make it durable. Nothing throws; each failure of
/// the store prints a line.
///
/// An operation waits at most 250 ms for other threads or processes that use the store. Only `fileDecision`,
/// which is for background threads, waits longer: up to an hour for other threads, and for other processes up
/// to the store's own limit. The store and the printer may call the ledger while it is using them. Such a
/// nested call returns what is already known, and its login or logout is written later.
class ConsentLedger {
 public:
  /// Reads nothing yet: everything is unknown until the first operation has read the store. The observers are
  /// notified after each change of what `known` returns.
  ConsentLedger(std::shared_ptr<ConsentStorage> storage, std::shared_ptr<ConsentObservers> observers);

  /// Returns the current consent; nothing if there is none or the store cannot be read.
  std::optional<BasicConsent> consent();

  /// The consent as this process last read or wrote it.
  struct Known {
    std::shared_ptr<const BasicConsent> consent;  // null if there is none
    std::uint64_t version = 0;                    // how many times it had changed
  };

  /// Returns what `consent` last returned, or would have returned after a later operation, without using the
  /// store. While the store cannot be read, this stays as it is; but after a logout it is no consent.
  Known known() const;

  /// The person who uses the app, identified or not. If the store could not be read, the user is unknown; the
  /// ledger then assumes that the person is the user it finds in the store later, unless a login or logout
  /// comes first.
  struct Person {
    KeptUser user;
    std::uint64_t identity = 0;  // how many times the identity had changed at `beginDecision`
  };

  /// A decision on its way to the service.
  struct Decision {
    Person person;               // who decided
    bool isUpdate = false;       // a consent was stored at creation, or when the identity last changed
    std::uint64_t number = 0;    // of one person's decisions, the highest number wins
    std::uint64_t erasures = 0;  // how many times everything had been erased
  };
  Decision beginDecision();

  /// Stores a decision that the service has accepted, with these exceptions:
  /// - If its user is no longer identified, or everything has been erased since, the decision is not stored.
  /// - If a later decision of the same person has been filed already, the decision is not stored.
  /// - If nobody was identified when it was made, but a user is now, it is set aside as the original consent.
  ///   The user inherits it unless they have a consent of their own.
  /// - If the store or the printer makes this call from inside another operation, the decision is not stored.
  void fileDecision(const Decision& decision, const BasicConsent& consent);

  /// A user whose consent is about to be fetched from the service. The reply is ignored if either count has
  /// changed by the time it arrives.
  struct Login {
    std::string userId;
    std::optional<std::string> consentId;  // the identifier of the consent that the user has on this device
    std::uint64_t identity = 0;            // how many times the identity had changed
    std::uint64_t decisions = 0;           // how many decisions had been filed
  };
  Login logIn(const std::string& userId);
  void logOut();

  /// Forgets the user and removes everything that is stored. Requests under way can no longer store anything.
  /// Returns whether the store has removed it durably; otherwise later operations try again.
  bool erase();

  /// Takes over what the store holds, and returns the stored user, if any.
  std::optional<Login> storedLogin();

  /// Stores the consent that the service holds for the user. It replaces the consent that was stored at the
  /// login, or an implicit consent stored since. Does nothing if the store holds anything else, if the
  /// identity has changed since the login, or if a decision was filed since.
  void fileIdentified(const Login& login, const BasicConsent& consent);

  /// An implicit consent on its way to the service.
  struct Implicit {
    std::optional<platform::Data> replaced;  // the stored data that it may replace
    bool isUpdate = false;
    std::uint64_t decisions = 0;  // how many decisions had been filed
  };

  /// Returns nothing if a consent is stored and `mayReplace` is false, or if the store cannot be read.
  std::optional<Implicit> beginImplicit(bool mayReplace);

  /// Stores the consent, unless a decision was filed since `beginImplicit` or the stored data is no longer
  /// the same.
  void fileImplicit(const Implicit& implicit, const BasicConsent& consent);

 private:
  class Turn;

  // A logout or an erasure, a login, or one of the first two followed by a login.
  struct IdentityChange {
    enum class End { none, logOut, erasure } end = End::none;  // an erasure includes a logout
    std::optional<std::string> logIn;

    explicit operator bool() const { return end != End::none || logIn; }
    void add(const IdentityChange& later);
    void applyTo(KeptValues& kept) const;
  };

  struct Applied {
    KeptValues values;         // what the store should now hold
    bool isWritten = false;    // whether the store holds them
    bool isDurable = false;    // whether the store has also made them durable
    bool isOvertaken = false;  // a login or logout arrived meanwhile
  };

  using Step = std::function<void(KeptValues&)>;

  bool isAllWritten();
  Applied applyPending(const Turn& turn, const Step& step = nullptr);
  Applied applyOnce(const Turn& turn, const Step& step);
  void applyWhatArrived(const Turn& turn);
  void learnStored(const Turn& turn, const BasicConsent& consent, const platform::Data& data,
                   bool isImplicit);
  Login changeIdentity(const IdentityChange& change);
  void adopt(const KeptUser& stored);
  void settle(const IdentityChange& due, Applied& applied, const KeptConsent& current, KeptConsent initial,
              bool isRestored);
  void learn(const BasicConsent* consent, std::optional<platform::Data> data);
  void learn(const KeptConsent& consent);
  void notifyOfChange();
  bool applyDecision(KeptValues& kept, const Decision& decision, const BasicConsent& consent);

  const std::shared_ptr<ConsentStorage> storage_;
  const std::shared_ptr<ConsentObservers> observers_;

  // Held while the store is in use. The store may block, and it may call the ledger.
  std::recursive_timed_mutex storeLock_;
  bool isStoreInUse_ = false;  // guarded by storeLock_

  mutable std::mutex lock_;       // guards the members below; held only briefly
  IdentityChange pending_;        // not written yet
  IdentityChange beingWritten_;   // being written by the thread that uses the store
  bool mayNeedRestoring_ = true;  // an original may still have to be restored
  KeptUser user_;
  std::optional<platform::Data> knownData_;  // what known_ was read from or written as
  Known known_;
  bool isChangeDue_ = false;                // known_ has changed, and the observers have not been notified
  std::uint64_t turns_ = 0;                 // how often the store has been used
  KeptConsent initialConsent_;              // the consent at creation, or when the identity last changed
  std::optional<platform::Data> implicit_;  // the data of the latest implicit consent
  bool hasUserDecided_ = false;   // the user has a consent of their own, as far as this process knows
  std::uint64_t identity_ = 0;    // how often the identity has changed
  std::uint64_t decisions_ = 0;   // how many decisions have been filed, even if the store then failed
  std::uint64_t lastNumber_ = 0;  // the number of the last decision begun
  std::uint64_t erasures_ = 0;    // how often everything has been erased
  std::map<std::optional<std::string>, std::uint64_t> latest_;  // the highest decision number filed, by user
};

}  // namespace TalvoConsentSDK
