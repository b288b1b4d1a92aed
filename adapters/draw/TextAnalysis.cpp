#include "adapters/draw/TextAnalysis.h"

#include <algorithm>
#include <climits>
#include <memory>

#include <fribidi/fribidi.h>
#include <hb.h>
#include <linebreak.h>

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

// Thai, Lao, Burmese and Khmer, whose line breaks need a dictionary (Line_Break SA, by block).
bool needsDictionary(char32_t c) {
  return (c >= 0x0E00 && c <= 0x0EFF) || (c >= 0x1000 && c <= 0x109F) || (c >= 0x1780 && c <= 0x17FF);
}

// Small kana and the sign for a long vowel (Line_Break CJ). They begin no line, as in Qt. The library breaks
// before them.
bool isSmallKana(char32_t c) {
  constexpr std::u32string_view small =
      U"\u3041\u3043\u3045\u3047\u3049\u3063\u3083\u3085\u3087\u308E\u3095\u3096"
      U"\u30A1\u30A3\u30A5\u30A7\u30A9\u30C3\u30E3\u30E5\u30E7\u30EE\u30F5\u30F6\u30FC";
  return small.find(c) != small.npos || (c >= 0x31F0 && c <= 0x31FF) || (c >= 0xFF67 && c <= 0xFF70);
}

// Korean is read more easily if its words stay whole, and Qt keeps them so. The standard allows both.
bool isHangul(char32_t c) {
  return (c >= 0xAC00 && c <= 0xD7A3) || (c >= 0x1100 && c <= 0x11FF) || (c >= 0x3131 && c <= 0x318E);
}

// Two of these make a flag.
bool isFlagLetter(char32_t c) {
  return c >= 0x1F1E6 && c <= 0x1F1FF;
}

bool isLineBreak(char32_t c) {
  return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029;
}

}  // namespace

Characters charactersOf(std::string_view utf8) {
  Characters result;
  utf8 = utf8.substr(0, INT_MAX / 8);
  const std::unique_ptr<hb_buffer_t, void (*)(hb_buffer_t*)> buffer(hb_buffer_create(), hb_buffer_destroy);
  hb_buffer_add_utf8(buffer.get(), utf8.data(), static_cast<int>(utf8.size()), 0, -1);
  unsigned count = 0;
  const hb_glyph_info_t* const infos = hb_buffer_get_glyph_infos(buffer.get(), &count);
  result.codes.reserve(count);
  result.offsets.reserve(count + 1);
  for (unsigned i = 0; i < count; ++i) {
    result.codes.push_back(infos[i].codepoint);
    result.offsets.push_back(infos[i].cluster);
  }
  result.offsets.push_back(static_cast<std::uint32_t>(utf8.size()));
  return result;
}

std::vector<std::int8_t> bidiLevels(std::u32string_view text, LayoutDirection base) {
  const bool isRightToLeft = base == LayoutDirection::rightToLeft;
  std::vector<std::int8_t> levels(text.size(), isRightToLeft ? 1 : 0);
  std::vector<FriBidiChar> codes(text.begin(), text.end());
  std::vector<FriBidiCharType> types(codes.size());
  std::vector<FriBidiBracketType> brackets(codes.size());
  for (std::size_t begin = 0, end = 0; begin < codes.size(); begin = end) {
    while (end < codes.size() && !isLineBreak(text[end])) ++end;
    if (end < codes.size()) ++end;
    const auto length = static_cast<FriBidiStrIndex>(end - begin);
    fribidi_get_bidi_types(&codes[begin], length, &types[begin]);
    fribidi_get_bracket_types(&codes[begin], length, &types[begin], &brackets[begin]);
    FriBidiParType direction = isRightToLeft ? FRIBIDI_PAR_RTL : FRIBIDI_PAR_LTR;
    static_assert(sizeof(FriBidiLevel) == 1);
    auto* const found = reinterpret_cast<FriBidiLevel*>(&levels[begin]);
    if (fribidi_get_par_embedding_levels_ex(&types[begin], &brackets[begin], length, &direction, found) ==
        0) {
      std::fill_n(found, length, static_cast<FriBidiLevel>(isRightToLeft));  // out of memory
    }
  }
  return levels;
}

std::vector<LineBreak> lineBreaks(std::string_view utf8, const Characters& text, const std::string& language,
                                  const LineBreaker& breaker) {
  static const bool isReady = [] {
    init_linebreak();
    return true;
  }();
  const std::size_t count = text.codes.size();
  std::vector<LineBreak> result(count + 1, LineBreak::none);
  if (!isReady || count == 0) return result;
  std::vector<utf32_t> codes(text.codes.begin(), text.codes.end());
  // The library takes U+FFFF for the end of the text, and does not know the letters of flags. It aborts at
  // both.
  std::ranges::replace(codes, 0xFFFFU, 0xFFFDU);
  std::ranges::replace_if(codes, isFlagLetter, U'\u4E00');
  std::vector<char> after(count);
  std::ranges::replace_if(codes, isSmallKana, U'\u3005');
  set_linebreaks_utf32(codes.data(), count, language.c_str(), after.data());
  bool hasDictionaryText = false;
  std::size_t flagLetters = 0;  // directly before the character
  for (std::size_t i = 0; i < count; ++i) {
    if (after[i] == LINEBREAK_ALLOWBREAK) result[i + 1] = LineBreak::allowed;
    if (after[i] == LINEBREAK_MUSTBREAK) result[i + 1] = LineBreak::mandatory;
    if (i > 0 && isHangul(text.codes[i - 1]) && isHangul(text.codes[i])) result[i] = LineBreak::none;
    if (flagLetters % 2 == 1 && isFlagLetter(text.codes[i])) result[i] = LineBreak::none;
    flagLetters = isFlagLetter(text.codes[i]) ? flagLetters + 1 : 0;
    if (i == 0 || !needsDictionary(text.codes[i])) continue;
    hasDictionaryText = true;
    if (!breaker && needsDictionary(text.codes[i - 1])) result[i] = LineBreak::allowed;
  }
  // The library also reports a break at the end of every text.
  if (!isLineBreak(text.codes.back())) result[count] = LineBreak::none;
  if (!breaker || !hasDictionaryText) return result;
  std::vector<std::size_t> offsets;
  callHost([&] { offsets = breaker(utf8, language); });
  for (const std::size_t offset : offsets) {
    const auto found = std::ranges::lower_bound(text.offsets, offset);
    if (found == text.offsets.end() || *found != offset || found == text.offsets.begin()) continue;
    LineBreak& place = result[static_cast<std::size_t>(found - text.offsets.begin())];
    if (place == LineBreak::none && offset < utf8.size()) place = LineBreak::allowed;
  }
  return result;
}

bool isBlank(char32_t c) {
  return c == ' ' || c == '\t' || c == 0x1680 || (c >= 0x2000 && c <= 0x200B && c != 0x2007) || c == 0x205F ||
         c == 0x3000 || isLineBreak(c);
}

}  // namespace TalvoConsentSDK
