#pragma once

// The banner's window: a layer of a surface.

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "TalvoConsentSDK/platform/Window.h"

#include "adapters/draw/SurfaceStage.h"

namespace TalvoConsentSDK {

class SurfaceWindow : public platform::Window {
 public:
  using Clock = SurfaceStage::Clock;

  explicit SurfaceWindow(std::shared_ptr<SurfaceStage> stage);
  ~SurfaceWindow() override;

  void setRootViewController(std::shared_ptr<platform::RootViewController> controller) override;
  void setWindowLevel(platform::WindowLevel) override {
  }  // ignored: it always lies above the host's own frame
  void setBackgroundColor(platform::Color) override {}  // ignored: the host's frame is the background
  void makeKeyAndVisible() override;
  void setAlpha(double alpha) override;
  void setHidden(bool hidden) override;
  void animateAlpha(double alpha, std::chrono::milliseconds duration,
                    std::function<void()> completion) override;

  const std::shared_ptr<view::HostingController>& controller() const { return controller_; }
  bool isVisible() const { return isVisible_; }
  double alphaAt(Clock::time_point now) const;
  bool hasCompletions() const { return !completions_.empty(); }

  /// Appends the completions of the fades that have ended by `now`; all of them if it is absent.
  void takeCompletions(std::vector<std::function<void()>>& due, std::optional<Clock::time_point> now);

 private:
  struct Fade {
    double from = 1;
    double to = 1;
    Clock::time_point start;
    std::chrono::milliseconds duration{0};
  };
  struct Completion {
    Clock::time_point due;
    std::function<void()> call;
  };

  const std::shared_ptr<SurfaceStage> stage_;
  std::shared_ptr<view::HostingController> controller_;
  bool isVisible_ = false;
  Fade fade_;
  std::vector<Completion> completions_;
};

}  // namespace TalvoConsentSDK
