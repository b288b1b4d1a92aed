#pragma once

// Shows the host in a window of Qt's, and the banner in another one above it.

#include <QGuiApplication>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "adapters/qt/QtOptions.h"
#include "adapters/qt/ViewWindow.h"

#include "apps/host/HostDisplay.h"

namespace TalvoConsentHost {

class QtDisplay : public HostDisplay {
 public:
  QtDisplay(const HostOptions& options, int& argc, char** argv);

  TalvoConsentSDK::Platform makePlatform(const HostOptions& options) override;
  void addWindows(TalvoConsentSDK::Platform& platform) override;
  void show(const TalvoConsentSDK::view::AnyView& screen) override;
  void waitUntilShown() override;
  bool waitUntil(const Condition& condition) override;
  int run() override;
  void quit(int status) override;
  std::shared_ptr<TalvoConsentSDK::platform::Executor> turns() override;
  bool isBannerShown() const override { return banner() != nullptr; }
  bool isMoving() const override;
  std::vector<ShownElement> elements() override;
  std::vector<ShownElement> hostElements() override;
  std::vector<ShownElement> accessibleElements() override;
  bool tap(const std::string& name, std::optional<TalvoConsentSDK::view::Role> role) override;
  bool press(const std::string& key) override;
  std::optional<std::string> focus() override;
  bool screenshot(const std::string& file) override;

 private:
  std::vector<TalvoConsentSDK::ViewWindow*> banners() const;
  TalvoConsentSDK::ViewWindow* banner() const;
  void touch(TalvoConsentSDK::ViewWindow& window, TalvoConsentSDK::platform::Point point, bool isSwitch);

  const QGuiApplication application_;
  const TalvoConsentSDK::QtOptions options_;
  TalvoConsentSDK::ViewWindow host_;
  TalvoConsentSDK::view::ViewEnvironment environment_;
  const bool isHidden_;
};

}  // namespace TalvoConsentHost
