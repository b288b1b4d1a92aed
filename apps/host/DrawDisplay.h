#pragma once

// Shows the host and the banner as draw lists, which are drawn in memory. Needs no display.

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "adapters/draw/ConsentSurface.h"
#include "adapters/threads/MainQueue.h"

#include "apps/host/HostDisplay.h"
#include "testing/draw/Rasterizer.h"

namespace TalvoConsentHost {

class DrawDisplay : public HostDisplay {
 public:
  explicit DrawDisplay(const HostOptions& options);

  TalvoConsentSDK::Platform makePlatform(const HostOptions& options) override;
  void addWindows(TalvoConsentSDK::Platform& platform) override;
  void show(const TalvoConsentSDK::view::AnyView& screen) override;
  void waitUntilShown() override { waitForFrames(); }
  bool waitUntil(const Condition& condition) override;
  int run() override;
  void quit(int status) override { status_ = status; }
  std::shared_ptr<TalvoConsentSDK::platform::Executor> turns() override { return queue_; }
  bool isBannerShown() const override { return banner_.isShowing(); }
  bool isMoving() const override { return host_.needsFrame() || banner_.needsFrame(); }
  std::vector<ShownElement> elements() override { return accessibleElements(); }
  std::vector<ShownElement> hostElements() override { return shownOn(host_); }
  std::vector<ShownElement> accessibleElements() override;
  bool tap(const std::string& name, std::optional<TalvoConsentSDK::view::Role> role) override;
  bool press(const std::string& key) override;
  std::optional<std::string> focus() override;
  bool screenshot(const std::string& file) override;

 private:
  using Clock = std::chrono::steady_clock;

  void step();
  std::vector<ShownElement> shownOn(TalvoConsentSDK::ConsentSurface& surface) const;
  TalvoConsentSDK::ConsentSurface& top() { return banner_.isShowing() ? banner_ : host_; }

  const TalvoConsentSDK::SurfaceOptions options_;
  const std::shared_ptr<TalvoConsentSDK::MainQueue> queue_ = std::make_shared<TalvoConsentSDK::MainQueue>();
  TalvoConsentSDK::ConsentSurface host_;
  TalvoConsentSDK::ConsentSurface banner_;
  std::shared_ptr<TalvoConsentSDK::platform::Window> window_;  // the host's, on its own surface
  TalvoConsentSDK::Rasterizer screen_;
  Clock::time_point nextFrame_;
  std::optional<int> status_;
};

}  // namespace TalvoConsentHost
