#pragma once

// The host application as a surface shows it: one scene, which is the surface.

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/platform/Application.h"

#include "adapters/draw/SurfaceStage.h"

namespace TalvoConsentSDK {

class SurfaceApplication : public platform::Application {
 public:
  explicit SurfaceApplication(std::shared_ptr<SurfaceStage> stage) : stage_(std::move(stage)) {}

  std::vector<std::shared_ptr<platform::Scene>> connectedScenes() override;
  platform::OperatingSystemVersion operatingSystemVersion() const override { return {17, 0}; }
  void open(const URL& url) override;
  std::optional<platform::LayoutDirection> layoutDirection() const override {
    return stage_->options().settings.layoutDirection;
  }
  bool reducesMotion() const override { return stage_->options().settings.reducesMotion; }

 private:
  const std::shared_ptr<SurfaceStage> stage_;
};

}  // namespace TalvoConsentSDK
