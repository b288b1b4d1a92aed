#include "adapters/draw/SurfaceWindow.h"

#include <utility>

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

SurfaceWindow::SurfaceWindow(std::shared_ptr<SurfaceStage> stage) : stage_(std::move(stage)) {
  stage_->add(*this);
}

SurfaceWindow::~SurfaceWindow() {
  if (controller_) controller_->setOnNeedsFrame(nullptr);
  stage_->remove(*this);
}

void SurfaceWindow::setRootViewController(std::shared_ptr<RootViewController> controller) {
  if (controller_) controller_->setOnNeedsFrame(nullptr);
  controller_ = HostingController::of(controller);
  if (!controller_) return;
  controller_->setEnvironment(stage_->environment());
  controller_->setOnNeedsFrame([stage = std::weak_ptr(stage_)] {
    if (const auto known = stage.lock()) known->invalidate();
  });
  stage_->invalidate();
}

void SurfaceWindow::makeKeyAndVisible() {
  setHidden(false);
  stage_->raise(*this);
}

void SurfaceWindow::setAlpha(double alpha) {
  fade_ = {alpha, alpha, stage_->now(), std::chrono::milliseconds(0)};
  stage_->invalidate();
}

void SurfaceWindow::setHidden(bool hidden) {
  isVisible_ = !hidden;
  stage_->invalidate();
}

void SurfaceWindow::animateAlpha(double alpha, std::chrono::milliseconds duration,
                                 std::function<void()> completion) {
  if (stage_->isClosed()) return completion();
  const Clock::time_point now = stage_->now();
  fade_ = {alphaAt(now), alpha, now, duration};
  if (duration.count() <= 0) {
    stage_->invalidate();
    return completion();
  }
  completions_.push_back({now + duration, std::move(completion)});
  stage_->invalidate();
}

double SurfaceWindow::alphaAt(Clock::time_point now) const {
  if (now - fade_.start >= fade_.duration) return fade_.to;
  const std::chrono::duration<double> passed = now - fade_.start;
  return fade_.from + (fade_.to - fade_.from) * (passed / fade_.duration);
}

void SurfaceWindow::takeCompletions(std::vector<std::function<void()>>& due,
                                    std::optional<Clock::time_point> now) {
  std::erase_if(completions_, [&](Completion& completion) {
    if (now && completion.due > *now) return false;
    due.push_back(std::move(completion.call));
    return true;
  });
}

}  // namespace TalvoConsentSDK
