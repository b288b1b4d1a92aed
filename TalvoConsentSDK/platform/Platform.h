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

/// What the library runs on. Members that a host leaves out or sets to null become null objects when the
/// platform is installed: the session and the store fail with an error that says that none is installed,
/// executors run work inline on the caller's thread, the application has no user interface, texts are their
/// keys, and lines go to standard output. Until a platform is installed, all members are null objects.
struct Platform {
  Platform();

  std::shared_ptr<platform::URLSession> urlSession;
  std::shared_ptr<platform::UserDefaults> userDefaults;
  std::shared_ptr<platform::Executor> mainActor;
  std::shared_ptr<platform::Executor> background;

  /// Calls listeners and the completions of submissions, which may block. Must run one job after the other,
  /// in the order posted. If null, which is the default, `background` makes these calls, and its other work
  /// waits for them; it must then keep the order, too.
  std::shared_ptr<platform::Executor> callbacks;

  std::shared_ptr<platform::Application> application;
  std::shared_ptr<platform::Localization> localization;
  std::shared_ptr<platform::Printer> printer;

  /// Replaces null members by null objects, except that a null `callbacks` becomes `background`.
  void fillIn();

  /// Fills `platform` in and makes it the process's platform. A client keeps the session, the store and the
  /// executors that were installed when it was created. A client created before the first `install` gets
  /// those of the first platform; its work with the store and the network, which usually starts at its
  /// creation, starts at that `install`. The application, the localization and the printer in use are always
  /// the latest installed. Safe from any thread.
  static void install(Platform platform);

  static bool isInstalled();

  /// Returns the installed platform. Before the first `install`, returns null objects. Once the first
  /// platform is installed, the session, store and executors among them pass everything on to it.
  static Platform current();
};

}  // namespace TalvoConsentSDK
