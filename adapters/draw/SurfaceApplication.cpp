#include "adapters/draw/SurfaceApplication.h"

#include "TalvoConsentSDK/platform/Printer.h"

#include "adapters/draw/SurfaceWindow.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

class SurfaceScene : public Scene {
 public:
  explicit SurfaceScene(std::shared_ptr<SurfaceStage> stage) : stage_(std::move(stage)) {}

  ActivationState activationState() const override {
    const SurfaceOptions& options = stage_->options();
    if (options.size.width <= 0 || options.size.height <= 0) return ActivationState::background;
    if (!options.activationState) return ActivationState::foregroundActive;
    const ActivationState state = askHost(ActivationState::background, options.activationState);
    return stage_->isClosed() ? ActivationState::background
                              : state;  // the host may have destroyed the surface
  }

  bool isWindowScene() const override { return true; }
  std::shared_ptr<Window> makeWindow() override { return std::make_shared<SurfaceWindow>(stage_); }

 private:
  const std::shared_ptr<SurfaceStage> stage_;
};

}  // namespace

std::vector<std::shared_ptr<Scene>> SurfaceApplication::connectedScenes() {
  if (stage_->isClosed()) return {};
  return {std::make_shared<SurfaceScene>(stage_)};
}

void SurfaceApplication::open(const URL& url) {
  if (stage_->options().openURL) return stage_->options().openURL(url);
  platform::print("The host opens no URLs: " + url.text());
}

}  // namespace TalvoConsentSDK
