#pragma once

// The seam for the host application as the system sees it.

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

/// One instance of the host's interface. Main thread only.
class Scene {
 public:
  virtual ~Scene() = default;

  virtual ActivationState activationState() const = 0;

  /// Whether windows can be put on it.
  virtual bool isWindowScene() const = 0;

  /// A new, hidden window on this window scene.
  virtual std::shared_ptr<Window> makeWindow() = 0;
};

/// The host application. Main thread only. The defaults are those of a process without an interface.
class Application {
 public:
  virtual ~Application() = default;

  virtual std::vector<std::shared_ptr<Scene>> connectedScenes() { return {}; }

  /// The phone system's version whose behaviour the platform offers.
  virtual OperatingSystemVersion operatingSystemVersion() const { return {17, 0}; }

  /// Hands a URL to the system, to be opened outside the host.
  virtual void open(const URL&) {}

  /// The direction the host asks for; absent: that of the banner's own text.
  virtual std::optional<LayoutDirection> layoutDirection() const { return std::nullopt; }

  /// Whether the person asked for less motion.
  virtual bool reducesMotion() const { return false; }
};

}  // namespace platform
}  // namespace TalvoConsentSDK
