#include "apps/host/EventLoop.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <chrono>

namespace TalvoConsentHost {

bool waitUntil(const std::function<bool()>& condition) {
  using namespace std::chrono_literals;
  QEventLoop loop;
  QTimer ticks;  // what the condition asks about may change on another thread
  QObject::connect(&ticks, &QTimer::timeout, &loop, [&] {
    // An inner loop of GLib's dispatcher was seen to leave alone what had been posted before it began.
    QCoreApplication::sendPostedEvents();
    if (condition()) loop.quit();
  });
  ticks.start(2ms);
  QTimer::singleShot(90s, &loop, [&] { loop.exit(1); });
  return loop.exec() == 0;
}

}  // namespace TalvoConsentHost
