#include "apps/host/DrawDisplay.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "adapters/posix/PosixPlatform.h"

#include "apps/host/Output.h"
#include "apps/host/Timing.h"

namespace TalvoConsentHost {

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using namespace TalvoConsentSDK::view;

namespace {

constexpr std::chrono::milliseconds frameInterval(16);
constexpr std::chrono::milliseconds pollInterval(2);  // other threads may change a condition
constexpr std::chrono::seconds timeLimit(90);
constexpr std::int64_t finger = 1;

SurfaceOptions surfaceOptions(const HostOptions& options) {
  SurfaceOptions surface;
  const double scale = options.pixelRatio > 0 ? options.pixelRatio : 1;
  const auto pixels = [scale](int points) { return static_cast<std::int32_t>(std::lround(points * scale)); };
  surface.size = {pixels(options.size.width()), pixels(options.size.height()), scale};
  surface.settings.textScale = options.textScale.value_or(1);
  surface.settings.highContrast = options.highContrast;
  surface.settings.reducesMotion = options.reducesMotion;
  surface.settings.safeArea = options.safeArea;
  surface.settings.layoutDirection = options.layoutDirection;
  surface.settings.language = options.language;
  if (options.isHidden) surface.activationState = [] { return ActivationState::background; };
  surface.openURL = [](const URL& url) { printObject({{"opened", url.text()}}); };
  return surface;
}

bool isControl(const SurfaceElement& element) {
  return element.role == view::Role::button || element.role == view::Role::link ||
         element.role == view::Role::toggle || element.role == view::Role::expander;
}

const SurfaceElement* find(const std::vector<SurfaceElement>& elements, const std::string& name,
                           std::optional<view::Role> role) {
  const auto found = std::ranges::find_if(elements, [&](const SurfaceElement& each) {
    return isControl(each) && each.name == name && (!role || each.role == *role);
  });
  return found == elements.end() ? nullptr : &*found;
}

std::optional<SurfaceKey> toSurfaceKey(const std::string& name) {
  static const std::map<std::string, SurfaceKey> keys{
      {"Tab", SurfaceKey::tab},          {"Shift+Tab", SurfaceKey::backtab}, {"Space", SurfaceKey::space},
      {"Return", SurfaceKey::enter},     {"Escape", SurfaceKey::escape},     {"Up", SurfaceKey::up},
      {"Down", SurfaceKey::down},        {"Left", SurfaceKey::left},         {"Right", SurfaceKey::right},
      {"Select", SurfaceKey::padAccept}, {"Back", SurfaceKey::padCancel}};
  const auto key = keys.find(name);
  return key == keys.end() ? std::nullopt : std::optional(key->second);
}

}  // namespace

DrawDisplay::DrawDisplay(const HostOptions& options)
    : options_(surfaceOptions(options)),
      host_(options_),
      banner_(options_),
      screen_(options_.size.width, options_.size.height, {1, 1, 1}) {}

Platform DrawDisplay::makePlatform(const HostOptions& options) {
  CurlOptions curl;
  if (!options.certificates.empty()) curl.certificates = options.certificates;
  return makePosixPlatform(queue_, options.store, curl, 0);
}

void DrawDisplay::addWindows(Platform& platform) {
  banner_.addTo(platform);
}

// The host's own screen is a window on a surface of its own.
void DrawDisplay::show(const AnyView& screen) {
  Platform own = Platform::current();
  host_.addTo(own);
  window_ = own.application->connectedScenes().front()->makeWindow();
  const LayoutDirection direction = options_.settings.layoutDirection.value_or(LayoutDirection::leftToRight);
  window_->setRootViewController(std::make_shared<HostingController>(screen, direction));
  window_->makeKeyAndVisible();
}

void DrawDisplay::step() {
  queue_->drain();
  const Clock::time_point now = Clock::now();
  if (!isMoving() || now < nextFrame_) return;
  nextFrame_ = now + frameInterval;
  screen_.apply(host_.frame());
  const bool isDue = banner_.needsFrame();
  screen_.apply(banner_.frame());
  if (isDue && banner_.isShowing()) Timing::framePresented();
}

bool DrawDisplay::waitUntil(const Condition& condition) {
  const Clock::time_point end = Clock::now() + timeLimit;
  for (step(); !condition(); step()) {
    if (Clock::now() > end) return false;
    queue_->wait(pollInterval);
  }
  return true;
}

int DrawDisplay::run() {
  while (!status_) {
    step();
    queue_->wait(isMoving() ? pollInterval : frameInterval);
  }
  return *status_;
}

std::vector<ShownElement> DrawDisplay::accessibleElements() {
  return banner_.isShowing() ? shownOn(banner_) : std::vector<ShownElement>();
}

std::vector<ShownElement> DrawDisplay::shownOn(ConsentSurface& surface) const {
  std::vector<ShownElement> shown;
  const double scale = options_.size.scale;
  for (const SurfaceElement& each : surface.accessibleElements()) {
    const Rect& f = each.frame;
    shown.push_back({each.role,
                     each.name,
                     each.value,
                     each.description,
                     each.language,
                     each.isEnabled,
                     {f.x / scale, f.y / scale, f.width / scale, f.height / scale},
                     each.isFocused,
                     each.isModal,
                     (each.actions & static_cast<std::uint32_t>(SurfaceAction::activate)) != 0});
  }
  return shown;
}

bool DrawDisplay::tap(const std::string& name, std::optional<view::Role> role) {
  ConsentSurface& surface = top();
  const SurfaceElement* found = find(surface.accessibleElements(), name, role);
  if (!found) return false;
  surface.perform(found->id, SurfaceAction::reveal);
  waitForFrames();
  found = find(surface.accessibleElements(), name, role);
  if (!found) return false;
  const Rect whole{0, 0, static_cast<double>(options_.size.width), static_cast<double>(options_.size.height)};
  const Point place = found->frame.intersection(whole).center();
  const bool isSwitch = found->role == view::Role::toggle;
  surface.touchBegan(finger, place.x, place.y);
  waitForFrames();
  if (isSwitch) Timing::switchTapped();
  surface.touchEnded(finger, place.x, place.y);
  waitForFrames();
  return true;
}

bool DrawDisplay::press(const std::string& key) {
  const auto code = toSurfaceKey(key);
  if (!code) return false;
  banner_.keyPressed(*code);
  banner_.keyReleased(*code);
  waitForFrames();
  return true;
}

std::optional<std::string> DrawDisplay::focus() {
  for (const SurfaceElement& each : banner_.accessibleElements()) {
    if (each.isFocused) return each.name;
  }
  return std::nullopt;
}

bool DrawDisplay::screenshot(const std::string& file) {
  waitForFrames();
  screen_.clear();
  for (ConsentSurface* surface : {&host_, &banner_}) {
    const DrawList& list = surface->frame();
    screen_.apply(list);
    screen_.draw(list);
  }
  return screen_.save(file);
}

}  // namespace TalvoConsentHost
