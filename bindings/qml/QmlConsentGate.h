#pragma once

// The QML type ConsentGate.

#include <QObject>
#include <QPointer>
#include <QQmlParserStatus>
#include <QString>

#include "TalvoConsentSDK/core/Subscription.h"
#include "TalvoConsentSDK/models/ConsentVocabulary.h"

#include "bindings/qml/ConsentSdk.h"

namespace TalvoConsentSDK {

/// Starts and stops what needs consent:
/// `ConsentGate { sdk: consent; category: "statistics"; onStarted: analytics.start(); onStopped:
/// analytics.stop() }`. Its properties are read once, when the component and its `sdk` are complete. An
/// unknown category makes the `sdk` emit `failed`.
class QmlConsentGate : public QObject, public QQmlParserStatus {
  Q_OBJECT
  Q_INTERFACES(QQmlParserStatus)
  Q_PROPERTY(TalvoConsentSDK::ConsentSdk* sdk MEMBER sdk_)
  Q_PROPERTY(QString category MEMBER category_)
  Q_PROPERTY(QString vendor MEMBER vendor_)  // as the site's services document names it; empty: the category
  Q_PROPERTY(bool allowed READ allowed NOTIFY allowedChanged)

 public:
  using QObject::QObject;

  bool allowed() const { return isAllowed_; }

  void classBegin() override {}
  void componentComplete() override;

  /// Returns the category with this name. Throws an Error if there is no gate for it.
  static ConsentCategory categoryOf(const QString& name);

 signals:
  /// The category or vendor is allowed now, or no longer. Emitted in turn, beginning with `started`.
  void started();
  void stopped();
  void allowedChanged();

 private:
  void begin();
  void set(bool isAllowed);

  QPointer<ConsentSdk> sdk_;
  QString category_;
  QString vendor_;
  bool isAllowed_ = false;
  Subscription subscription_;
};

}  // namespace TalvoConsentSDK
