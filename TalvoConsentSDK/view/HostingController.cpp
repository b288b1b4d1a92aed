#include "TalvoConsentSDK/view/HostingController.h"

#include <algorithm>
#include <utility>

#include "TalvoConsentSDK/view/ViewNode.h"

namespace TalvoConsentSDK {
namespace view {

namespace {

// After the last movement. A wheel or a trackpad does not say when it ends.
constexpr std::chrono::milliseconds settleDelay(200);

// Keeps a flag set during the lifetime of this object.
class ScopedFlag {
 public:
  explicit ScopedFlag(bool& flag) : flag_(flag) { flag_ = true; }
  ScopedFlag(const ScopedFlag&) = delete;
  ScopedFlag& operator=(const ScopedFlag&) = delete;
  ~ScopedFlag() { flag_ = false; }

 private:
  bool& flag_;
};

}  // namespace

HostingController::HostingController(AnyView rootView, LayoutDirection direction)
    : rootView_(std::move(rootView)),
      direction_(direction),
      tree_([this] {
        renderIsStale_ = true;
        requestFrame();
      }),
      animations_(tree_.memory()),
      layout_(tree_, environment_, animations_) {}

void HostingController::setEnvironment(ViewEnvironment environment) {
  if (environment.textMeasurer != environment_.textMeasurer) sizesAreStale_ = true;
  environment_ = std::move(environment);
  environment_.layoutDirection = direction_;
  animations_.setHasMotion(!environment_.reducesMotion);
  layout_.settle();
  layoutIsStale_ = true;
  requestFrame();
}

const std::vector<Visual>& HostingController::frame(Clock::time_point now) {
  if (isUpdating_) return visuals_;
  animations_.beginFrame(now);
  if (layout_.isMoving()) layoutIsStale_ = true;
  if (motion_.isFlinging() && applyScroll(*motion_.region(), motion_.step(now))) hasScrolled_ = true;
  if (std::exchange(hasScrolled_, false)) settleTime_ = now + settleDelay;
  if (settlesSoon() && now >= *settleTime_ && !layout_.isMoving()) {
    settleTime_.reset();
    layout_.settle();
    layoutIsStale_ = true;
  }
  update();
  const VisualState state{pressed_, focusIsVisible_ ? focused_ : std::nullopt, layout_.scrollRegions()};
  visuals_ = visuals(tree_, environment_, state, animations_);
  animations_.endFrame();
  return visuals_;
}

bool HostingController::covers(Point point) {
  if (isUpdating_) return true;
  update();
  return isCovered(tree_, point);
}

const std::vector<AccessibleElement>& HostingController::accessibleElements(Layout::Rows rows) {
  update();
  if (rows == Layout::Rows::nearby || isUpdating_) return accessible_;
  if (!allAccessible_) {
    layout_.run(keptElements(), Layout::Rows::all);
    allAccessible_ = collectAccessibleElements(tree_, environment_.controlScale());
    layout_.run(keptElements());  // removes the distant rows again, but now their heights are known
    accessible_ = collectAccessibleElements(tree_, environment_.controlScale());
    requestFrame();
  }
  return *allAccessible_;
}

std::uint64_t HostingController::accessibleRevision() {
  update();
  return accessibleRevision_;
}

bool HostingController::activate(ElementId control) {
  const AccessibleElement* element = findElement(control);
  if (!element || !element->isControl() || !element->isEnabled) return false;
  performAction(*element->control);
  return true;
}

// Brings rendering and layout up to date. Both call host code: the text measurer, the printer and the image
// loader. If that code runs an event loop, it may call in here again; it then sees the previous state.
void HostingController::update() {
  if (isUpdating_) return;
  const ScopedFlag updating(isUpdating_);
  if (std::exchange(sizesAreStale_, false)) forgetAllSizes(tree_.root());
  if (std::exchange(renderIsStale_, false)) {
    layout_.forgetRegions();
    tree_.render(rootView_);
    layoutIsStale_ = true;
  }
  while (std::exchange(layoutIsStale_, false)) {  // again if the focus moved to where the user has to scroll
    layout_.run(keptElements());
    accessible_ = collectAccessibleElements(tree_, environment_.controlScale());
    allAccessible_.reset();
    ++accessibleRevision_;
    settleFocus();
    loadImages(tree_.root());
  }
}

// The focused and the pressed element are kept, however far away they are scrolled.
std::vector<ElementId> HostingController::keptElements() const {
  std::vector<ElementId> kept;
  if (focused_) kept.push_back(*focused_);
  if (pressed_) kept.push_back(*pressed_);
  return kept;
}

void HostingController::loadImages(Element& element) {
  if (const auto* image = std::get_if<node::AsyncImage>(&element.view.node().content)) {
    auto& loaded = tree_.memory().get<LoadedImage>(element.id, [] { return LoadedImage(); });
    if (loaded.url != image->url && environment_.imageLoader) {
      loaded = {image->url, nullptr};
      const URL url = image->url;
      environment_.imageLoader->load(url, [weak = std::weak_ptr(self_), id = element.id,
                                           url](const Result<std::shared_ptr<const Image>>& result) {
        const auto self = weak.lock();
        if (!self || !result) return;
        HostingController& controller = **self;
        controller.tree_.memory().get<LoadedImage>(id, [] { return LoadedImage(); }) = {url, *result};
        controller.sizesAreStale_ = controller.layoutIsStale_ = true;
        controller.requestFrame();
      });
    }
  }
  forEachChild(element, [this](Element& child) { loadImages(child); });
}

void HostingController::requestFrame() {
  if (needsFrame_) needsFrame_();
}

const AccessibleElement* HostingController::findElement(ElementId id) {
  for (const Layout::Rows rows : {Layout::Rows::nearby, Layout::Rows::all}) {
    const auto& elements = accessibleElements(rows);
    const auto found = std::ranges::find(elements, id, &AccessibleElement::id);
    if (found != elements.end()) return &*found;
  }
  return nullptr;
}

}  // namespace view
}  // namespace TalvoConsentSDK
