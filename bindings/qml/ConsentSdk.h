#pragma once

// The whole integration of a Qt Quick host, as one QML type.

#include <QObject>
#include <QQmlParserStatus>
#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <memory>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/core/Subscription.h"

namespace TalvoConsentSDK TALVO_EXPORT {

class CookiesSDK;
class Error;

/// Makes `import TalvoConsent` work: call it once, before the first QML file is loaded.
TALVO_EXPORT void registerQmlTypes();

/// The site's consent: `ConsentSdk { apiUrl: "https://consent.example.com"; siteId: "my-site" }`. Its
/// properties are read once, when the component is complete; only `language` can change later. If the host
/// has installed a platform, that platform is used, and `store`, `maxCacheBytes` and the settings of the
/// banner, its texts included, are ignored. If no language is set, the process's client keeps the one it has.
/// Use it on the GUI thread, where every signal is emitted.
class ConsentSdk : public QObject, public QQmlParserStatus {
  Q_OBJECT
  Q_INTERFACES(QQmlParserStatus)
  Q_PROPERTY(QString apiUrl MEMBER apiUrl_)
  Q_PROPERTY(QString siteId MEMBER siteId_)
  Q_PROPERTY(QString store MEMBER store_)  // the file for consents; empty: a file in the app's data folder
  /// What the system asks for, if undefined: the factor by which text is larger than usual, and two bools.
  Q_PROPERTY(QVariant textScale MEMBER textScale_)
  Q_PROPERTY(QVariant highContrast MEMBER highContrast_)
  Q_PROPERTY(QVariant reducesMotion MEMBER reducesMotion_)

  Q_PROPERTY(int maxCacheBytes MEMBER maxCacheBytes_)       // of the HTTP cache beside the store; 0: no cache
  Q_PROPERTY(bool translatesTexts MEMBER translatesTexts_)  // the banner's own texts are in its language
  Q_PROPERTY(QVariantMap ownTexts MEMBER ownTexts_)         // by key, instead of the library's
  Q_PROPERTY(QString language READ language WRITE setLanguage NOTIFY languageChanged)

  /// The consent stored now, such as {preferences: true, marketing: ["vendor"]}; null if there is none. Read
  /// from the store each time.
  Q_PROPERTY(QVariant consent READ consent NOTIFY consentChanged)

 public:
  explicit ConsentSdk(QObject* parent = nullptr);
  ~ConsentSdk() override;

  QString language() const { return language_; }
  void setLanguage(const QString& language);
  QVariant consent() const;

  /// Shows the banner. `bannerShown` follows if it can be shown, and in any case `bannerEnded` or `failed`.
  /// `timeLimit` is how many milliseconds it may take until the banner is shown; if it takes longer, `failed`
  /// follows. 0: as long as the requests may take.
  Q_INVOKABLE void showBanner(int timeLimit = 0);
  Q_INVOKABLE void submitConsent(const QVariantMap& consent);
  Q_INVOKABLE void acceptAll();
  Q_INVOKABLE void rejectAll();
  Q_INVOKABLE void identify(const QString& userId);
  Q_INVOKABLE void removeIdentity();

  /// Removes what is stored on the device about the user. Returns whether the store has removed it.
  Q_INVOKABLE bool eraseConsent();

  /// Returns whether the stored consent allows a category, or one of its vendors. False, and `failed`, if
  /// there is no such category.
  Q_INVOKABLE bool isAllowed(const QString& category, const QString& vendor = {});

  /// The process's client; null until the component is complete.
  const std::shared_ptr<CookiesSDK>& client() const { return sdk_; }

  void report(const Error& error);

  void classBegin() override {}
  void componentComplete() override;

 signals:
  void languageChanged();

  /// The component is complete.
  void completed();

  /// The banner is on screen and begins to fade in.
  void bannerShown();

  /// How the banner ended: "accepted", "rejected", "saved", "closed", "replaced" or "notShown".
  void bannerEnded(const QString& outcome);

  /// The stored consent has changed, whatever changed it: a decision, an implicit consent or an identity.
  /// Also emitted once when the component is complete, because `consent` can be read from then on.
  void consentChanged();

  /// One of the SDK's events was raised. `event` is its name, such as "ConsentSent".
  void eventRaised(const QString& event);

  /// An operation failed, and nothing was stored. `description` says why.
  void failed(const QString& description);

 private:
  CookiesSDK* sdk();
  void submit(const QByteArray& json);

  QString apiUrl_;
  QString siteId_;
  QString store_;
  QVariant textScale_;
  QVariant highContrast_;
  QVariant reducesMotion_;
  int maxCacheBytes_ = 10'000'000;
  bool translatesTexts_ = false;
  QVariantMap ownTexts_;
  QString language_ = QStringLiteral("en");
  bool hasLanguage_ = false;  // whether it has been set
  std::shared_ptr<CookiesSDK> sdk_;
  std::vector<Subscription> subscriptions_;
};

}  // namespace TalvoConsentSDK
