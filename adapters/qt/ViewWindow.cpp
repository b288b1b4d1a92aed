#include "adapters/qt/ViewWindow.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTouchEvent>
#include <QWheelEvent>
#include <utility>

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

using Clock = HostingController::Clock;

constexpr int frameInterval = 16;  // milliseconds
constexpr double wheelStep = 48;   // points per notch of a mouse wheel

Point toPoint(const QPointF& position) {
  return {position.x(), position.y()};
}

std::optional<Key> toKey(const QKeyEvent& event) {
  switch (event.key()) {
    case Qt::Key_Tab:
      return event.modifiers() & Qt::ShiftModifier ? Key::backtab : Key::tab;
    case Qt::Key_Backtab:
      return Key::backtab;
    case Qt::Key_Space:
      return Key::space;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Select:
      return Key::enter;
    case Qt::Key_Escape:
    case Qt::Key_Back:
      return Key::escape;
    case Qt::Key_Up:
      return Key::up;
    case Qt::Key_Down:
      return Key::down;
    case Qt::Key_Left:
      return Key::left;
    case Qt::Key_Right:
      return Key::right;
    case Qt::Key_PageUp:
      return Key::pageUp;
    case Qt::Key_PageDown:
      return Key::pageDown;
    case Qt::Key_Home:
      return Key::home;
    case Qt::Key_End:
      return Key::end;
    default:
      return std::nullopt;
  }
}

}  // namespace

ViewWindow::ViewWindow() : mount_(stage_), accessible_(*this) {
  stage_.setParentItem(contentItem());
  timer_.setTimerType(Qt::PreciseTimer);
  timer_.setSingleShot(true);
  QObject::connect(&timer_, &QTimer::timeout, this, [this] { drawFrame(); });
  QObject::connect(this, &QQuickWindow::widthChanged, this, [this] { resized(); });
  QObject::connect(this, &QQuickWindow::heightChanged, this, [this] { resized(); });
}

ViewWindow::~ViewWindow() {
  if (controller_) controller_->setOnNeedsFrame(nullptr);
}

void ViewWindow::setController(std::shared_ptr<HostingController> controller, ViewEnvironment environment) {
  if (controller_) controller_->setOnNeedsFrame(nullptr);
  controller_ = std::move(controller);
  controller_->setOnNeedsFrame([this] { scheduleFrame(); });
  accessible_.controllerChanged();
  setEnvironment(std::move(environment));
}

void ViewWindow::setEnvironment(ViewEnvironment environment) {
  environment_ = std::move(environment);
  mount_.setTextSettings({environment_.textScale});
  resized();
}

// Does not call deleteLater while a handler runs: if the handler runs an event loop, that would delete the
// window.
void ViewWindow::deleteAfterHandlers() {
  isDeletionPending_ = true;
  if (runningHandlers_ == 0) deleteLater();
}

void ViewWindow::scheduleFrame() {
  if (!timer_.isActive() || timer_.remainingTime() > 0) timer_.start(0);
}

void ViewWindow::drawFrame() {
  const HandlerScope scope(*this);
  const auto now = Clock::now();
  static const std::vector<Visual> nothing;
  const std::vector<Visual>& visuals = controller_ ? controller_->frame(now) : nothing;
  mount_.update(visuals);
  const bool goesOn = frameDrawn(now, visuals);
  if (!timer_.isActive() && (goesOn || (controller_ && controller_->isMoving()))) timer_.start(frameInterval);
  // Notify only when nothing moves, because a client that is notified may query every element.
  if (!goesOn && (!controller_ || controller_->isStill())) accessible_.notify();
}

void ViewWindow::resized() {
  stage_.setSize(size());
  if (!controller_) return;
  environment_.size = {static_cast<double>(width()), static_cast<double>(height())};
  environment_.safeArea = safeArea();
  controller_->setEnvironment(environment_);
}

bool ViewWindow::event(QEvent* event) {
  if (event->type() == QEvent::DeferredDelete) return QQuickWindow::event(event);
  const HandlerScope scope(*this);
  const auto controller = controller_;  // keeps it alive if its handlers replace it
  if (!controller) return QQuickWindow::event(event);
  switch (event->type()) {
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
      touch(static_cast<QTouchEvent&>(*event));
      break;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove:
      mouse(static_cast<QMouseEvent&>(*event));
      break;
    case QEvent::Wheel:
      wheel(static_cast<QWheelEvent&>(*event));
      break;
    case QEvent::KeyPress: {
      const auto key = toKey(static_cast<QKeyEvent&>(*event));
      if ((!key || !controller->press(*key)) && !passOn(*event)) return false;
      break;
    }
    case QEvent::FocusIn:
    case QEvent::Show: {
      const bool isHandled = QQuickWindow::event(event);
      accessible_.notifyFocus();
      return isHandled;
    }
    default:
      return QQuickWindow::event(event);
  }
  event->accept();
  return true;
}

void ViewWindow::touch(QTouchEvent& event) {
  const bool isCancel = event.type() == QEvent::TouchCancel;
  if (event.type() == QEvent::TouchBegin) {
    finger_.reset();
    isPassingOn_ = !controller_->covers(toPoint(event.points().front().scenePosition()));
  }
  if (isPassingOn_) {
    isPassingOn_ = !isCancel && event.type() != QEvent::TouchEnd;
    passOn(event);
    return;
  }
  if (isCancel) {
    finger_.reset();
    controller_->touchCancelled();
    return;
  }
  for (const QEventPoint& point : event.points()) {
    const Point position = toPoint(point.scenePosition());
    if (point.state() == QEventPoint::Pressed && !finger_) {
      finger_ = point.id();
      controller_->touchBegan(position, Clock::now());
    } else if (finger_ == point.id() && point.state() == QEventPoint::Updated) {
      controller_->touchMoved(position, Clock::now());
    } else if (finger_ == point.id() && point.state() == QEventPoint::Released) {
      finger_.reset();
      controller_->touchEnded(position, Clock::now());
    }
  }
}

void ViewWindow::mouse(QMouseEvent& event) {
  const Point position = toPoint(event.position());
  const bool isPress =
      event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonDblClick;
  const bool isMove = event.type() == QEvent::MouseMove;
  const bool isFirstPress = isPress && event.buttons() == event.button();
  const bool isHover = isMove && event.buttons() == Qt::NoButton;
  if (isFirstPress || isHover) isPassingOn_ = !controller_->covers(position);
  if (isPassingOn_) {
    isPassingOn_ = event.buttons() != Qt::NoButton;
    passOn(event);
    return;
  }
  if (isMove) {
    if (event.buttons().testFlag(Qt::LeftButton)) controller_->touchMoved(position, Clock::now());
  } else if (event.button() == Qt::LeftButton) {
    if (isPress) controller_->touchBegan(position, Clock::now());
    if (!isPress) controller_->touchEnded(position, Clock::now());
  }
}

void ViewWindow::wheel(QWheelEvent& event) {
  const Point position = toPoint(event.position());
  if (!controller_->covers(position)) {
    passOn(event);
    return;
  }
  const double notches = event.angleDelta().y() / 120.0;
  const double distance = event.pixelDelta().isNull() ? -notches * wheelStep : -event.pixelDelta().y();
  controller_->scroll(position, distance);
}

}  // namespace TalvoConsentSDK
