#pragma once

// The whole integration of a Qt Quick host, as one QML type.

#include <QObject>
#include <QQmlParserStatus>
#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <map>
#include <memory>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

class CookiesSDK;
class ConsentEventCallback;
class Error;
enum class ConsentEvent;

/// Makes `import TalvoConsent` work: call it once, before the first QML file is loaded.
TALVO_EXPORT void registerQmlTypes();

/// The site's consent: `ConsentSdk { apiUrl: "https://consent.example.com"; siteId: "my-site" }`. What it is
/// given counts once, when it is complete; only `language` can change later. A platform that the host has
/// installed stays: `store` and the settings of the banner then are that one's. A language counts as soon as
/// one is set; without one, that of the process's client stays. GUI thread; every signal comes there.
class ConsentSdk : public QObject, public QQmlParserStatus {
  Q_OBJECT
  Q_INTERFACES(QQmlParserStatus)
  Q_PROPERTY(QString apiUrl MEMBER apiUrl_)
  Q_PROPERTY(QString siteId MEMBER siteId_)
  Q_PROPERTY(QString store MEMBER store_)  // the file consents are kept in; empty: in the app's data folder
  Q_PROPERTY(double textScale MEMBER textScale_)  // how much larger text is than usual
  Q_PROPERTY(bool reducesMotion MEMBER reducesMotion_)
  Q_PROPERTY(QVariant highContrast MEMBER highContrast_)  // a bool; undefined: what the system asks for
  Q_PROPERTY(QString language READ language WRITE setLanguage NOTIFY languageChanged)

  /// The consent stored now, such as {preferences: true, marketing: ["vendor"]}; null when none is. Read anew
  /// each time.
  Q_PROPERTY(QVariant consent READ consent NOTIFY consentChanged)

 public:
  explicit ConsentSdk(QObject* parent = nullptr);
  ~ConsentSdk() override;

  QString language() const { return language_; }
  void setLanguage(const QString& language);
  QVariant consent() const;

  Q_INVOKABLE void showBanner();
  Q_INVOKABLE void submitConsent(const QVariantMap& consent);
  Q_INVOKABLE void acceptAll();
  Q_INVOKABLE void rejectAll();
  Q_INVOKABLE void identify(const QString& userId);
  Q_INVOKABLE void removeIdentity();

  void classBegin() override {}
  void componentComplete() override;

 signals:
  void languageChanged();

  /// The stored consent has changed, whatever changed it: a decision, an implicit consent, an identity.
  void consentChanged();

  /// One of the SDK's events, by its name, such as "ConsentSent".
  void eventRaised(const QString& event);

  /// Nothing was stored; `description` tells why.
  void failed(const QString& description);

 private:
  CookiesSDK* sdk();
  void submit(const QByteArray& json);
  void report(const Error& error);

  QString apiUrl_;
  QString siteId_;
  QString store_;
  double textScale_ = 1;
  bool reducesMotion_ = false;
  QVariant highContrast_;
  QString language_ = QStringLiteral("en");
  bool hasLanguage_ = false;  // somebody has set it
  std::shared_ptr<CookiesSDK> sdk_;
  std::map<ConsentEvent, std::shared_ptr<ConsentEventCallback>> listeners_;
  std::shared_ptr<void> observation_;
};

}  // namespace TalvoConsentSDK
