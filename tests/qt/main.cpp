// Runs the tests with a QGuiApplication. A warning from Qt fails the test that causes it.

#include <QGuiApplication>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

// Messages of the offscreen platform about features that it lacks and that no test depends on.
bool isExpected(const QString& message) {
  return message.startsWith(QLatin1String("This plugin does not support"));
}

void note(QtMsgType type, const QMessageLogContext&, const QString& message) {
  if (type != QtDebugMsg && !isExpected(message)) ADD_FAILURE() << "Qt: " << message.toStdString();
}

}  // namespace

int main(int argc, char** argv) {
  ::testing::InitGoogleMock(&argc, argv);
  if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();  // the build lists the tests and may have no screen
  qInstallMessageHandler(&note);
  const QGuiApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
