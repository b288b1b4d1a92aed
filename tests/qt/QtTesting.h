#pragma once

// What the tests on Qt share: waiting in the event loop, and looking at windows.

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

/// The windows of banners, newest first, including hidden ones.
inline std::vector<OverlaySurface*> overlays() {
  std::vector<OverlaySurface*> found;
  for (QWindow* window : QGuiApplication::allWindows()) {
    if (OverlaySurface::isOverlay(*window)) found.push_back(static_cast<OverlaySurface*>(window));
  }
  return found;
}

/// The colour that a window shows at a position, which is in points.
inline QColor colorAt(QQuickWindow& window, const QPoint& point) {
  return window.grabWindow().pixelColor(point * window.effectiveDevicePixelRatio());
}

}  // namespace TalvoConsentSDK
