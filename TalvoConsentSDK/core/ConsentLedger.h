#pragma once

// Whose consent is stored. Decisions, replies, logging in and logging out come from several threads, late or
// while the store fails; the ledger sees that each ends up with whoever it belongs to.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "TalvoConsentSDK/storage/ConsentStorage.h"

namespace TalvoConsentSDK {

/// One site's consents and who the person is, over the device's store. Safe from any thread. Every operation
/// first does what the store has refused so far: it writes a login or logout anew and restores a consent
/// owed. Meanwhile this process goes by what it was told. Nothing throws; a store that fails prints lines.
///
/// An operation waits for others that use the store, threads or processes, 250 ms at most; only
/// `fileDecision`, which is for the background, waits as long as the store does. A store or printer that
/// calls in from within is told what is known, and a login or logout that it asks for is written later.
class ConsentLedger {
 public:
  /// Everything counts as unknown until the first operation has read the store.
  explicit ConsentLedger(std::shared_ptr<ConsentStorage> storage);

  /// The consent that holds now; nothing when there is none or the store cannot tell.
  std::optional<BasicConsent> consent();

  /// Whoever is identified: none for nobody in particular. While the store cannot tell, it is whoever turns
  /// out to be, unless the identity is changed before.
  struct Person {
    KeptUser user;
    std::uint64_t identity = 0;  // changes of identity before it
  };

  /// A decision on its way to the service.
  struct Decision {
    Person person;             // who has decided
    bool isUpdate = false;     // a consent stood there as the identity was last changed
    std::uint64_t number = 0;  // a later one overrules an earlier one
  };
  Decision beginDecision();

  /// Stores a decision that the service has taken. One of a user who is no longer identified is not stored.
  /// One of nobody in particular, who has become a user meanwhile, is set aside, and inherited unless the
  /// user has a consent of their own. One that comes from within a store or printer is not stored.
  void fileDecision(const Decision& decision, const BasicConsent& consent);

  /// A user whose consent is to be asked of the service.
  struct Login {
    std::string userId;
    std::optional<std::string> consentId;  // of the consent they have here
    std::uint64_t identity = 0;            // changes of identity and
    std::uint64_t decisions = 0;           // decisions before it; any later one makes the reply void
  };
  Login logIn(const std::string& userId);
  void logOut();

  /// Takes over what the store holds. Returns the user who is stored, if any.
  std::optional<Login> storedLogin();

  /// Stores the consent that the service knows of the user, unless the reply is void or the store no longer
  /// holds what it held at the login, or an implicit consent given since.
  void fileIdentified(const Login& login, const BasicConsent& consent);

  /// A consent that nobody chooses.
  struct Implicit {
    std::optional<platform::Data> replaced;  // what stands in the store in its place
    bool isUpdate = false;
    std::uint64_t decisions = 0;
  };

  /// Nothing when a consent stands there, unless that `mayReplace` is given, and when the store cannot tell.
  std::optional<Implicit> beginImplicit(bool mayReplace);

  /// Stores the consent, unless somebody has decided since or the store holds something else.
  void fileImplicit(const Implicit& implicit, const BasicConsent& consent);

 private:
  class Turn;

  // What the store has still to be told.
  struct Unwritten {
    bool logOut = false;
    std::optional<std::string> logIn;  // after that

    explicit operator bool() const { return logOut || logIn; }
    void add(const Unwritten& later);
    void applyTo(KeptValues& kept) const;
  };

  struct Settled {
    KeptValues values;  // as they are to be
    bool isWritten = false;
  };

  using Step = std::function<void(KeptValues&)>;

  bool isAllWritten();
  Settled settle(const Turn& turn, const Step& step = nullptr);
  Login change(const Unwritten& change);
  void adopt(const KeptUser& stored);
  bool decide(KeptValues& kept, const Decision& decision, const BasicConsent& consent);

  const std::shared_ptr<ConsentStorage> storage_;

  std::recursive_timed_mutex store_;  // held over work on the store, which may wait and may call in
  bool isAtWork_ = false;             // guarded by store_

  std::mutex lock_;  // guards what follows, for moments only
  Unwritten unwritten_;
  Unwritten beingWritten_;  // by the thread that is at work
  bool mayBeOwed_ = true;   // an original that could not be restored, or read
  KeptUser user_;
  KeptConsent standing_;                    // the consent as it stood when the identity last changed
  std::optional<platform::Data> implicit_;  // of an implicit consent given since
  bool hasUserDecided_ = false;  // the user has a consent of their own, as far as this process knows
  std::uint64_t identity_ = 0;
  std::uint64_t decisions_ = 0;
  std::uint64_t numbers_ = 0;
  std::map<std::optional<std::string>, std::uint64_t>
      latest_;  // number of the latest decision filed, by user
};

}  // namespace TalvoConsentSDK
