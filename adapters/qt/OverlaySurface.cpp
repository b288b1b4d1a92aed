#include "adapters/qt/OverlaySurface.h"

#include <QGuiApplication>
#include <QSGImageNode>
#include <QScreen>
#include <algorithm>
#include <utility>

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

constexpr const char* overlayProperty = "talvoConsentOverlay";
// The time for the host to redraw itself after a resize: about two frames.
constexpr std::chrono::milliseconds redrawTime(40);

class PictureItem : public QQuickItem {
 public:
  explicit PictureItem(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
    setZ(-1);
  }

  void show(const QImage& picture, const QSizeF& size) {
    picture_ = picture;
    setSize(size);
    update();
  }

 protected:
  QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override {
    delete old;
    if (picture_.isNull()) return nullptr;
    QSGImageNode* node = window()->createImageNode();
    node->setTexture(window()->createTextureFromImage(picture_));
    node->setOwnsTexture(true);
    node->setRect(QRectF(QPointF(0, 0), size()));
    return node;
  }

 private:
  QImage picture_;
};

QImage pictureOf(QWindow& window) {
  if (auto* quick = qobject_cast<QQuickWindow*>(&window)) return quick->grabWindow();
  return window.screen()->grabWindow(window.winId()).toImage();
}

}  // namespace

OverlaySurface::OverlaySurface(QWindow* host, const QtOptions& options, OverlayKind kind)
    : host_(host), options_(options), kind_(kind) {
  setProperty(overlayProperty, true);
  setColor(Qt::transparent);
  QSurfaceFormat surfaceFormat = format();
  surfaceFormat.setAlphaBufferSize(8);
  setFormat(surfaceFormat);
  if (kind_ == OverlayKind::child) {
    setParent(host);
  } else {
    setFlags(Qt::Dialog | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint);
    setTransientParent(host);
  }
  if (kind_ == OverlayKind::opaque) hostPicture_ = new PictureItem(contentItem());
  hostIsRedrawn_.setSingleShot(true);
  hostIsRedrawn_.setInterval(redrawTime);
  QObject::connect(&hostIsRedrawn_, &QTimer::timeout, this, [this] { takeHostPicture(); });
  if (host_) {
    host_->installEventFilter(this);
    QObject::connect(host_, &QObject::destroyed, this, [this] {
      const auto lost = controller();  // the call may replace the banner
      if (lost) lost->loseWindow();
    });
  }
  followHost();
}

// Posts the completions that have not run yet to the event loop: a host that is destroyed also destroys its
// child windows, even during a fade.
OverlaySurface::~OverlaySurface() {
  for (Completion& each : completions_) {
    QMetaObject::invokeMethod(qApp, std::move(each.call), Qt::QueuedConnection);
  }
}

bool OverlaySurface::isOverlay(const QWindow& window) {
  return window.property(overlayProperty).toBool();
}

void OverlaySurface::present() {
  isWanted_ = true;
  appear();
}

void OverlaySurface::conceal() {
  isWanted_ = false;
  hide();
}

void OverlaySurface::appear() {
  if (!isWanted_ || !host_ || !host_->isVisible()) return;
  // A child window shown before its parent is exposed never gets a frame on Wayland.
  if (kind_ == OverlayKind::child && !host_->isExposed()) return;
  followHost();
  coversHost_ =
      controller() && controller()->covers({1, 1}) && controller()->covers({width() - 1.0, height() - 1.0});
  if (kind_ != OverlayKind::child) setModality(coversHost_ ? Qt::WindowModal : Qt::NonModal);
  if (kind_ == OverlayKind::opaque) {
    takeHostPicture();
    create();  // setMask needs the system's window
    if (controller() && !coversHost_) setMask(visibleRegion(controller()->frame(Clock::now())));
  }
  show();
  if (kind_ != OverlayKind::child) requestActivate();
}

void OverlaySurface::setAlpha(double alpha) {
  fade_ = {alpha, alpha, Clock::now(), std::chrono::milliseconds(0)};
  stage().setOpacity(alpha);
}

void OverlaySurface::animateAlpha(double alpha, std::chrono::milliseconds duration,
                                  std::function<void()> completion) {
  if (!host_) return completion();
  const auto now = Clock::now();
  fade_ = {alphaAt(now), alpha, now, duration};
  completions_.push_back({now + duration, std::move(completion)});
  if (stepFade(now)) scheduleFrame();
}

bool OverlaySurface::event(QEvent* event) {
  // The window does not refuse to close, because that would keep the application from quitting. If a user
  // closes it, it reopens and handles this as the Escape key.
  if (event->type() == QEvent::Close) {
    const auto comeBack = [this] {
      appear();
      if (isVisible() && controller()) controller()->press(Key::escape);
    };
    QMetaObject::invokeMethod(this, comeBack, Qt::QueuedConnection);
  }
  return ViewWindow::event(event);
}

bool OverlaySurface::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::Resize:
      if (kind_ == OverlayKind::opaque) hostIsRedrawn_.start();
      followHost();
      break;
    case QEvent::Move:
      followHost();
      break;
    case QEvent::Hide:
      hide();
      break;
    case QEvent::Expose:
      if (!isVisible()) QMetaObject::invokeMethod(this, &OverlaySurface::appear, Qt::QueuedConnection);
      break;
    case QEvent::KeyPress:
      // On Wayland, a child window does not get the keyboard focus; the host keeps it.
      if (kind_ == OverlayKind::child && isVisible()) return QCoreApplication::sendEvent(this, event);
      break;
    case QEvent::KeyRelease:
    case QEvent::InputMethod:
      if (kind_ == OverlayKind::child && isVisible() && coversHost_) return true;
      break;
    default:
      break;
  }
  return ViewWindow::eventFilter(watched, event);
}

bool OverlaySurface::passOn(QEvent& event) {
  if (!host_ || coversHost_) return true;
  const bool isKey = event.type() == QEvent::KeyPress;
  if (isKey && kind_ == OverlayKind::child) return false;  // the host has it already
  // A user who clicks outside the banner expects to type there.
  if (event.type() == QEvent::MouseButtonPress || event.type() == QEvent::TouchBegin)
    host_->requestActivate();
  QCoreApplication::sendEvent(host_, &event);
  return event.isAccepted();
}

SafeArea OverlaySurface::safeArea() const {
  return options_.safeArea && host_ ? options_.safeArea(*host_) : SafeArea();
}

// Returns the keyboard focus to the host, which gives it to the item that had it before. If another banner
// has replaced this one, gives it the focus instead.
void OverlaySurface::hideEvent(QHideEvent* event) {
  ViewWindow::hideEvent(event);
  if (!host_ || QGuiApplication::focusWindow() != this) return;
  for (QWindow* window : QGuiApplication::topLevelWindows()) {
    const bool isBanner = window != this && isOverlay(*window) && window->isVisible();
    if (isBanner && static_cast<OverlaySurface*>(window)->host_ == host_) return window->requestActivate();
  }
  host_->requestActivate();
}

void OverlaySurface::followHost() {
  if (!host_) return;
  if (kind_ == OverlayKind::child) {
    setGeometry({QPoint(0, 0), host_->size()});
  } else {
    setGeometry({host_->mapToGlobal(QPoint(0, 0)), host_->size()});
  }
}

void OverlaySurface::takeHostPicture() {
  if (host_ && hostPicture_) static_cast<PictureItem*>(hostPicture_.data())->show(pictureOf(*host_), size());
}

// Returns the region to which an opaque window is limited: the card and its shadow, so that the user can
// still see and use the host around it. With a backdrop it is empty, which means the whole window.
QRegion OverlaySurface::visibleRegion(const std::vector<Visual>& visuals) const {
  if (coversHost_) return {};
  QRectF content;
  for (const Visual& visual : visuals) {
    const auto* box = std::get_if<visual::BoxShadow>(&visual.content);
    const double margin = box ? 3 * box->shadow.radius : 0;
    const Rect f = visual.clip ? visual.frame.intersection(*visual.clip) : visual.frame;
    content |= QRectF(f.x, f.y, f.width, f.height).adjusted(-margin, -margin, margin, margin);
  }
  return content.toAlignedRect();
}

bool OverlaySurface::frameDrawn(Clock::time_point now, const std::vector<Visual>& visuals) {
  if (kind_ == OverlayKind::opaque && isVisible()) {
    const QRegion region = visibleRegion(visuals);
    if (region != mask()) setMask(region);
  }
  return stepFade(now);
}

bool OverlaySurface::stepFade(Clock::time_point now) {
  stage().setOpacity(alphaAt(now));
  std::vector<Completion> due;
  std::erase_if(completions_, [&](Completion& completion) {
    if (completion.due > now) return false;
    due.push_back(std::move(completion));
    return true;
  });
  const bool goesOn = !completions_.empty();
  for (const Completion& completion : due) completion.call();
  return goesOn;
}

double OverlaySurface::alphaAt(Clock::time_point now) const {
  if (now - fade_.start >= fade_.duration) return fade_.to;
  const std::chrono::duration<double> passed = now - fade_.start;
  return fade_.from + (fade_.to - fade_.from) * (passed / fade_.duration);
}

}  // namespace TalvoConsentSDK
