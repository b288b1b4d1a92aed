// Runs the tests under a QGuiApplication. What Qt warns of fails the test that made it.

#include <QGuiApplication>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

// What the offscreen platform says it cannot do, and nothing here depends on.
bool isExpected(const QString& message) {
  return message.startsWith(QLatin1String("This plugin does not support"));
}

void note(QtMsgType type, const QMessageLogContext&, const QString& message) {
  if (type != QtDebugMsg && !isExpected(message)) ADD_FAILURE() << "Qt: " << message.toStdString();
}

}  // namespace

int main(int argc, char** argv) {
  ::testing::InitGoogleMock(&argc, argv);
  if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();  // the build asks, and may have no screen
  qInstallMessageHandler(&note);
  const QGuiApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
