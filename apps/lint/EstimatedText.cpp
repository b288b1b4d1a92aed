#include "apps/lint/EstimatedText.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "TalvoConsentSDK/base/unicode/Characters.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

// The widths of the printable ASCII characters, starting with the space, in thousandths of the font's size.
constexpr std::uint16_t asciiWidths[] = {
    281, 278, 403, 631, 638, 813, 639, 222, 362, 362, 500, 659, 280, 460, 276, 357, 625, 464, 605,
    636, 642, 608, 624, 571, 616, 624, 276, 280, 659, 659, 659, 507, 936, 676, 651, 727, 719, 598,
    587, 743, 740, 264, 543, 652, 563, 889, 753, 761, 635, 761, 639, 638, 642, 741, 676, 949, 642,
    665, 625, 362, 357, 362, 469, 452, 497, 564, 621, 558, 621, 582, 361, 609, 591, 237, 237, 544,
    237, 869, 585, 597, 609, 609, 372, 523, 364, 581, 557, 813, 540, 557, 541, 362, 327, 362, 659};

constexpr char32_t softHyphen = 0xAD;
constexpr char32_t zeroWidthSpace = 0x200B;
constexpr char32_t firstIdeograph = 0x2E80;  // from here on, lines break between any two characters

double width(char32_t c) {
  if (c >= ' ' && c <= '~') return asciiWidths[c - ' '] / 1000.0;
  if (c < ' ' || c == softHyphen || c == zeroWidthSpace) return 0;
  if (c >= 0x300 && c < 0x370) return 0;                      // combining marks
  if (c < 0x370 || (c >= 0x1E00 && c < 0x1F00)) return 0.65;  // Latin
  if (c >= 0x590 && c < 0x600) return 0.72;                   // Hebrew
  if (c >= 0x600 && c < 0x900) return 0.5;                    // Arabic, whose letters are joined
  if (c >= 0x2000 && c < 0x2070) return 0.4;                  // punctuation
  return c < firstIdeograph ? 0.8 : 1;
}

double weightFactor(FontWeight weight) {
  switch (weight) {
    case FontWeight::regular:
      return 1;
    case FontWeight::medium:
      return 1.03;
    case FontWeight::semibold:
      return 1.055;
    case FontWeight::bold:
      return 1.08;
  }
  return 1;
}

bool endsWord(char32_t c) {
  constexpr char32_t enDash = 0x2013;
  constexpr char32_t emDash = 0x2014;
  return c == '-' || c == '/' || c == softHyphen || c == zeroWidthSpace || c == enDash || c == emDash;
}

struct Word {
  double width = 0;
  double space = 0;  // the width of the spaces after the word, if the line goes on
  bool endsLine = false;
};

std::vector<Word> wordsOf(std::string_view text, double em) {
  std::vector<Word> words(1);
  for (std::size_t position = 0; position < text.size();) {
    const char32_t c = nextCharacter(text, position);
    const bool isSpace = c == ' ' || c == '\n';
    const bool startsWord = isSpace ? false : words.back().space > 0 || words.back().endsLine;
    if (startsWord || (c >= firstIdeograph && words.back().width > 0)) {
      words.emplace_back();
    }
    (isSpace ? words.back().space : words.back().width) += width(c) * em;
    if (c == '\n') words.back().endsLine = true;
    if (endsWord(c)) words.emplace_back();
  }
  return words;
}

}  // namespace

Size EstimatedText::measure(std::string_view text, const Font& font, double room) {
  const double em = font.size() * scale_ * weightFactor(font.weight);
  double lines = 1;
  double used = 0;
  double widest = 0;
  for (const Word& word : wordsOf(text, em)) {
    if (used > 0 && used + word.width > room) {
      ++lines;
      used = 0;
    }
    double width = word.width;
    for (; width > std::max(room, em); width -= std::max(room, em)) ++lines;  // splits the word
    widest = std::max(widest, width < word.width ? room : used + width);
    used += width + word.space;
    if (word.endsLine) {
      ++lines;
      used = 0;
    }
  }
  return {std::min(std::ceil(widest), room), lines * font.lineHeight() * scale_};
}

double EstimatedText::widestWord(std::string_view text, const Font& font) {
  double widest = 0;
  const double em = font.size() * scale_ * weightFactor(font.weight);
  for (const Word& word : wordsOf(text, em)) widest = std::max(widest, word.width);
  return std::ceil(widest);
}

}  // namespace TalvoConsentSDK
