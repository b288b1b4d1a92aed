#include "testing/fakes/FakeApplication.h"

#include <algorithm>
#include <utility>

#include "testing/fakes/FixedWidthMeasurer.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

void FakeWindow::setRootViewController(std::shared_ptr<RootViewController> newController) {
  controller = HostingController::of(newController);
  ViewEnvironment environment;
  environment.textMeasurer = std::make_shared<FixedWidthMeasurer>();
  environment.size = {390, 844};
  controller->setEnvironment(std::move(environment));
}

void FakeWindow::animateAlpha(double target, std::chrono::milliseconds duration,
                              std::function<void()> completion) {
  fades.push_back(duration);
  running_.push_back({target, std::move(completion)});
}

void FakeWindow::finishAnimations() {
  for (const Fade& fade : std::exchange(running_, {})) {
    alpha = fade.target;
    fade.completion();
  }
}

bool FakeWindow::tap(Role role, const std::string& name) {
  const auto& elements = controller->accessibleElements(Layout::Rows::all);
  const auto control = std::ranges::find_if(elements, [&](const AccessibleElement& each) {
    return each.isControl() && each.isEnabled && each.role == role && each.name == name;
  });
  return control != elements.end() && controller->activate(control->id);
}

std::shared_ptr<Window> FakeScene::makeWindow() {
  auto window = std::make_shared<FakeWindow>();
  // A weak pointer keeps the memory of its window allocated, so drop the expired ones.
  std::erase_if(windows_, [](const auto& each) { return each.expired(); });
  windows_.push_back(window);
  return window;
}

std::vector<std::shared_ptr<FakeWindow>> FakeScene::windows() const {
  std::vector<std::shared_ptr<FakeWindow>> alive;
  for (const auto& window : windows_) {
    if (auto held = window.lock()) alive.push_back(std::move(held));
  }
  return alive;
}

}  // namespace TalvoConsentSDK
