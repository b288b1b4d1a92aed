#pragma once

// The host application as Qt sees it: its scenes are top-level windows.

#include <memory>
#include <optional>
#include <vector>

#include "TalvoConsentSDK/platform/Application.h"
#include "TalvoConsentSDK/platform/ImageLoader.h"

#include "adapters/qt/QtOptions.h"

namespace TalvoConsentSDK {

class QtApplication : public platform::Application {
 public:
  QtApplication(QtOptions options, std::shared_ptr<platform::ImageLoader> imageLoader);

  /// The host's top-level windows and dialogs, the active one first. Leaves out the banner's own windows,
  /// windows with a transient parent, and other types such as popups.
  std::vector<std::shared_ptr<platform::Scene>> connectedScenes() override;

  platform::OperatingSystemVersion operatingSystemVersion() const override { return {17, 0}; }
  void open(const URL& url) override;
  std::optional<platform::LayoutDirection> layoutDirection() const override {
    return options_.layoutDirection;
  }
  bool reducesMotion() const override;

 private:
  QtOptions options_;
  const std::shared_ptr<platform::ImageLoader> imageLoader_;
};

}  // namespace TalvoConsentSDK
