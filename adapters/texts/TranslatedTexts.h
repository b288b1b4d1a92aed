#pragma once

// The library's own texts, such as "Back" and "12 vendors", in the language of the banner.

#include <atomic>
#include <memory>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Localization.h"

namespace TalvoConsentSDK {

struct Translation;

/// Translates the library's own texts into the language that is set with `CookiesSDK::setLanguage`:
///
///     platform.localization = std::make_shared<TranslatedTexts>();
///
/// It knows the official languages of the European Union and Arabic, Bengali, Chinese in both scripts,
/// Hebrew, Hindi, Indonesian, Japanese, Korean, Norwegian, Tamil, Thai, Turkish, Ukrainian, Urdu and
/// Vietnamese. A region after the language, as in `de-AT`, only matters in Chinese. Texts in other languages
/// stay in English. Native speakers have not reviewed the texts yet; a host can replace each of them.
class TALVO_EXPORT TranslatedTexts : public platform::Localization {
 public:
  /// `own` may be null. Its text for a key replaces the one here, unless it returns the key itself.
  explicit TranslatedTexts(std::shared_ptr<platform::Localization> own = nullptr);

  std::string text(std::string_view key) override;
  void setLanguage(const std::string& language) override;

 private:
  const std::shared_ptr<platform::Localization> own_;
  std::atomic<const Translation*> translation_ = nullptr;  // null: the language is unknown
};

}  // namespace TalvoConsentSDK
