#pragma once

// What the tests on Qt share: waiting in the event loop, and windows that are looked at.

#include <QGuiApplication>
#include <QTest>
#include <functional>

#include "adapters/qt/OverlaySurface.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

/// Runs the event loop until `condition` holds, for at most five seconds.
inline bool spinUntil(const std::function<bool()>& condition) {
  return QTest::qWaitFor(condition, 5000);
}

/// The banners' windows, newest first, hidden ones included.
inline std::vector<OverlaySurface*> overlays() {
  std::vector<OverlaySurface*> found;
  for (QWindow* window : QGuiApplication::allWindows()) {
    if (OverlaySurface::isOverlay(*window)) found.push_back(static_cast<OverlaySurface*>(window));
  }
  return found;
}

/// What a window shows at a point of it, in points.
inline QColor colorAt(QQuickWindow& window, const QPoint& point) {
  return window.grabWindow().pixelColor(point * window.effectiveDevicePixelRatio());
}

}  // namespace TalvoConsentSDK
