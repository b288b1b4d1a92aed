#include "apps/host/QtDisplay.h"

#include <QAccessible>
#include <QEvent>
#include <QEventLoop>
#include <QKeyEvent>
#include <QPainter>
#include <QPointingDevice>
#include <QTimer>
#include <QTouchEvent>
#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <utility>

#include "TalvoConsentSDK/base/NeverDestroyed.h"

#include "adapters/curl/CurlURLSession.h"
#include "adapters/qt/OverlaySurface.h"
#include "adapters/qt/QtMainActor.h"
#include "adapters/qt/QtPlatform.h"

#include "apps/host/Output.h"
#include "apps/host/Timing.h"

namespace TalvoConsentHost {

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using namespace TalvoConsentSDK::view;

namespace {

QtOptions qtOptions(const HostOptions& options) {
  QtOptions qt;
  qt.textScale = options.textScale;
  qt.layoutDirection = options.layoutDirection;
  if (options.highContrast) qt.highContrast = true;
  if (options.reducesMotion) qt.reducesMotion = true;
  qt.maxCacheBytes = 0;
  qt.safeArea = [insets = options.safeArea](const QWindow&) { return insets; };
  if (options.script) qt.openURL = [](const URL& url) { printObject({{"opened", url.text()}}); };
  return qt;
}

// Qt reads the pixel ratio when the application object is created.
int& withPixelRatio(const HostOptions& options, int& argc) {
  if (options.pixelRatio > 0) qputenv("QT_SCALE_FACTOR", QByteArray::number(options.pixelRatio));
  return argc;
}

// Calls Timing for each frame that a banner's window presents.
class BannerWatcher : public QObject {
 public:
  using QObject::QObject;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() != QEvent::PlatformSurface && event->type() != QEvent::Show) return false;
    auto* window = qobject_cast<QQuickWindow*>(watched);
    if (!window || !OverlaySurface::isOverlay(*window) || window->property("timed").toBool()) return false;
    window->setProperty("timed", true);
    connect(window, &QQuickWindow::frameSwapped, this, &Timing::framePresented, Qt::DirectConnection);
    return false;
  }
};

view::Role roleOf(QAccessibleInterface& item) {
  switch (item.role()) {
    case QAccessible::StaticText:
      return view::Role::text;
    case QAccessible::Heading:
      return view::Role::heading;
    case QAccessible::Graphic:
      return view::Role::image;
    case QAccessible::Button:
      return item.state().expandable ? view::Role::expander : view::Role::button;
    case QAccessible::Link:
      return view::Role::link;
    case QAccessible::CheckBox:
      return view::Role::toggle;
    case QAccessible::Dialog:
      return view::Role::dialog;
    default:
      return view::Role::none;
  }
}

ShownElement describe(QAccessibleInterface& item, const QPoint& origin) {
  const QAccessible::State state = item.state();
  const QRectF area = item.rect().translated(-origin);
  ShownElement shown;
  shown.role = roleOf(item);
  shown.name = item.text(QAccessible::Name).toStdString();
  if (state.checkable) shown.value = state.checked ? "on" : "off";
  if (state.expandable) shown.value = state.expanded ? "expanded" : "collapsed";
  shown.description = item.text(QAccessible::Description).toStdString();
  shown.isEnabled = !state.disabled;
  shown.frame = {area.x(), area.y(), area.width(), area.height()};
  shown.isFocused = state.focused;
  shown.isModal = state.modal;
  const QStringList actions = item.actionInterface() ? item.actionInterface()->actionNames() : QStringList();
  shown.canBeActivated = actions.contains(QAccessibleActionInterface::pressAction()) ||
                         actions.contains(QAccessibleActionInterface::toggleAction());
  return shown;
}

const AccessibleElement* find(const std::vector<AccessibleElement>& elements, const std::string& name,
                              std::optional<view::Role> role) {
  const auto found = std::ranges::find_if(elements, [&](const AccessibleElement& each) {
    return each.isControl() && each.name == name && (!role || each.role == *role);
  });
  return found == elements.end() ? nullptr : &*found;
}

std::optional<Qt::Key> toQtKey(const std::string& name) {
  static const std::map<std::string, Qt::Key> keys{
      {"Tab", Qt::Key_Tab},       {"Shift+Tab", Qt::Key_Backtab}, {"Space", Qt::Key_Space},
      {"Return", Qt::Key_Return}, {"Escape", Qt::Key_Escape},     {"Up", Qt::Key_Up},
      {"Down", Qt::Key_Down},     {"Left", Qt::Key_Left},         {"Right", Qt::Key_Right},
      {"Select", Qt::Key_Select}, {"Back", Qt::Key_Back}};
  const auto key = keys.find(name);
  return key == keys.end() ? std::nullopt : std::optional(key->second);
}

std::vector<ShownElement> shownBy(const std::vector<AccessibleElement>& elements) {
  std::vector<ShownElement> shown;
  for (const auto& each : elements) {
    shown.push_back(
        {each.role, each.name, each.value, each.description, each.language, each.isEnabled, each.frame});
  }
  return shown;
}

QPointingDevice& touchScreen() {
  static QPointingDevice& device =
      *new QPointingDevice(QStringLiteral("script"), 1, QInputDevice::DeviceType::TouchScreen,
                           QPointingDevice::PointerType::Finger, QInputDevice::Capability::Position, 1, 0);
  return device;
}

}  // namespace

QtDisplay::QtDisplay(const HostOptions& options, int& argc, char** argv)
    : application_(withPixelRatio(options, argc), argv),
      options_(qtOptions(options)),
      isHidden_(options.isHidden) {
  qApp->installEventFilter(new BannerWatcher(qApp));
  host_.setTitle(QStringLiteral("Aurora Daily"));
  host_.resize(options.size);
  environment_.textScale = options.textScale.value_or(1);
  environment_.textMeasurer = std::make_shared<QtTextMeasurer>(TextSettings{environment_.textScale});
  environment_.safeArea = options.safeArea;
}

Platform QtDisplay::makePlatform(const HostOptions& options) {
  Platform platform = makeQtPlatform(options.store, options_);
  if (options.certificates.empty()) return platform;
  CurlOptions curl;
  curl.certificates = options.certificates;
  platform.urlSession = std::make_shared<CurlURLSession>(curl);
  return platform;
}

void QtDisplay::addWindows(Platform& platform) {
  addQtWindows(platform, options_);
}

void QtDisplay::show(const AnyView& screen) {
  const LayoutDirection direction = options_.layoutDirection.value_or(LayoutDirection::leftToRight);
  host_.setController(std::make_shared<HostingController>(screen, direction), environment_);
  if (!isHidden_) host_.show();
}

void QtDisplay::waitUntilShown() {
  waitUntil([&] { return host_.isExposed() && !host_.isBusy(); });
}

bool QtDisplay::waitUntil(const Condition& condition) {
  using namespace std::chrono_literals;
  QEventLoop loop;
  QTimer ticks;  // poll, since other threads may change the condition
  QObject::connect(&ticks, &QTimer::timeout, &loop, [&] {
    // With GLib's dispatcher, an inner loop may not deliver events posted before it began.
    QCoreApplication::sendPostedEvents();
    if (condition()) loop.quit();
  });
  ticks.start(2ms);
  QTimer::singleShot(90s, &loop, [&] { loop.exit(1); });
  return loop.exec() == 0;
}

int QtDisplay::run() {
  return QGuiApplication::exec();
}

void QtDisplay::quit(int status) {
  QCoreApplication::exit(status);
}

std::shared_ptr<Executor> QtDisplay::turns() {
  // Threads that read scripts may outlive everything in main().
  static QtMainActor& actor = neverDestroyed<QtMainActor>();
  return {std::shared_ptr<void>(), &actor};
}

// Newest first.
std::vector<ViewWindow*> QtDisplay::banners() const {
  std::vector<ViewWindow*> shown;
  for (QWindow* window : QGuiApplication::allWindows()) {
    if (OverlaySurface::isOverlay(*window) && window->isVisible())
      shown.push_back(static_cast<ViewWindow*>(window));
  }
  return shown;
}

ViewWindow* QtDisplay::banner() const {
  const auto shown = banners();
  return shown.empty() ? nullptr : shown.front();
}

bool QtDisplay::isMoving() const {
  return host_.isBusy() || std::ranges::any_of(banners(), &ViewWindow::isBusy);
}

std::vector<ShownElement> QtDisplay::elements() {
  const ViewWindow* const shown = banner();
  if (!shown) return {};
  return shownBy(shown->controller()->accessibleElements(Layout::Rows::all));
}

std::vector<ShownElement> QtDisplay::hostElements() {
  return shownBy(host_.controller()->accessibleElements());
}

std::vector<ShownElement> QtDisplay::accessibleElements() {
  std::vector<ShownElement> shown;
  const ViewWindow* window = banner();
  if (!window) return shown;
  const QPoint origin = window->mapToGlobal(QPoint(0, 0));
  const std::function<void(QAccessibleInterface&)> addChildren = [&](QAccessibleInterface& parent) {
    for (int i = 0; i < parent.childCount(); ++i) {
      QAccessibleInterface& child = *parent.child(i);
      shown.push_back(describe(child, origin));
      addChildren(child);
    }
  };
  addChildren(*window->accessibleRoot());
  return shown;
}

bool QtDisplay::tap(const std::string& name, std::optional<view::Role> role) {
  ViewWindow* const newest = banner();
  ViewWindow& shown = newest ? *newest : host_;
  HostingController& controller = *shown.controller();
  const AccessibleElement* far = find(controller.accessibleElements(Layout::Rows::all), name, role);
  if (!far) return false;
  controller.reveal(*far);
  waitForFrames();
  const AccessibleElement* near = find(controller.accessibleElements(), name, role);
  if (!near) return false;
  const Rect& frame = near->control->frame;
  touch(shown, (near->clip ? frame.intersection(*near->clip) : frame).center(),
        near->role == view::Role::toggle);
  waitForFrames();
  return true;
}

bool QtDisplay::press(const std::string& key) {
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

std::optional<std::string> QtDisplay::focus() {
  const ViewWindow* shown = banner();
  if (!shown) return std::nullopt;
  HostingController& controller = *shown->controller();
  const auto focused = controller.focused();
  if (!focused) return std::nullopt;
  const auto& elements = controller.accessibleElements();
  const auto element = std::ranges::find(elements, *focused, &AccessibleElement::id);
  return element == elements.end() ? std::nullopt : std::optional(element->name);
}

bool QtDisplay::screenshot(const std::string& file) {
  waitForFrames();
  QImage picture = host_.grabWindow().convertToFormat(QImage::Format_ARGB32_Premultiplied);
  if (ViewWindow* shown = banner()) {
    QPainter painter(&picture);
    painter.drawImage(0, 0, shown->grabWindow());
  }
  return picture.save(toQString(file), "PNG");
}

void QtDisplay::touch(ViewWindow& window, Point point, bool isSwitch) {
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

}  // namespace TalvoConsentHost
