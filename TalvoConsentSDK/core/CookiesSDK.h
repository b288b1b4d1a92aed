#pragma once

// The client for one site's cookie consent: a host's single entry point.

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Result.h"
#include "TalvoConsentSDK/core/ConsentEventCallback.h"
#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/models/ConsentEvent.h"
#include "TalvoConsentSDK/models/ConsentResponse.h"
#include "TalvoConsentSDK/platform/Task.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Asks for consent, keeps it on the device, reports it to the service and tells listeners. One instance
/// exists per process, bound to the site it was first created for; it is never destroyed.
///
/// Install a Platform, best before creating it: until there is one, operations fail and nothing is read,
/// stored or sent; the first that is installed is the instance's for ever. Its operations are safe from any
/// thread; concurrent calls take effect in an unspecified order. Work in the background that fails prints one
/// line to standard output and changes nothing; so does a store that fails, which no callback reports. What a
/// callback throws is contained and printed. No operation keeps its caller waiting longer than 250 ms for
/// others that use the store, threads or processes: a login or logout that the store has not taken by then
/// holds in this process, and is written before the next operation.
///
/// A decision belongs to whoever was identified when it was submitted. Of those that the service takes, the
/// latest one submitted holds. A user without one inherits what is stored when they are identified. While the
/// store cannot tell who is identified, the service hears of a decision without a user; on the device it is
/// the stored user's.
class CookiesSDK {
 public:
  /// Called once, with the service's answer or why there is none.
  using Completion = std::function<void(Result<ConsentResponse>)>;

  /// The process's instance, created on the first call; the arguments of later calls are ignored. `apiUrl` is
  /// the consent service's base URL, with or without a trailing slash. Reads the device's store; then, on the
  /// main actor, fetches the site's configuration, gives implicit consent if the site asks for it and nothing
  /// is stored, and fetches the consent of a user who is still identified. Without an installed platform all
  /// of this happens once one is installed. Safe from any thread, but for host code that creation itself
  /// calls: there it returns null.
  static std::shared_ptr<CookiesSDK> createInstance(const std::string& apiUrl, const std::string& siteId);

  /// The process's instance, or null before the first `createInstance`. Waits for one that is being created
  /// on another thread; host code that this creation calls gets null, and must not wait for other threads.
  static std::shared_ptr<CookiesSDK> getInstance();

  ~CookiesSDK();
  CookiesSDK(const CookiesSDK&) = delete;
  CookiesSDK& operator=(const CookiesSDK&) = delete;

  /// The language of the banner and the services from now on, as the service knows it; "en" at first.
  void setLanguage(const std::string& language);

  /// The consent stored on the device now, also when background work has changed it; nothing when none is, or
  /// when the store cannot tell. After a logout that the store has not taken it is that of nobody identified.
  std::optional<BasicConsent> getConsent() const;

  /// Sends a consent to the service: created when none was stored as the instance came to be or as the
  /// identity was last changed, else updated. On success the consent is stored as given, where the device's
  /// store allows, its events are raised, then `consentSent`, and `completion` is called, all on the
  /// platform's executor for callbacks: submissions end there one after the other, and one whose listener
  /// blocks holds up nothing else. On failure nothing is stored or raised.
  ///
  /// Should the identity change before the service answers: the consent of a user who is no longer identified
  /// is not stored here, and one given while nobody was identified is kept aside for the time after the
  /// logout, and inherited unless the user has decided.
  void submitConsent(const BasicConsent& consent, Completion completion);

  /// The same as a task, which returns the answer or throws an Error. The consent is judged now, and sent
  /// when the task is awaited. The awaiter goes on on its own executor, in the background if it has none.
  /// Dropping the task or destroying the awaiter afterwards does not stop the submission.
  Task<ConsentResponse> submitConsent(const BasicConsent& consent);

  /// Ties the consent to a user the host knows. The consent of nobody identified is kept aside, in one step
  /// with the login; then, on the main actor, the consent that the service keeps for the user is fetched and
  /// stored, and `identificationComplete` is raised, after a failure too. A consent fetched too late is not
  /// stored: once the identity has changed again, somebody has decided, or another process has stored
  /// something else.
  void identify(const std::string& userId);

  /// Forgets the user and restores the consent kept aside, in one step. No network, no event.
  void removeIdentity();

  /// Fetches what the banner needs and shows it above the host's windows; returns at once. Nothing is shown,
  /// and nobody told, while the host has no window in the foreground. Each closure is called on the main
  /// actor:
  /// - `onAcceptAll`, `onRejectAll`: the service has taken the decision, and then the device's store, unless
  ///   that failed and a line was printed, or the user it belongs to is no longer identified;
  /// - `onManagePreferences`: the same of preferences the person has chosen, or the person asked for
  ///   preferences that the host is to show;
  /// - `onError`: the banner could not be shown, or a decision not be submitted, in which case nothing was
  ///   stored.
  /// Closing the banner stores nothing and calls none. A decision raises no event; it belongs to whoever was
  /// identified when the banner was asked for, as with `submitConsent`.
  void showBanner(std::function<void()> onAcceptAll, std::function<void()> onRejectAll,
                  std::function<void()> onManagePreferences, std::function<void(Error)> onError);

  /// Registers a listener behind the event's others; it is held until removed.
  void addEventListener(ConsentEvent event, std::shared_ptr<ConsentEventCallback> callback);

  /// Drops one listener of one event, as often as it was registered.
  void removeEventListener(ConsentEvent event, const std::shared_ptr<ConsentEventCallback>& callback);

  /// Drops all listeners of one event, or of every event.
  void removeEventListener(ConsentEvent event);
  void removeAllEventListeners();

 private:
  struct State;

  CookiesSDK(const std::string& apiUrl, const std::string& siteId);

  friend std::shared_ptr<void> observeStoredConsent(const CookiesSDK& client, std::function<void()> observer);

  void begin();
  Task<ConsentResponse> submission(const BasicConsent& consent) const;

  const std::unique_ptr<State> state_;
};

}  // namespace TalvoConsentSDK
