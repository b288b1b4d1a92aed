#include "adapters/qt/OverlaySurface.h"

#include <QGuiApplication>
#include <QRegion>
#include <QSGImageNode>
#include <QScreen>
#include <algorithm>
#include <utility>

namespace TalvoConsentSDK {

namespace {

constexpr const char* overlayProperty = "talvoConsentOverlay";

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

OverlaySurface::OverlaySurface(QWindow* host, const QtOptions& options)
    : ViewWindow(options.text), host_(host), options_(options), kind_(overlayKind()) {
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
  if (host_) host_->installEventFilter(this);
  follow();
}

bool OverlaySurface::isOverlay(const QWindow& window) {
  return window.property(overlayProperty).toBool();
}

Insets OverlaySurface::safeArea() const {
  return options_.safeArea && host_ ? options_.safeArea(*host_) : Insets();
}

void OverlaySurface::present() {
  isAwaitingHost_ = kind_ == OverlayKind::child && host_ && !host_->isExposed();
  if (isAwaitingHost_) return;
  follow();
  // A backdrop keeps everything else of the host out of reach as well.
  const bool coversHost =
      controller() && controller()->covers({1, 1}) && controller()->covers({width() - 1.0, height() - 1.0});
  if (kind_ != OverlayKind::child) setModality(coversHost ? Qt::WindowModal : Qt::NonModal);
  if (kind_ == OverlayKind::opaque) {
    takeHostPicture();
    if (!coversHost) maskToContent();
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
  const auto now = Clock::now();
  fade_ = {alphaAt(now), alpha, now, duration};
  completions_.push_back({now + duration, std::move(completion)});
  if (!stepFade(now)) return;
  setOnFrame([this](Clock::time_point time) { return stepFade(time); });
}

bool OverlaySurface::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::Move:
    case QEvent::Resize:
      follow();
      if (kind_ == OverlayKind::opaque && isVisible()) takeHostPicture();
      break;
    case QEvent::Expose:
      if (isAwaitingHost_ && host_->isExposed()) present();
      break;
    case QEvent::KeyPress:
      // A child window is not given the keyboard on Wayland; the host has it.
      if (kind_ == OverlayKind::child && isVisible()) return QCoreApplication::sendEvent(this, event);
      break;
    default:
      break;
  }
  return ViewWindow::eventFilter(watched, event);
}

void OverlaySurface::passOn(QEvent& event) {
  const bool isKey = event.type() == QEvent::KeyPress;
  if (!host_ || modality() != Qt::NonModal || (isKey && kind_ == OverlayKind::child)) return;
  QCoreApplication::sendEvent(host_, &event);
}

// The keys go back to the host, and there to what they acted on.
void OverlaySurface::hideEvent(QHideEvent* event) {
  ViewWindow::hideEvent(event);
  if (host_ && QGuiApplication::focusWindow() == this) host_->requestActivate();
}

void OverlaySurface::follow() {
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

// An opaque window without a backdrop shows no more than the card and its shadow, so that the host stays
// alive around it.
void OverlaySurface::maskToContent() {
  QRectF content;
  for (const Visual& visual : controller()->frame(Clock::now())) {
    const auto* box = std::get_if<visual::BoxShadow>(&visual.content);
    const double margin = box ? 3 * box->shadow.radius : 0;
    const Rect& f = visual.frame;
    content |= QRectF(f.x, f.y, f.width, f.height).adjusted(-margin, -margin, margin, margin);
  }
  setMask(QRegion(content.toAlignedRect()));
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
