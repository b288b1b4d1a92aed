#include "adapters/qt/PortalSettings.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QFile>
#include <QGuiApplication>
#include <QStandardPaths>

namespace TalvoConsentSDK {

namespace {

using Namespaces = QMap<QString, QVariantMap>;

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");

const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString desktop = QStringLiteral("org.gnome.desktop.interface");
const QString accessibility = QStringLiteral("org.gnome.desktop.a11y.interface");

// Without an address, D-Bus would start a bus of its own.
bool hasSessionBus() {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  return qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
         QFile::exists(folder + QStringLiteral("/bus"));
}

class PortalSettings : public SystemSettings {
  Q_OBJECT

 public:
  PortalSettings() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    qDBusRegisterMetaType<Namespaces>();
    bus.connect(service, path, interface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    auto* const starts =
        new QDBusServiceWatcher(service, bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(starts, &QDBusServiceWatcher::serviceRegistered, this, &PortalSettings::read);
    read();
  }

 private:
  Q_SLOT void settingChanged(const QString& space, const QString& key, const QDBusVariant& value) {
    values_[space][key] = value.variant();
    publish();
  }

  // The value of a setting, if it has the type that the portal documents.
  template <class T>
  std::optional<T> value(const QString& space, const char* key) const {
    const QVariant found = values_.value(space).value(QLatin1String(key));
    return found.metaType() == QMetaType::fromType<T>() ? std::optional(found.value<T>()) : std::nullopt;
  }

  void read() {
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("ReadAll"));
    call << QStringList{appearance, desktop, accessibility};
    auto* const watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
      const QDBusPendingReply<Namespaces> reply = *watcher;
      watcher->deleteLater();
      if (reply.isError()) return;
      values_ = reply.value();
      publish();
    });
  }

  void publish() {
    DisplayPreferences now;
    // On X11, desktops multiply the resolution of fonts by this factor, and Qt scales the whole window by it.
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
      now.textScale = value<double>(desktop, "text-scaling-factor");
    now.highContrast = value<bool>(accessibility, "high-contrast");
    if (value<uint>(appearance, "contrast") == 1U) now.highContrast = true;
    if (const auto animates = value<bool>(desktop, "enable-animations")) now.reducesMotion = !*animates;
    if (value<uint>(appearance, "reduced-motion") == 1U) now.reducesMotion = true;
    set(now);
  }

  Namespaces values_;
};

}  // namespace

std::shared_ptr<SystemSettings> portalSettings() {
  if (!hasSessionBus()) return std::make_shared<SystemSettings>();
  return std::make_shared<PortalSettings>();
}

}  // namespace TalvoConsentSDK

#include "PortalSettings.moc"
