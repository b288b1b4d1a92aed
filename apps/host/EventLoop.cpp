#include "apps/host/EventLoop.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <chrono>

namespace TalvoConsentHost {

bool waitUntil(const std::function<bool()>& condition) {
  using namespace std::chrono_literals;
  QEventLoop loop;
  QTimer ticks;  // poll, since other threads may change the condition
  QObject::connect(&ticks, &QTimer::timeout, &loop, [&] {
    // With GLib's dispatcher, an inner loop may not deliver events posted before it began.
    QCoreApplication::sendPostedEvents();
    if (condition()) loop.quit();
  });
  ticks.start(2ms);
  QTimer::singleShot(90s, &loop, [&] { loop.exit(1); });
  return loop.exec() == 0;
}

}  // namespace TalvoConsentHost
