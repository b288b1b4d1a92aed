#include "bindings/qml/QmlConsentGate.h"

#include "TalvoConsentSDK/TalvoConsentSDK.h"

namespace TalvoConsentSDK {

void QmlConsentGate::componentComplete() {
  if (!sdk_) return qWarning("A ConsentGate needs an sdk");
  if (sdk_->client()) return begin();
  connect(sdk_, &ConsentSdk::completed, this, &QmlConsentGate::begin);
}

ConsentCategory QmlConsentGate::categoryOf(const QString& name) {
  const auto category = fromRawValue<ConsentCategory>(name.toStdString());
  if (category && ConsentGate::has(*category)) return *category;
  throw Error(PlatformError("TalvoConsentSDK", -7, "A gate has no category \"" + name.toStdString() + '"'));
}

// Called by the QML engine, which exceptions must not pass through.
void QmlConsentGate::begin() try {
  const ConsentCategory category = categoryOf(category_);
  const ConsentGate gate = sdk_->client()->gate();
  const auto start = [this] { set(true); };
  const auto stop = [this] { set(false); };
  subscription_ = vendor_.isEmpty() ? gate.on(category, start, stop)
                                    : gate.on(category, vendor_.toStdString(), start, stop);
} catch (...) {
  sdk_->report(Error::current());
}

void QmlConsentGate::set(bool isAllowed) {
  isAllowed_ = isAllowed;
  const QPointer guard(this);  // a handler may destroy this object
  emit allowedChanged();
  if (guard) isAllowed ? emit started() : emit stopped();
}

}  // namespace TalvoConsentSDK
