#include "bindings/qml/ConsentSdk.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>
#include <QStandardPaths>
#include <QtQml>
#include <algorithm>
#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <utility>

#include "TalvoConsentSDK/TalvoConsentSDK.h"
#include "TalvoConsentSDK/models/JSONCoding.h"

#include "adapters/qt/QtPlatform.h"
#include "adapters/texts/TranslatedTexts.h"

#include "bindings/ConsentText.h"
#include "bindings/qml/QmlConsentGate.h"

namespace TalvoConsentSDK {

namespace {

QString storeFile(const QString& chosen) {
  if (!chosen.isEmpty()) return chosen;
  return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
         QStringLiteral("/consent.sqlite");
}

// Returns a function that posts work to the GUI thread. The work is dropped if `object` is destroyed before
// it runs.
template <class Object>
std::function<void(std::function<void(Object&)>)> onGuiThread(Object* object) {
  return [guard = QPointer<Object>(object),
          mainActor = Platform::current().mainActor](std::function<void(Object&)> work) {
    mainActor->post([guard, work = std::move(work)] {
      if (guard) work(*guard);
    });
  };
}

// The texts that the QML file replaces.
class OwnTexts : public platform::Localization {
 public:
  explicit OwnTexts(QVariantMap texts) : texts_(std::move(texts)) {}

  std::string text(std::string_view key) override {
    const QString name = QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
    return texts_.value(name, name).toString().toStdString();
  }

 private:
  const QVariantMap texts_;
};

}  // namespace

void registerQmlTypes() {
  qmlRegisterType<ConsentSdk>("TalvoConsent", 1, 0, "ConsentSdk");
  qmlRegisterType<QmlConsentGate>("TalvoConsent", 1, 0, "ConsentGate");
}

ConsentSdk::ConsentSdk(QObject* parent) : QObject(parent) {}

ConsentSdk::~ConsentSdk() = default;

// Called by the QML engine, which exceptions must not pass through.
void ConsentSdk::componentComplete() try {
  if (!Platform::isInstalled()) {
    QtOptions options;
    options.maxCacheBytes = static_cast<std::size_t>(std::max(0, maxCacheBytes_));
    if (textScale_.isValid()) options.textScale = textScale_.toDouble();
    if (highContrast_.isValid()) options.highContrast = highContrast_.toBool();
    if (reducesMotion_.isValid()) options.reducesMotion = reducesMotion_.toBool();
    Platform platform = makeQtPlatform(storeFile(store_).toStdString(), options);
    platform.localization = std::make_shared<OwnTexts>(ownTexts_);
    if (translatesTexts_) platform.localization = std::make_shared<TranslatedTexts>(platform.localization);
    Platform::install(std::move(platform));
  }
  sdk_ = CookiesSDK::createInstance(apiUrl_.toStdString(), siteId_.toStdString());
  if (!sdk_)
    throw std::logic_error("The ConsentSdk was completed too early: the client is still being created");
  if (hasLanguage_) sdk_->setLanguage(language_.toStdString());
  for (const auto& [event, raw] : RawValues<ConsentEvent>::table) {
    const QString name = QString::fromUtf8(raw.data(), static_cast<qsizetype>(raw.size()));
    subscriptions_.push_back(sdk_->addEventListener(event, [run = onGuiThread(this), name] {
      run([name](ConsentSdk& self) { emit self.eventRaised(name); });
    }));
  }
  subscriptions_.push_back(sdk_->observeConsent([this](const auto&) { emit consentChanged(); }));
  emit consentChanged();
  emit completed();
} catch (...) {
  report(Error::current());
}

void ConsentSdk::setLanguage(const QString& language) {
  hasLanguage_ = true;
  if (sdk_) sdk_->setLanguage(language.toStdString());
  if (language == language_) return;
  language_ = language;
  emit languageChanged();
}

QVariant ConsentSdk::consent() const {
  const auto stored = sdk_ ? sdk_->getConsent() : std::nullopt;
  if (!stored) return QVariant::fromValue(nullptr);
  const auto json = JSONEncoder().encode(*stored);
  if (!json) return QVariant::fromValue(nullptr);
  return QJsonDocument::fromJson(QByteArray::fromStdString(*json)).object().toVariantMap();
}

void ConsentSdk::showBanner(int timeLimit) {
  if (!sdk()) return;
  BannerOptions options;
  if (timeLimit > 0) options.timeLimit = std::chrono::milliseconds(timeLimit);
  const auto run = onGuiThread(this);
  const auto ended = [run](const char* outcome) {
    return [run, outcome] {
      run([outcome](ConsentSdk& self) { emit self.bannerEnded(QString::fromLatin1(outcome)); });
    };
  };
  BannerHandlers handlers{
      .onAcceptAll = ended("accepted"),
      .onRejectAll = ended("rejected"),
      .onSaved = ended("saved"),
      .onClosed = ended("closed"),
      .onReplaced = ended("replaced"),
      .onNotShown = ended("notShown"),
      .onError = [run](const Error& error) { run([error](ConsentSdk& self) { self.report(error); }); },
      .onShown = [run] { run([](ConsentSdk& self) { emit self.bannerShown(); }); },
  };
  sdk_->showBanner(std::move(handlers), options);
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
  const auto consent = consentOf(json.toStdString());
  if (!consent) return report(consent.error());
  sdk_->submitConsent(*consent, [run = onGuiThread(this)](const Result<ConsentResponse>& result) {
    if (!result) run([error = result.error()](ConsentSdk& self) { self.report(error); });
  });
}

void ConsentSdk::identify(const QString& userId) {
  if (sdk()) sdk_->identify(userId.toStdString());
}

void ConsentSdk::removeIdentity() {
  if (sdk()) sdk_->removeIdentity();
}

bool ConsentSdk::eraseConsent() {
  return sdk() && sdk_->eraseConsent();
}

bool ConsentSdk::isAllowed(const QString& category, const QString& vendor) try {
  if (!sdk()) return false;
  const ConsentCategory gated = QmlConsentGate::categoryOf(category);
  return vendor.isEmpty() ? sdk_->gate().isAllowed(gated)
                          : sdk_->gate().isAllowed(gated, vendor.toStdString());
} catch (...) {
  report(Error::current());
  return false;
}

CookiesSDK* ConsentSdk::sdk() {
  if (!sdk_) emit failed(QStringLiteral("The ConsentSdk is not complete yet"));
  return sdk_.get();
}

void ConsentSdk::report(const Error& error) {
  emit failed(QString::fromUtf8(error.what()));
}

}  // namespace TalvoConsentSDK
