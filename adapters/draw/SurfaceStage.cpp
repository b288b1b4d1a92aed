#include "adapters/draw/SurfaceStage.h"

#include <algorithm>
#include <ranges>
#include <utility>

#include "TalvoConsentSDK/platform/Printer.h"

#include "adapters/draw/DrawTextMeasurer.h"
#include "adapters/draw/SurfaceWindow.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

SurfaceStage::SurfaceStage(SurfaceOptions options)
    : options_(std::move(options)),
      fonts_(std::make_shared<FontSet>(options_.fonts, options_.usesSystemFonts)),
      paragraphs_(std::make_shared<Paragraphs>(fonts_, options_.breakLines)),
      painter_(paragraphs_, options_.maxTextureSize) {
  setSettings(options_.settings);
}

void SurfaceStage::close() {
  isClosed_ = true;
  // The platform and windows may keep the stage, but what the host passed may be gone.
  options_.now = nullptr;
  options_.activationState = nullptr;
  options_.openURL = nullptr;
  options_.onNeedsFrame = nullptr;
  std::vector<std::function<void()>> completions;
  std::vector<std::shared_ptr<HostingController>> lost;
  for (SurfaceWindow* window : windows_) {
    window->takeCompletions(completions, std::nullopt);
    if (window->controller()) lost.push_back(window->controller());
  }
  // A completion may keep its window, and a window keeps the stage.
  const auto mainActor = std::exchange(mainActor_, nullptr);
  imageLoader_ = nullptr;
  for (auto& completion : completions) {
    if (mainActor) {
      postOrRun(mainActor, std::move(completion));
    } else {
      completion();
    }
  }
  for (const auto& controller : lost) controller->loseWindow();
}

void SurfaceStage::resize(const SurfaceSize& size) {
  if (size == options_.size) return;
  options_.size = size;
  updateEnvironments();
}

void SurfaceStage::setSettings(SurfaceSettings settings) {
  options_.settings = std::move(settings);
  options_.settings.textScale = std::clamp(options_.settings.textScale, 0.5, 5.0);
  paragraphs_->setLanguage(options_.settings.language);
  measurer_ = std::make_shared<DrawTextMeasurer>(paragraphs_, options_.settings.textScale);
  updateEnvironments();
}

void SurfaceStage::setPlatform(std::shared_ptr<Executor> mainActor,
                               std::shared_ptr<ImageLoader> imageLoader) {
  mainActor_ = std::move(mainActor);
  imageLoader_ = std::move(imageLoader);
}

void SurfaceStage::add(SurfaceWindow& window) {
  windows_.push_back(&window);
}

void SurfaceStage::remove(SurfaceWindow& window) {
  std::erase(windows_, &window);
  invalidate();
}

void SurfaceStage::raise(SurfaceWindow& window) {
  const auto found = std::ranges::find(windows_, &window);
  if (found != windows_.end()) std::rotate(found, found + 1, windows_.end());
  invalidate();
}

std::vector<std::shared_ptr<HostingController>> SurfaceStage::controllers() const {
  std::vector<std::shared_ptr<HostingController>> found;
  if (isClosed_) return found;
  for (const SurfaceWindow* window : std::views::reverse(windows_)) {
    if (window->isVisible() && window->controller()) found.push_back(window->controller());
  }
  return found;
}

Size SurfaceStage::pointSize() const {
  const SurfaceSize& size = options_.size;
  return {size.width / size.scale, size.height / size.scale};
}

ViewEnvironment SurfaceStage::environment() const {
  ViewEnvironment environment;
  environment.textMeasurer = measurer_;
  environment.imageLoader = imageLoader_;
  environment.textScale = options_.settings.textScale;
  environment.size = pointSize();
  environment.safeArea = options_.settings.safeArea;
  environment.reducesMotion = options_.settings.reducesMotion;
  environment.highContrast = options_.settings.highContrast;
  return environment;
}

void SurfaceStage::updateEnvironments() {
  if (!(options_.size.scale > 0)) options_.size.scale = 1;
  isRepainted_ = true;
  for (const SurfaceWindow* window : windows_) {
    if (window->controller()) window->controller()->setEnvironment(environment());
  }
  invalidate();
}

void SurfaceStage::invalidate() {
  if (isClosed_ || std::exchange(isStale_, true)) return;
  if (options_.onNeedsFrame) platform::callHost(options_.onNeedsFrame);
}

bool SurfaceStage::needsFrame() const {
  return isStale_ || isMoving_;
}

const DrawList& SurfaceStage::frame() {
  if (!needsFrame()) {
    painter_.releasePixels();  // a banner may stay on the screen for long
    return painter_.repeat();
  }
  const Clock::time_point time = now();
  isStale_ = isMoving_ = false;
  std::vector<Drawn> current;
  std::vector<std::function<void()>> completions;
  const auto windows = windows_;  // a measurer or a picture loader of the host may add some
  for (SurfaceWindow* window : windows) {
    window->takeCompletions(completions, time);
    if (window->hasCompletions()) isMoving_ = true;
    const auto controller = window->controller();
    if (!window->isVisible() || !controller) continue;
    current.push_back({controller->frame(time), window->alphaAt(time)});
    if (controller->isMoving()) isMoving_ = true;
  }
  const DrawList* list = nullptr;
  if (std::exchange(isRepainted_, false) || current != drawn_) {
    drawn_ = std::move(current);
    std::vector<VisualLayer> layers;
    for (const Drawn& each : drawn_) layers.push_back({&each.visuals, each.alpha});
    list = &painter_.paint(layers, options_.size, options_.settings.textScale);
  } else {
    list = &painter_.repeat();
  }
  if (!isMoving_) fonts_->releasePages();
  for (const auto& completion : completions) completion();
  return *list;
}

void SurfaceStage::forgetTextures() {
  painter_.forgetTextures();
  isRepainted_ = true;
  invalidate();
}

}  // namespace TalvoConsentSDK
