#include "adapters/qt/QtMainActor.h"

#include <QMetaObject>
#include <QObject>
#include <utility>

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

using namespace platform;

QtMainActor::QtMainActor() : receiver_(std::make_unique<QObject>()) {}

QtMainActor::~QtMainActor() = default;

void QtMainActor::post(std::function<void()> job) {
  QMetaObject::invokeMethod(receiver_.get(), [job = std::move(job)] { callHost(job); }, Qt::QueuedConnection);
}

}  // namespace TalvoConsentSDK
