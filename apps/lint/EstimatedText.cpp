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
constexpr char32_t zeroWidthJoiner = 0x200D;
constexpr char32_t firstIdeograph = 0x2E80;  // from here on, lines break between any two characters

// Widths in ems: averages over texts in the Noto Sans fonts, or estimates from the widths of all letters.
struct Block {
  char32_t first;
  char32_t last;
  double letter;
  double mark = 0;      // a mark that takes up space
  char32_t joiner = 0;  // joins the letter that follows it to the letter before
  double joined = 0;    // a letter that is joined
  bool hasBlanksBetweenWords = true;
};

constexpr Block blocks[] = {
    {0x0000, 0x036F, 0.65},                           // Latin
    {0x0590, 0x05FF, 0.72},                           // Hebrew
    {0x0600, 0x08FF, 0.5},                            // Arabic, whose letters are joined
    {0x0900, 0x097F, 0.63, 0.26, 0x094D, 0.35},       // Devanagari
    {0x0980, 0x09FF, 0.68, 0.33, 0x09CD, 0.3},        // Bengali
    {0x0A00, 0x0A7F, 0.67, 0.3, 0x0A4D, 0},           // Gurmukhi
    {0x0A80, 0x0AFF, 0.72, 0.26, 0x0ACD, 0.35},       // Gujarati
    {0x0B80, 0x0BFF, 0.9, 0.45},                      // Tamil
    {0x0C00, 0x0C7F, 0.75, 0.4, 0x0C4D, 0.2},         // Telugu
    {0x0C80, 0x0CFF, 0.78, 0.4, 0x0CCD, 0.2},         // Kannada
    {0x0D00, 0x0D7F, 0.9, 0.6, 0x0D4D, 0.3},          // Malayalam
    {0x0D80, 0x0DFF, 0.85, 0.55},                     // Sinhala
    {0x0E00, 0x0EFF, 0.56, 0, 0, 0, false},           // Thai and Lao
    {0x1000, 0x109F, 0.8, 0.35, 0x1039, 0, false},    // Burmese
    {0x1780, 0x17FF, 0.65, 0.3, 0x17D2, 0, false},    // Khmer
    {0x1E00, 0x1EFF, 0.65},                           // Latin
    {0x2000, 0x206F, 0.4},                            // punctuation
    {firstIdeograph, 0x1EFFF, 1},                     // Chinese, Japanese and Korean
    {0x1F000, 0x1FAFF, 1.25, 0, zeroWidthJoiner, 0},  // emoji
    {0x20000, 0x10FFFF, 1},
};
constexpr Block otherScripts{0, 0x10FFFF, 0.8};

const Block& blockOf(char32_t c) {
  const auto* const block = std::ranges::find_if(blocks, [&](const Block& each) { return c <= each.last; });
  return block != std::end(blocks) && c >= block->first ? *block : otherScripts;
}

struct Marks {
  char32_t first;
  char32_t last;
  bool isSpacing;
};

constexpr Marks allMarks[] = {
#include "apps/lint/Marks.inc"
};

const Marks* marksWith(char32_t c) {
  const auto* const found = std::ranges::lower_bound(allMarks, c, {}, &Marks::last);
  return found != std::end(allMarks) && c >= found->first ? found : nullptr;
}

bool isInvisible(char32_t c) {
  constexpr char32_t wordJoiner = 0x2060;
  return c < ' ' || c == softHyphen || (c >= zeroWidthSpace && c <= 0x200F) || c == wordJoiner;
}

// The colour of the skin of the emoji before it.
bool isEmojiModifier(char32_t c) {
  return c >= 0x1F3FB && c <= 0x1F3FF;
}

double width(char32_t c, char32_t before) {
  if (c >= ' ' && c <= '~') return asciiWidths[c - ' '] / 1000.0;
  if (isInvisible(c) || isEmojiModifier(c)) return 0;
  const Block& block = blockOf(c);
  if (const Marks* marks = marksWith(c)) return marks->isSpacing ? block.mark : 0;
  return block.joiner != 0 && before == block.joiner ? block.joined : block.letter;
}

// Thai and Lao write some vowels as letters before or after the consonant that they belong to.
bool isLeadingVowel(char32_t c) {
  return (c >= 0x0E40 && c <= 0x0E44) || (c >= 0x0EC0 && c <= 0x0EC4);
}
bool isTrailingVowel(char32_t c) {
  return c == 0x0E2F || c == 0x0E30 || c == 0x0E32 || c == 0x0E33 || c == 0x0E45 || c == 0x0E46 ||
         c == 0x0EAF || c == 0x0EB0 || c == 0x0EB2 || c == 0x0EB3 || c == 0x0EC6;
}

// Whether a line may break between two characters that have no blank between them. In scripts without blanks
// between words, dictionaries tell where words end; here any syllable may end a word.
bool mayBreak(char32_t before, char32_t c) {
  const Block& block = blockOf(c);
  if (marksWith(c) || isInvisible(c) || isEmojiModifier(c)) return false;
  if (block.joiner != 0 && before == block.joiner) return false;
  if (c >= firstIdeograph) return true;
  return !block.hasBlanksBetweenWords && !isLeadingVowel(before) && !isTrailingVowel(c);
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
  char32_t before = 0;
  for (std::size_t position = 0; position < text.size();) {
    const char32_t c = nextCharacter(text, position);
    const bool isSpace = c == ' ' || c == '\n';
    const bool startsWord = isSpace ? false : words.back().space > 0 || words.back().endsLine;
    if (startsWord || (words.back().width > 0 && mayBreak(before, c))) words.emplace_back();
    (isSpace ? words.back().space : words.back().width) += width(c, before) * em;
    before = c;
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
