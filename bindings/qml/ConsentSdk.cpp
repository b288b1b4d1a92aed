#include "bindings/qml/ConsentSdk.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>
#include <QStandardPaths>
#include <QtQml>

#include "TalvoConsentSDK/TalvoConsentSDK.h"
#include "TalvoConsentSDK/models/JSONCoding.h"

#include "adapters/qt/QtPlatform.h"

namespace TalvoConsentSDK {

namespace {

QString storeFile(const QString& chosen) {
  if (!chosen.isEmpty()) return chosen;
  return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
         QStringLiteral("/consent.sqlite");
}

// Work for the GUI thread that is dropped when `object` has gone by then.
template <class Object>
std::function<void(std::function<void(Object&)>)> later(Object* object) {
  return [guard = QPointer<Object>(object),
          mainActor = Platform::current().mainActor](std::function<void(Object&)> work) {
    mainActor->post([guard, work = std::move(work)] {
      if (guard) work(*guard);
    });
  };
}

}  // namespace

void registerQmlTypes() {
  qmlRegisterType<ConsentSdk>("TalvoConsent", 1, 0, "ConsentSdk");
}

ConsentSdk::ConsentSdk(QObject* parent) : QObject(parent) {}

ConsentSdk::~ConsentSdk() = default;

// The QML engine calls it, which nothing may be thrown through.
void ConsentSdk::componentComplete() try {
  if (!CookiesSDK::getInstance()) {
    QtOptions options;
    options.text.scale = textScale_;
    options.reducesMotion = reducesMotion_;
    if (highContrast_.isValid()) options.highContrast = highContrast_.toBool();
    Platform::install(makeQtPlatform(storeFile(store_).toStdString(), options));
  }
  sdk_ = CookiesSDK::createInstance(apiUrl_.toStdString(), siteId_.toStdString());
  sdk_->setLanguage(language_.toStdString());
  for (const auto& [event, raw] : RawValues<ConsentEvent>::table) {
    const QString name = QString::fromUtf8(raw.data(), static_cast<qsizetype>(raw.size()));
    const auto tell = [run = later(this), name] {
      run([name](ConsentSdk& self) {
        emit self.eventRaised(name);
        emit self.consentChanged();
      });
    };
    sdk_->addEventListener(event, std::make_shared<ConsentEventClosureCallback>(tell, [] {}));
  }
  emit consentChanged();
} catch (...) {
  report(Error::current());
}

void ConsentSdk::setLanguage(const QString& language) {
  if (language == language_) return;
  language_ = language;
  if (sdk_) sdk_->setLanguage(language.toStdString());
  emit languageChanged();
}

QVariant ConsentSdk::consent() const {
  const auto stored = sdk_ ? sdk_->getConsent() : std::nullopt;
  if (!stored) return QVariant::fromValue(nullptr);
  const auto json = JSONEncoder().encode(*stored);
  if (!json) return QVariant::fromValue(nullptr);
  return QJsonDocument::fromJson(QByteArray::fromStdString(*json)).object().toVariantMap();
}

void ConsentSdk::showBanner() {
  if (!sdk()) return;
  sdk_->showBanner(announcing(), announcing(), announcing(), [run = later(this)](const Error& error) {
    run([error](ConsentSdk& self) { self.report(error); });
  });
}

void ConsentSdk::submitConsent(const QVariantMap& consent) {
  submit(QJsonDocument(QJsonObject::fromVariantMap(consent)).toJson(QJsonDocument::Compact));
}

void ConsentSdk::acceptAll() {
  submit(R"({"preferences":true,"statistics":true,"marketing":true})");
}

void ConsentSdk::rejectAll() {
  submit(R"({"preferences":false,"statistics":false,"marketing":false})");
}

void ConsentSdk::submit(const QByteArray& json) {
  if (!sdk()) return;
  const auto consent = JSONDecoder().decode<BasicConsent>(json.toStdString());
  if (!consent) return report(consent.error());
  sdk_->submitConsent(*consent, [run = later(this)](const Result<ConsentResponse>& result) {
    if (!result) run([error = result.error()](ConsentSdk& self) { self.report(error); });
  });
}

void ConsentSdk::identify(const QString& userId) {
  if (sdk()) sdk_->identify(userId.toStdString());
}

void ConsentSdk::removeIdentity() {
  if (!sdk()) return;
  sdk_->removeIdentity();
  emit consentChanged();
}

CookiesSDK* ConsentSdk::sdk() {
  if (!sdk_) emit failed(QStringLiteral("The ConsentSdk is not complete yet"));
  return sdk_.get();
}

void ConsentSdk::report(const Error& error) {
  emit failed(QString::fromUtf8(error.what()));
}

std::function<void()> ConsentSdk::announcing() {
  return [run = later(this)] { run([](ConsentSdk& self) { emit self.consentChanged(); }); };
}

}  // namespace TalvoConsentSDK
