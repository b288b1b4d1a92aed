// The banner follows the settings of the system. The tests have a session bus of their own, with a portal
// that they play themselves.

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <cstdlib>

#include <unistd.h>

#include "TalvoConsentSDK/view/Views.h"

#include "adapters/qt/QtApplication.h"

#include "tests/qt/QtTesting.h"

namespace TalvoConsentSDK {

namespace {

using Namespaces = QMap<QString, QVariantMap>;

const QString portalName = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString portalInterface = QStringLiteral("org.freedesktop.portal.Settings");

// Takes "NAMESPACE KEY VALUE" apart, where the value is a bool, a whole number, a number with a point, or a
// text.
std::tuple<QString, QString, QVariant> parsedSetting(const std::string& text) {
  const Texts parts = words(text);
  const QString value = QString::fromStdString(parts.at(2));
  bool isNumber = false;
  const double number = value.toDouble(&isNumber);
  QVariant parsed = value;
  if (value == QLatin1String("true") || value == QLatin1String("false"))
    parsed = value == QLatin1String("true");
  if (isNumber) parsed = value.contains(QLatin1Char('.')) ? QVariant(number) : QVariant(value.toUInt());
  if (value == QLatin1String("nan")) parsed = std::nan("");
  return {QString::fromStdString(parts.at(0)), QString::fromStdString(parts.at(1)), parsed};
}

class Portal : public QDBusVirtualObject {
 public:
  Portal() : bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal"))) {
    qDBusRegisterMetaType<Namespaces>();
    EXPECT_TRUE(bus.registerVirtualObject(portalPath, this));
    EXPECT_TRUE(bus.registerService(portalName));
  }
  ~Portal() override { QDBusConnection::disconnectFromBus(QStringLiteral("portal")); }

  void change(const std::string& setting) {
    const auto [space, key, value] = parsedSetting(setting);
    values[space][key] = value;
    QDBusMessage signal =
        QDBusMessage::createSignal(portalPath, portalInterface, QStringLiteral("SettingChanged"));
    signal << space << key << QVariant::fromValue(QDBusVariant(value));
    EXPECT_TRUE(bus.send(signal));
  }

  QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& call, const QDBusConnection& connection) override {
    if (call.member() != QLatin1String("ReadAll")) return false;
    Namespaces asked;
    for (const QString& each : call.arguments().at(0).toStringList()) {
      if (values.contains(each)) asked[each] = values[each];
    }
    ++reads;
    return connection.send(fails ? call.createErrorReply(QDBusError::Failed, QStringLiteral("no settings"))
                                 : call.createReply(QVariant::fromValue(asked)));
  }

  QDBusConnection bus;
  Namespaces values;
  bool fails = false;
  int reads = 0;
};

// A banner's window with one text.
class SystemSettingsTest : public ::testing::Test {
 protected:
  ~SystemSettingsTest() override {
    window.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  void show(const QtOptions& options) {
    host.resize(300, 300);
    host.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&host));
    application = std::make_unique<QtApplication>(options, nullptr);
    window = application->connectedScenes().at(0)->makeWindow();
    controller = std::make_shared<HostingController>(
        text("Wide", {.font = {TextStyle::body, FontWeight::bold}, .color = Color::black()}));
    window->setRootViewController(controller);
    window->makeKeyAndVisible();
  }

  // Such as "1.5 contrast still": the text's scale, and what else the banner follows.
  std::string followed() {
    std::ostringstream all;
    all << controller->environment().textScale << (controller->environment().highContrast ? " contrast" : "")
        << (controller->environment().reducesMotion ? " still" : "");
    EXPECT_EQ(application->reducesMotion(), controller->environment().reducesMotion);
    return all.str();
  }

  bool follows(const std::string& expected) {
    return spinUntil([&] { return followed() == expected; });
  }

  // How many pixels of the text are drawn.
  int inked() {
    EXPECT_TRUE(spinUntil([&] { return !overlays().front()->isBusy(); }));
    const QImage picture = overlays().front()->grabWindow();
    int count = 0;
    for (int y = 0; y < picture.height(); ++y) {
      for (int x = 0; x < picture.width(); ++x) count += picture.pixelColor(x, y).lightness() < 100 ? 1 : 0;
    }
    return count;
  }

  QQuickWindow host;
  std::unique_ptr<QtApplication> application;
  std::shared_ptr<HostingController> controller;
  std::shared_ptr<Window> window;
};

TEST_F(SystemSettingsTest, FollowsThePortal) {
  Portal portal;
  portal.change("org.gnome.desktop.interface text-scaling-factor 1.5");
  portal.change("org.gnome.desktop.interface enable-animations false");
  portal.change("org.gnome.desktop.a11y.interface high-contrast true");
  show({});
  EXPECT_TRUE(follows("1.5 contrast still")) << followed();
  const int large = inked();
  for (const auto& [change, expected] : tableOf<2>("platform/portal.txt")) {
    portal.change(change);
    EXPECT_TRUE(follows(expected)) << change << ": " << followed();
    if (followed() == "1 contrast still") {
      EXPECT_GT(large, inked() * 3 / 2) << "texts are drawn anew";
    }
  }
}

TEST_F(SystemSettingsTest, TheHostOverridesTheSystem) {
  QtOptions options;
  options.systemSettings = std::make_shared<SystemSettings>();
  show(options);
  EXPECT_EQ(followed(), "1");
  options.systemSettings->set({2, true, true});
  EXPECT_EQ(followed(), "2 contrast still") << "a host that reads the settings of a phone";
  window.reset();
  options.textScale = 1.25;
  options.highContrast = false;
  options.reducesMotion = false;
  show(options);
  options.systemSettings->set({3, true, {}});
  EXPECT_EQ(followed(), "1.25");
}

TEST_F(SystemSettingsTest, WorksWithoutAPortal) {
  show({});
  EXPECT_EQ(followed(), "1") << "before the portal answers";
  Portal portal;
  portal.change("org.gnome.desktop.interface text-scaling-factor 2.0");
  EXPECT_TRUE(follows("2")) << "it started later";
  window.reset();
  portal.fails = true;
  portal.reads = 0;
  show({});
  EXPECT_TRUE(spinUntil([&] { return portal.reads > 0; }));
  EXPECT_EQ(followed(), "1");
}

}  // namespace
}  // namespace TalvoConsentSDK

// Runs itself on a private session bus.
int main(int argc, char** argv) {
  ::testing::InitGoogleMock(&argc, argv);
  if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();  // the build lists the tests and may have no bus
  if (!std::getenv("TALVO_PRIVATE_BUS")) {
    setenv("TALVO_PRIVATE_BUS", "1", 1);
    const std::string filter = "--gtest_filter=" + GTEST_FLAG_GET(filter);
    execlp("dbus-run-session", "dbus-run-session", "--", argv[0], filter.c_str(), nullptr);
    std::perror("dbus-run-session");
    return 1;
  }
  const QGuiApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
