#pragma once

// The seam for the banner's window.

#include <chrono>
#include <functional>
#include <memory>

#include "TalvoConsentSDK/base/Color.h"
#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// The content of a window, to which the window passes touches and keys. `HostingController` is the only
/// implementation; a window gets it back with `HostingController::of`. The seams use this base class so that
/// they do not depend on views.
class RootViewController {
 public:
  virtual ~RootViewController() = default;
};

/// The level of a window: alerts are above all normal windows of the host.
enum class WindowLevel { normal, alert };

/// A window that covers its scene and draws what its root view controller lays out. Touches where nothing is
/// drawn go to the host. The window is hidden until it is made visible, and closes when the last reference to
/// it is released. Main thread only.
class Window {
 public:
  virtual ~Window() = default;

  /// Sets the window's content, and keeps it alive.
  virtual void setRootViewController(std::shared_ptr<RootViewController> controller) = 0;

  virtual void setWindowLevel(WindowLevel level) = 0;
  virtual void setBackgroundColor(Color color) = 0;

  /// Shows the window in front of the others on its level, and gives it the keyboard.
  virtual void makeKeyAndVisible() = 0;

  /// Opacity of the whole window, from 0 to 1.
  virtual void setAlpha(double alpha) = 0;

  virtual void setHidden(bool hidden) = 0;

  /// Changes the alpha evenly over `duration` (zero: at once), then calls `completion`. A later animation
  /// replaces this one; the completion of this one is still called when it would have ended.
  virtual void animateAlpha(double alpha, std::chrono::milliseconds duration,
                            std::function<void()> completion) = 0;
};

}  // namespace platform
}  // namespace TalvoConsentSDK
