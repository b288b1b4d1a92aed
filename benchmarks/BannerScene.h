#pragma once

// A banner with any number of vendors, in a real window.

#include <QGuiApplication>
#include <cstddef>
#include <memory>
#include <string>

#include "TalvoConsentSDK/view/HostingController.h"

#include "adapters/qt/ViewWindow.h"

namespace TalvoConsentBenchmarks {

/// Shows a banner with a given number of vendors in a window of 390 x 844 points and draws its frames on
/// demand.
class BannerScene {
 public:
  explicit BannerScene(std::size_t vendorCount, bool reducesMotion = true);

  /// Runs the event loop until the next frame has been presented.
  void presentFrame();

  /// Runs the event loop until nothing moves.
  void settle();

  /// Activates the first control with this role and name, which must exist.
  void use(TalvoConsentSDK::view::Role role, const std::string& name);

  /// Scrolls at the middle of the window.
  void scroll(double distance);

  TalvoConsentSDK::view::HostingController& controller() { return *controller_; }

 private:
  std::shared_ptr<TalvoConsentSDK::view::HostingController> controller_;
  TalvoConsentSDK::ViewWindow window_;
  int framesPresented_ = 0;
};

}  // namespace TalvoConsentBenchmarks
