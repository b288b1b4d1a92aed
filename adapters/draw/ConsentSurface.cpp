#include "adapters/draw/ConsentSurface.h"

#include <algorithm>
#include <optional>
#include <typeinfo>
#include <utility>

#include "TalvoConsentSDK/platform/DownloadingImageLoader.h"
#include "TalvoConsentSDK/platform/Printer.h"

#include "adapters/draw/PictureDecoder.h"
#include "adapters/draw/SurfaceApplication.h"
#include "adapters/draw/SurfaceGestures.h"
#include "adapters/draw/SurfaceStage.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

constexpr double wheelStep = 48;  // points per notch of a mouse wheel

std::uint32_t bit(SurfaceAction action) {
  return static_cast<std::uint32_t>(action);
}

std::uint32_t actionsOf(const AccessibleElement& element) {
  std::uint32_t actions = bit(SurfaceAction::reveal);
  if (element.isControl() && element.isEnabled)
    actions |= bit(SurfaceAction::activate) | bit(SurfaceAction::focus);
  return actions;
}

}  // namespace

class ConsentSurface::Implementation {
 public:
  explicit Implementation(SurfaceOptions options)
      : stage(std::make_shared<SurfaceStage>(std::move(options))), gestures(stage) {}
  ~Implementation() { stage->close(); }

  Point point(double x, double y) const {
    const double scale = stage->options().size.scale;
    // Further away nothing is different, and sums of distances stay finite.
    constexpr double far = 1e6;
    return {std::clamp(x, -far, far) / scale, std::clamp(y, -far, far) / scale};
  }

  std::shared_ptr<HostingController> top() const {
    const auto controllers = stage->controllers();
    return controllers.empty() ? nullptr : controllers.front();
  }

  // What the accessible elements depend on.
  struct Source {
    const HostingController* controller = nullptr;
    std::uint64_t revision = 0;
    std::optional<ElementId> focused;
    friend bool operator==(const Source&, const Source&) = default;
  };

  Source source() const {
    const auto controller = top();
    if (!controller) return {};
    return {controller.get(), controller->accessibleRevision(), controller->focused()};
  }

  const std::shared_ptr<SurfaceStage> stage;
  SurfaceGestures gestures;
  std::vector<SurfaceElement> elements;
  Source lastSource;
  std::uint64_t revision = 0;
};

ConsentSurface::ConsentSurface(SurfaceOptions options)
    : implementation_(std::make_unique<Implementation>(std::move(options))) {}

ConsentSurface::~ConsentSurface() = default;

void ConsentSurface::addTo(Platform& platform) {
  Platform filledIn = platform;
  filledIn.fillIn();
  const Platform missing;
  const URLSession &session = *filledIn.urlSession, &none = *missing.urlSession;
  if (typeid(session) == typeid(none))
    callHost([&] { filledIn.printer->print("⚠️ No logo: addTo was called before the session was set"); });
  implementation_->stage->setPlatform(
      filledIn.mainActor, std::make_shared<DownloadingImageLoader>(filledIn.urlSession, filledIn.mainActor,
                                                                   filledIn.background, decodedPicture));
  platform.application = std::make_shared<SurfaceApplication>(implementation_->stage);
}

void ConsentSurface::resize(const SurfaceSize& size) {
  implementation_->stage->resize(size);
}

void ConsentSurface::setSettings(SurfaceSettings settings) {
  implementation_->stage->setSettings(std::move(settings));
}

bool ConsentSurface::isShowing() const {
  return implementation_->top() != nullptr;
}

bool ConsentSurface::isModal() {
  return implementation_->gestures.coversHost();
}

bool ConsentSurface::needsFrame() const {
  return implementation_->stage->needsFrame() || implementation_->gestures.isHeld();
}

const DrawList& ConsentSurface::frame() {
  implementation_->gestures.step();
  return implementation_->stage->frame();
}

void ConsentSurface::forgetTextures() {
  implementation_->stage->forgetTextures();
}

bool ConsentSurface::touchBegan(std::int64_t finger, double x, double y) {
  return implementation_->gestures.touchBegan(finger, implementation_->point(x, y));
}

bool ConsentSurface::touchMoved(std::int64_t finger, double x, double y) {
  return implementation_->gestures.touchMoved(finger, implementation_->point(x, y));
}

bool ConsentSurface::touchEnded(std::int64_t finger, double x, double y) {
  return implementation_->gestures.touchEnded(finger, implementation_->point(x, y), false);
}

bool ConsentSurface::touchCancelled(std::int64_t finger) {
  return implementation_->gestures.touchEnded(finger, {}, true);
}

bool ConsentSurface::mouseMoved(double x, double y) {
  return implementation_->gestures.mouseMoved(implementation_->point(x, y));
}

bool ConsentSurface::mousePressed(MouseButton button, double x, double y) {
  return implementation_->gestures.mousePressed(button, implementation_->point(x, y));
}

bool ConsentSurface::mouseReleased(MouseButton button, double x, double y) {
  return implementation_->gestures.mouseReleased(button, implementation_->point(x, y));
}

bool ConsentSurface::scrolled(double x, double y, double pixels) {
  const double points = pixels / implementation_->stage->options().size.scale;
  return implementation_->gestures.scrolled(implementation_->point(x, y), points);
}

bool ConsentSurface::wheelTurned(double x, double y, double notches) {
  return implementation_->gestures.scrolled(implementation_->point(x, y), notches * wheelStep);
}

bool ConsentSurface::keyPressed(SurfaceKey key) {
  return implementation_->gestures.keyPressed(key);
}

bool ConsentSurface::keyReleased(SurfaceKey key) {
  return implementation_->gestures.keyReleased(key);
}

bool ConsentSurface::stickMoved(ControllerStick stick, double x, double y) {
  return implementation_->gestures.stickMoved(stick, x, y);
}

const std::vector<SurfaceElement>& ConsentSurface::accessibleElements() {
  const auto& stage = implementation_->stage;
  auto& elements = implementation_->elements;
  elements.clear();
  const auto controller = implementation_->top();
  if (!controller) return elements;
  const double scale = stage->options().size.scale;
  const auto focused = controller->focused();
  for (const AccessibleElement& each : controller->accessibleElements(Layout::Rows::all)) {
    const Rect& f = each.frame;
    elements.push_back({each.id,
                        each.role,
                        each.name,
                        each.value,
                        each.description,
                        each.language.empty() ? stage->options().settings.language : each.language,
                        {f.x * scale, f.y * scale, f.width * scale, f.height * scale},
                        each.isEnabled,
                        focused == each.id,
                        each.isModal,
                        actionsOf(each)});
  }
  return elements;
}

std::uint64_t ConsentSurface::accessibleRevision() {
  const auto now = implementation_->source();
  if (std::exchange(implementation_->lastSource, now) != now) ++implementation_->revision;
  return implementation_->revision;
}

bool ConsentSurface::perform(std::uint64_t id, SurfaceAction action) {
  const auto controller = implementation_->top();
  if (!controller) return false;
  const auto elements = controller->accessibleElements(Layout::Rows::all);
  const auto found = std::ranges::find(elements, id, &AccessibleElement::id);
  if (found == elements.end() || (actionsOf(*found) & bit(action)) == 0) return false;
  switch (action) {
    case SurfaceAction::focus:
      controller->focus(id);
      return true;
    case SurfaceAction::reveal:
      controller->reveal(*found);
      return true;
    case SurfaceAction::activate:
      controller->reveal(*found);
      return controller->activate(id);
  }
  return false;
}

}  // namespace TalvoConsentSDK
