#include "adapters/texts/TranslatedTexts.h"

#include <charconv>
#include <optional>
#include <utility>

#include "adapters/texts/Translations.h"

namespace TalvoConsentSDK {

namespace {

// Returns the number in a key such as "1 vendor" or "12 vendors".
std::optional<std::uint64_t> vendorCount(std::string_view key) {
  std::uint64_t count = 0;
  const auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), count);
  const std::string_view unit = key.substr(static_cast<std::size_t>(end - key.data()));
  if (error != std::errc() || (unit != " vendor" && unit != " vendors")) return std::nullopt;
  return count;
}

std::string counted(const Translation::Counted& forms, plurals::Rule rule, std::uint64_t count) {
  constexpr std::string_view placeholder = "{n}";
  std::string text(forms.of(rule(count)));
  const std::size_t place = text.find(placeholder);
  if (place != std::string::npos) text.replace(place, placeholder.size(), std::to_string(count));
  return text;
}

}  // namespace

TranslatedTexts::TranslatedTexts(std::shared_ptr<platform::Localization> own) : own_(std::move(own)) {}

std::string TranslatedTexts::text(std::string_view key) {
  if (own_) {
    std::string own = own_->text(key);
    if (own != key) return own;
  }
  const Translation* translation = translation_;
  if (!translation) return std::string(key);
  if (key == "en") return std::string(translation->language);
  if (const auto count = vendorCount(key)) return counted(translation->vendors, translation->rule, *count);
  const std::string_view text = translation->text(key);
  return std::string(text.empty() ? key : text);
}

void TranslatedTexts::setLanguage(const std::string& language) {
  translation_ = translationInto(language);
  if (own_) own_->setLanguage(language);
}

}  // namespace TalvoConsentSDK
