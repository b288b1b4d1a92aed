#pragma once

// The seam for the host application, as the operating system sees it.

#include <memory>
#include <optional>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/URL.h"
#include "TalvoConsentSDK/platform/Window.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

enum class ActivationState { unattached, foregroundInactive, foregroundActive, background };

enum class LayoutDirection { leftToRight, rightToLeft };

struct OperatingSystemVersion {
  int major = 0;
  int minor = 0;
  friend auto operator<=>(const OperatingSystemVersion&, const OperatingSystemVersion&) = default;
};

/// One instance of the host's user interface. Main thread only.
class Scene {
 public:
  virtual ~Scene() = default;

  virtual ActivationState activationState() const = 0;

  /// Whether it can hold windows.
  virtual bool isWindowScene() const = 0;

  /// Returns a new, hidden window on this window scene.
  virtual std::shared_ptr<Window> makeWindow() = 0;
};

/// The host application. Main thread only.
class Application {
 public:
  virtual ~Application() = default;

  virtual std::vector<std::shared_ptr<Scene>> connectedScenes() = 0;

  /// The version of the phone operating system that this platform behaves like.
  virtual OperatingSystemVersion operatingSystemVersion() const = 0;

  /// Hands a URL to the system, to be opened outside the host.
  virtual void open(const URL& url) = 0;

  /// The layout direction that the host asks for. If absent, the banner follows its own text.
  virtual std::optional<LayoutDirection> layoutDirection() const = 0;

  /// Whether the user asked for less motion.
  virtual bool reducesMotion() const = 0;
};

}  // namespace platform
}  // namespace TalvoConsentSDK
