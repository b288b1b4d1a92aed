#include "adapters/qt/Translucency.h"

#include <QGuiApplication>

#if QT_CONFIG(xcb) && defined(Q_OS_LINUX)
#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>
#endif

namespace TalvoConsentSDK {

namespace {

#if QT_CONFIG(xcb) && defined(Q_OS_LINUX)
// A compositor owns the selection _NET_WM_CM_Sn of its screen (Extended Window Manager Hints).
bool hasX11Compositor() {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (!x11) return false;
  xcb_connection_t* connection = x11->connection();
  constexpr char name[] = "_NET_WM_CM_S0";
  const std::unique_ptr<xcb_intern_atom_reply_t, void (*)(void*)> atom(
      xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 0, sizeof name - 1, name), nullptr),
      &std::free);
  if (!atom) return false;
  const std::unique_ptr<xcb_get_selection_owner_reply_t, void (*)(void*)> owner(
      xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr),
      &std::free);
  return owner && owner->owner != XCB_WINDOW_NONE;
}
#else
bool hasX11Compositor() {
  return false;
}
#endif

}  // namespace

OverlayKind overlayKind() {
  const QString platform = QGuiApplication::platformName();
  if (platform.startsWith(QStringLiteral("wayland"))) return OverlayKind::child;
  if (platform == QStringLiteral("xcb"))
    return hasX11Compositor() ? OverlayKind::translucent : OverlayKind::opaque;
  for (const char* blending : {"windows", "cocoa", "ios", "android"}) {
    if (platform == QLatin1String(blending)) return OverlayKind::translucent;
  }
  return OverlayKind::opaque;
}

}  // namespace TalvoConsentSDK
