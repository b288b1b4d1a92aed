// A Qt Quick host. Its only code for consent is one line here, and the ConsentSdk and the ConsentGate in
// Host.qml.
//
//   qml-host URL [STORE]

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlContext>

#include <bindings/qml/ConsentSdk.h>

int main(int count, char** arguments) {
  const QGuiApplication application(count, arguments);
  const QStringList given = QGuiApplication::arguments();
  if (given.size() < 2) return qCritical("usage: qml-host URL [STORE]"), 2;

  TalvoConsentSDK::registerQmlTypes();
  QQmlApplicationEngine engine;
  engine.rootContext()->setContextProperty(QStringLiteral("url"), given[1]);
  engine.rootContext()->setContextProperty(QStringLiteral("storeFile"), given.value(2));
  // A path; an app would load it from its resources.
  engine.load(QUrl::fromLocalFile(QStringLiteral(HOST_QML)));
  return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}
