#pragma once

// The set of seams between the library and everything outside it. A host installs one set at start, in one
// line, before it creates a client.

#include <memory>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Application.h"
#include "TalvoConsentSDK/platform/Executor.h"
#include "TalvoConsentSDK/platform/Localization.h"
#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/platform/URLSession.h"
#include "TalvoConsentSDK/platform/UserDefaults.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// What the library runs on. What a host leaves out, or sets to null, is a null object once installed. Such a
/// session or store fails with an error that says so, an executor runs work inline, on the caller's thread,
/// and an application has no interface; texts are their keys, and lines go to standard output. Without an
/// installed platform that is all of them.
struct Platform {
  Platform();

  std::shared_ptr<platform::URLSession> urlSession;
  std::shared_ptr<platform::UserDefaults> userDefaults;
  std::shared_ptr<platform::Executor> mainActor;
  std::shared_ptr<platform::Executor> background;

  /// Where listeners and completions of submissions are called, which may block: it runs one job after the
  /// other, in the order posted. Null, as at first: `background`, whose work then waits for them.
  std::shared_ptr<platform::Executor> callbacks;

  std::shared_ptr<platform::Application> application;
  std::shared_ptr<platform::Localization> localization;
  std::shared_ptr<platform::Printer> printer;

  /// Puts null objects in the place of null members.
  void fillIn();

  /// Makes `platform`, filled in, the process's own. Clients keep the session, the store and the executors
  /// that were installed when they were created; those created before get the first that are installed, and
  /// do now what they would have done at their creation. Application, localization and printer are those
  /// installed at the time. Safe from any thread.
  static void install(Platform platform);

  /// Whether there has been an `install`.
  static bool isInstalled();

  /// The installed set. Before there is one, null objects that pass everything on to the first.
  static Platform current();
};

}  // namespace TalvoConsentSDK
