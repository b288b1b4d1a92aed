#pragma once

// The client for one site's cookie consent: a host's single entry point.

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Result.h"
#include "TalvoConsentSDK/core/BannerHandlers.h"
#include "TalvoConsentSDK/core/BannerOptions.h"
#include "TalvoConsentSDK/core/ConsentEventCallback.h"
#include "TalvoConsentSDK/core/ConsentGate.h"
#include "TalvoConsentSDK/core/Subscription.h"
#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/models/ConsentEvent.h"
#include "TalvoConsentSDK/models/ConsentResponse.h"
#include "TalvoConsentSDK/platform/Task.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Asks for consent, keeps it on the device, reports it to the service and notifies listeners. One instance
/// exists per process, bound to the site it was first created for; it is never destroyed.
///
/// Install a Platform, preferably before creating the instance: until one is installed, operations fail and
/// nothing is read, stored or sent. The instance keeps the session, the store and the executors that are
/// installed when it is created or, if none are, those of the first platform installed later.
///
/// Operations are safe from any thread; concurrent calls take effect in an unspecified order. Background work
/// that fails prints one line and changes nothing. A failing store prints one line too,
/// and no callback reports it. If a callback throws, the exception is caught and printed. No operation makes
/// its caller wait more than 250 ms for other threads or processes that use the store: a login or logout that
/// has not been written by then takes effect in this process, and is written before the next operation.
///
/// A decision belongs to whoever was identified when it was submitted. Of the decisions that the service
/// accepts, the one submitted last wins. A user without a decision inherits the consent that is stored when
/// they are identified. While the store cannot be read and the identified user is therefore unknown,
/// decisions are sent without a user; on the device they belong to the stored user.
class CookiesSDK {
 public:
  /// Called once, with the service's answer or the error that prevented one.
  using Completion = std::function<void(Result<ConsentResponse>)>;

  /// Returns the process's instance, creating it on the first call; the arguments of later calls are ignored.
  /// `apiUrl` is the consent service's base URL, with or without a trailing slash. Creation reads the
  /// device's store; then, on the main actor, it fetches the site's configuration, submits an implicit
  /// consent if the site asks for one and no consent is stored, and fetches the user's consent if a user is
  /// still identified. If no platform is installed, all of this happens once one is. Safe from any thread.
  /// If host code that runs within this call, such as the store, calls it again, the inner call returns null.
  static std::shared_ptr<CookiesSDK> createInstance(const std::string& apiUrl, const std::string& siteId);

  /// Returns the process's instance, or null before the first `createInstance`. Waits while another thread is
  /// creating the instance. Host code that runs within `createInstance` gets null, and must not wait for
  /// other threads, because they may be waiting for the instance.
  static std::shared_ptr<CookiesSDK> getInstance();

  ~CookiesSDK();
  CookiesSDK(const CookiesSDK&) = delete;
  CookiesSDK& operator=(const CookiesSDK&) = delete;

  /// Sets the language in which banners and services are fetched from now on. `language` is written as the
  /// service writes it; the initial language is "en".
  void setLanguage(const std::string& language);

  /// Returns the consent stored on the device now, including changes made by background work; nothing if
  /// there is none or the store cannot be read. After a logout that has not been written yet, returns the
  /// consent that applies while nobody is identified.
  std::optional<BasicConsent> getConsent() const;

  /// Returns the gate, which starts and stops what needs consent. See ConsentGate.
  ConsentGate gate() const;

  /// Calls `observer` on the main actor after each change of the consent, whatever changed it, with the
  /// consent as it now is; nothing if there is none. Changes that follow each other quickly may be reported
  /// as one. A change that another process makes is reported when this process next reads the store.
  Subscription observeConsent(std::function<void(const std::optional<BasicConsent>&)> observer);

  /// Sends a consent to the service: as an update if a consent was stored when the instance was created or
  /// when the identity last changed, otherwise as a new consent. On success, stores the consent as given, if
  /// the device's store allows, then raises its events and `consentSent`, and calls `completion`. Listeners
  /// and completions run on the platform's callback executor, one submission after the other; a listener that
  /// blocks delays only these. On failure, nothing is stored, no event is raised, and `completion` receives
  /// the error.
  ///
  /// If the identity changes before the service answers: the consent of a user who is no longer identified is
  /// not stored on the device. A consent given while nobody was identified is set aside until the logout, and
  /// the user inherits it unless they have decided.
  void submitConsent(const BasicConsent& consent, Completion completion);

  /// The same as a task, which returns the answer or throws an Error. This call determines what is sent
  /// and for which user; the request is sent when the task is awaited. The awaiter resumes on its own
  /// executor, or in the background if it has none. Once awaited, the submission cannot be stopped by
  /// dropping the task or destroying the awaiter.
  Task<ConsentResponse> submitConsent(const BasicConsent& consent);

  /// Ties the consent to a user known to the host. A consent given while nobody was identified is set aside
  /// in the same step as the login. Then, on the main actor, the consent that the service holds for the user
  /// is fetched and stored, and `identificationComplete` is raised, after a failure too. The fetched consent
  /// is not stored if by then the identity has changed again, the service has accepted a decision, or another
  /// process has stored something else.
  void identify(const std::string& userId);

  /// Forgets the user and restores the consent that was set aside, in one step. If nothing was stored before
  /// the login, the user's consent stays, without the identifier of its record. Sends nothing and raises no
  /// event.
  void removeIdentity();

  /// Removes everything that is stored on the device about the person for this site: the consent, the one set
  /// aside, and the user. Requests under way can no longer store anything, and gates close. Sends nothing:
  /// what the service keeps stays there. Implicit consent may be given again when the app next starts.
  /// Returns whether the store has removed everything; if it has not, one line is printed, this process
  /// behaves as if it had, and the next operation tries again.
  bool eraseConsent();

  /// Fetches the banner's data and shows the banner above the host's windows. Returns at once. If the host
  /// has no window in the foreground, nothing is shown and no closure is called. Each closure is called on
  /// the main actor:
  /// - `onAcceptAll`, `onRejectAll`: the service has accepted the decision. The device has stored it too,
  ///   unless its store failed, which prints a line, or the decision's user is no longer identified;
  /// - `onManagePreferences`: the user saved preferences on the banner, and they were accepted and stored as
  ///   described above; or the user asked for preferences, which the host must show itself;
  /// - `onError`: the banner could not be shown, or a decision could not be submitted. Nothing was stored.
  /// Closing the banner stores nothing and calls no closure. A decision raises no event. It belongs to
  /// whoever was identified when the host asked for the banner; if the identity has changed since, the rules
  /// of `submitConsent` apply.
  void showBanner(std::function<void()> onAcceptAll, std::function<void()> onRejectAll,
                  std::function<void()> onManagePreferences, std::function<void(Error)> onError);

  /// The same with a closure for each way in which the banner ends, and with options.
  void showBanner(BannerHandlers handlers, BannerOptions options = {});

  /// The same as a task, which shows the banner when it is awaited, and returns how the banner ended or
  /// throws the Error. The awaiter resumes on its own executor, or on the main actor if it has none. Dropping
  /// the task or destroying the awaiter does not take the banner away.
  Task<BannerOutcome> showBanner(BannerOptions options = {});

  /// Registers a listener after those that the event already has, and holds it until it is removed.
  void addEventListener(ConsentEvent event, std::shared_ptr<ConsentEventCallback> callback);

  /// Registers a closure as a listener, until the subscription ends. Listeners of submissions run on the
  /// callback executor, those of `identificationComplete` on the main actor.
  Subscription addEventListener(ConsentEvent event, std::function<void()> listener);

  /// Removes a listener from one event, however often it was registered.
  void removeEventListener(ConsentEvent event, const std::shared_ptr<ConsentEventCallback>& callback);

  /// Removes all listeners of one event, or of every event.
  void removeEventListener(ConsentEvent event);
  void removeAllEventListeners();

 private:
  struct State;

  CookiesSDK(const std::string& apiUrl, const std::string& siteId);

  void begin();
  Task<ConsentResponse> submission(const BasicConsent& consent) const;

  const std::unique_ptr<State> state_;
};

}  // namespace TalvoConsentSDK

#include "TalvoConsentSDK/core/CookiesSDKInline.h"  // IWYU pragma: keep
