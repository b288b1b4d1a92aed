#include "adapters/qt/ScriptFonts.h"

#include <QFontDatabase>
#include <QSet>
#include <algorithm>
#include <string_view>

#include "TalvoConsentSDK/view/Look.h"

namespace TalvoConsentSDK {

namespace {

const QSet<QString>& installedFamilies() {
  static const QSet<QString> families = [] {
    const QStringList list = QFontDatabase::families();
    return QSet<QString>(list.begin(), list.end());
  }();
  return families;
}

QString toText(std::string_view name) {
  return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

// Returns an empty text if the script has no font of its own, or if this font is not installed.
QString familyOf(QChar::Script script) {
  for (const auto& [letter, name] : view::look::scriptFamilies) {
    if (QChar::script(letter) != script) continue;
    const QString family = toText(name);
    return installedFamilies().contains(family) ? family : QString();
  }
  return {};
}

// The scripts of a text's characters. Spaces, most punctuation and some combining marks belong to several.
class Scripts {
 public:
  explicit Scripts(const QString& text) : text_(text), isJapanese_(std::ranges::any_of(text, isKana)) {}

  /// Calls `visit` with the position and the script of each character that belongs to one script.
  template <class Visit>
  void forEach(const Visit& visit) const {
    for (qsizetype i = 0; i < text_.size(); ++i) {
      const bool isPair = text_[i].isHighSurrogate() && i + 1 < text_.size();
      QChar::Script script =
          isPair ? QChar::script(QChar::surrogateToUcs4(text_[i], text_[i + 1])) : text_[i].script();
      // Japanese draws some of the characters that it shares with Chinese differently.
      if (script == QChar::Script_Han && isJapanese_) script = QChar::Script_Hiragana;
      if (script > QChar::Script_Common) visit(i, script);
      if (isPair) ++i;
    }
  }

 private:
  static bool isKana(QChar c) {
    return c.script() == QChar::Script_Hiragana || c.script() == QChar::Script_Katakana;
  }

  const QString& text_;
  const bool isJapanese_;
};

}  // namespace

const QStringList& generalFamilies() {
  static const QStringList list = [] {
    QStringList found;
    for (const std::string_view family : view::look::fontFamilies) {
      if (installedFamilies().contains(toText(family))) found << toText(family);
    }
    return found << QFontDatabase::systemFont(QFontDatabase::GeneralFont).families();
  }();
  return list;
}

QList<QTextLayout::FormatRange> scriptFormats(const QString& text) {
  QList<QTextLayout::FormatRange> formats;
  QString current;
  const auto end = [&](qsizetype position) {
    if (!current.isEmpty()) formats.back().length = static_cast<int>(position) - formats.back().start;
  };
  QChar::Script last = QChar::Script_Common;
  Scripts(text).forEach([&](qsizetype position, QChar::Script script) {
    if (script == last) return;
    last = script;
    const QString family = familyOf(script);
    if (family == current) return;
    end(position);
    current = family;
    if (family.isEmpty()) return;
    QTextLayout::FormatRange& range = formats.emplaceBack();
    range.start = static_cast<int>(position);
    range.format.setFontFamilies(QStringList(family) + generalFamilies());
  });
  end(text.size());
  return formats;
}

QFont fontFor(const QString& word, const QFont& font) {
  const auto formats = scriptFormats(word);
  if (formats.isEmpty()) return font;
  QFont result(font);
  result.setFamilies(formats.front().format.fontFamilies().toStringList());
  return result;
}

}  // namespace TalvoConsentSDK
