#pragma once

// What the user has set in the system about text, contrast and motion.

#include <QObject>
#include <optional>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// A member is absent if the system does not say.
struct DisplayPreferences {
  std::optional<double> textScale;  // the factor by which text is larger than usual
  std::optional<bool> highContrast;
  std::optional<bool> reducesMotion;
  friend bool operator==(const DisplayPreferences&, const DisplayPreferences&) = default;
};

/// The seam between the system's settings and the banner, which follows every change while it is shown. On a
/// desktop with a settings portal the library fills one in. On a phone, the host creates one, passes it on as
/// `QtOptions::systemSettings`, and calls `set` with what the phone says, at the start and after each change.
/// Use it on the GUI thread.
class SystemSettings : public QObject {
  Q_OBJECT

 public:
  const DisplayPreferences& preferences() const { return preferences_; }

  /// Text scales are limited to the range from 0.5 to 3.
  void set(DisplayPreferences preferences);

 signals:
  void changed();

 private:
  DisplayPreferences preferences_;
};

}  // namespace TalvoConsentSDK
