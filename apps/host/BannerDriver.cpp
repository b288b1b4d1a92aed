#include "apps/host/BannerDriver.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QPointingDevice>
#include <QTouchEvent>
#include <algorithm>
#include <utility>

#include "adapters/qt/OverlaySurface.h"

#include "apps/host/HostScreen.h"
#include "apps/host/Timing.h"

namespace TalvoConsentHost {

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using namespace TalvoConsentSDK::view;

namespace {

struct Target {
  std::optional<Role> role;
  std::string name;
};

Target parse(const std::string& text) {
  using view::Role;
  for (const Role role : {Role::button, Role::link, Role::toggle, Role::expander}) {
    const std::string prefix = std::string(rawValue(role)) + ":";
    if (text.starts_with(prefix)) return {role, text.substr(prefix.size())};
  }
  return {std::nullopt, text};
}

JSONObject describe(const AccessibleElement& element, const std::string& bannersLanguage) {
  const Rect& f = element.frame;
  JSONObject object{{"role", std::string(rawValue(element.role))},
                    {"name", element.name},
                    {"enabled", element.isEnabled},
                    {"rect", JSONArray{f.x, f.y, f.width, f.height}}};
  if (!element.value.empty()) object["value"] = element.value;
  if (!element.description.empty()) object["description"] = element.description;
  if (element.language != bannersLanguage) object["language"] = element.language;
  return object;
}

const AccessibleElement* find(const std::vector<AccessibleElement>& elements, const Target& target) {
  const auto found = std::ranges::find_if(elements, [&](const AccessibleElement& each) {
    return each.isControl() && each.name == target.name && (!target.role || each.role == *target.role);
  });
  return found == elements.end() ? nullptr : &*found;
}

std::optional<Qt::Key> toQtKey(const std::string& key) {
  if (key == "Tab") return Qt::Key_Tab;
  if (key == "Shift+Tab") return Qt::Key_Backtab;
  if (key == "Space") return Qt::Key_Space;
  if (key == "Return") return Qt::Key_Return;
  if (key == "Escape") return Qt::Key_Escape;
  if (key == "Up") return Qt::Key_Up;
  if (key == "Down") return Qt::Key_Down;
  if (key == "Left") return Qt::Key_Left;
  if (key == "Right") return Qt::Key_Right;
  if (key == "Select") return Qt::Key_Select;
  if (key == "Back") return Qt::Key_Back;
  return std::nullopt;
}

QPointingDevice& touchScreen() {
  static QPointingDevice& device =
      *new QPointingDevice(QStringLiteral("script"), 1, QInputDevice::DeviceType::TouchScreen,
                           QPointingDevice::PointerType::Finger, QInputDevice::Capability::Position, 1, 0);
  return device;
}

}  // namespace

BannerDriver::BannerDriver(ViewWindow& host, std::function<bool(const std::function<bool()>&)> wait)
    : host_(host), wait_(std::move(wait)) {}

// Newest first.
std::vector<ViewWindow*> BannerDriver::banners() const {
  std::vector<ViewWindow*> shown;
  for (QWindow* window : QGuiApplication::allWindows()) {
    if (OverlaySurface::isOverlay(*window) && window->isVisible())
      shown.push_back(static_cast<ViewWindow*>(window));
  }
  return shown;
}

ViewWindow* BannerDriver::banner() const {
  const auto shown = banners();
  return shown.empty() ? nullptr : shown.front();
}

bool BannerDriver::isMoving() const {
  return host_.isBusy() || std::ranges::any_of(banners(), &ViewWindow::isBusy);
}

JSONArray BannerDriver::view() {
  JSONArray array;
  const ViewWindow* shown = banner();
  if (!shown) return array;
  const auto& elements = shown->controller()->accessibleElements(Layout::Rows::all);
  for (const auto& element : elements) array.push_back(describe(element, elements.front().language));
  return array;
}

std::optional<std::string> BannerDriver::tap(const std::string& text) {
  const Target target = parse(text);
  ViewWindow* const newest = banner();
  ViewWindow& shown = newest ? *newest : host_;
  HostingController& controller = *shown.controller();
  const AccessibleElement* far = find(controller.accessibleElements(Layout::Rows::all), target);
  if (!far) return std::nullopt;
  controller.reveal(*far);
  waitForFrames();
  const AccessibleElement* near = find(controller.accessibleElements(), target);
  if (!near) return std::nullopt;
  const Rect& frame = near->control->frame;
  touch(shown, (near->clip ? frame.intersection(*near->clip) : frame).center(), near->role == Role::toggle);
  waitForFrames();
  return target.name;
}

JSONArray BannerDriver::busy() {
  JSONArray names;
  for (const auto& element : host_.controller()->accessibleElements()) {
    if (element.description == busyDescription) names.push_back(element.name);
  }
  return names;
}

bool BannerDriver::press(const std::string& key) {
  const auto code = toQtKey(key);
  if (!code) return false;
  const Qt::KeyboardModifiers modifiers = *code == Qt::Key_Backtab ? Qt::ShiftModifier : Qt::NoModifier;
  for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
    QKeyEvent event(type, *code, modifiers);
    if (ViewWindow* shown = banner()) QCoreApplication::sendEvent(shown, &event);
  }
  waitForFrames();
  return true;
}

std::optional<std::string> BannerDriver::focus() {
  const ViewWindow* shown = banner();
  if (!shown) return std::nullopt;
  HostingController& controller = *shown->controller();
  const auto focused = controller.focused();
  if (!focused) return std::nullopt;
  const auto& elements = controller.accessibleElements();
  const auto element = std::ranges::find(elements, *focused, &AccessibleElement::id);
  return element == elements.end() ? std::nullopt : std::optional(element->name);
}

bool BannerDriver::screenshot(const std::string& file) {
  waitForFrames();
  QImage picture = host_.grabWindow().convertToFormat(QImage::Format_ARGB32_Premultiplied);
  if (ViewWindow* shown = banner()) {
    QPainter painter(&picture);
    painter.drawImage(0, 0, shown->grabWindow());
  }
  return picture.save(toQString(file), "PNG");
}

void BannerDriver::touch(ViewWindow& window, Point point, bool isSwitch) {
  const QPointF position(point.x, point.y);
  const QPointF global = window.mapToGlobal(position);
  const auto send = [&](QEvent::Type type, QEventPoint::State state) {
    QTouchEvent event(type, &touchScreen(), Qt::NoModifier, {QEventPoint(1, state, position, global)});
    QCoreApplication::sendEvent(&window, &event);
  };
  send(QEvent::TouchBegin, QEventPoint::Pressed);
  waitForFrames();
  if (isSwitch) Timing::switchTapped();
  send(QEvent::TouchEnd, QEventPoint::Released);
}

void BannerDriver::waitForFrames() {
  wait_([this] { return !isMoving(); });
}

}  // namespace TalvoConsentHost
