// Texts in lines: breaks, directions, fonts for each script, and texts and fonts that mean harm.

#include <cmath>
#include <random>

#include "TalvoConsentSDK/view/ViewTypes.h"

#include "adapters/draw/Paragraph.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

namespace {

constexpr platform::Font body{TextStyle::body, FontWeight::regular};

std::shared_ptr<FontSet> systemFonts() {
  return std::make_shared<FontSet>(std::vector<FontSource>{}, true);
}

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

const struct BrokenText {
  const char* name;
  std::string text;
  double width;
  std::size_t lines;
  LineBreaker breaker = nullptr;
} broken[] = {
    {"Words", "one two three", 70, 2},
    {"BlanksTakeNoRoomAtTheEnd", "one two" + std::string(50, ' '), 70, 1},
    {"NewlinesAlways", "a\nb\r\nc\n", 1000, 4},
    {"AWordThatShrinks", "Einwilligungseinstellungen", 180, 1},
    {"AWordThatIsSplit", repeated("x", 100), 100, 10},
    {"NoBreakSpaces", "one\u00A0two\u00A0three", 1000, 1},
    {"AFamilyOfEmojiStaysWhole", "\U0001F468\u200D\U0001F469\u200D\U0001F467", 1, 1},
    {"MarksStayWithTheirLetters", "e\u0301\u0302\u0303", 1, 1},
    {"ThaiWithoutADictionary", repeated("\u0E01", 60), 100, 7},
    {"ThaiByTheHost", repeated("\u0E01", 60), 1000, 1,
     [](std::string_view, std::string_view) { return std::vector<std::size_t>{6}; }},
    {"OffsetsOfTheHostThatAreWrong", repeated("\u0E01", 3), 1000, 1,
     [](std::string_view, std::string_view) { return std::vector<std::size_t>{0, 1, 9, 10, SIZE_MAX}; }},
};

class LineBreakTest : public TestWithParam<BrokenText> {};
INSTANTIATE_TEST_SUITE_P(All, LineBreakTest, ValuesIn(broken), byName);

TEST_P(LineBreakTest, BreaksAsExpected) {
  const auto& [name, text, width, lines, breaker] = GetParam();
  Paragraphs paragraphs(systemFonts(), breaker);
  const auto paragraph = paragraphs.wrapped(text, body, 1, width);
  EXPECT_EQ(paragraph->lineCount(), lines);
  EXPECT_EQ(paragraph->size().height, static_cast<double>(lines) * paragraph->lineHeight());
}

// The order in which letters are drawn, from left to right.
TEST(ParagraphTest, OrdersDirectionsOnALine) {
  const auto fonts = systemFonts();
  const auto letters = [&](const std::string& text) {
    const ShapedText shaped(text, FontWeight::regular, *fonts, "", nullptr);
    std::vector<std::uint32_t> glyphs;
    for (const PlacedGlyph& each : shaped.line(0, shaped.size(), 17).glyphs) glyphs.push_back(each.glyph);
    return glyphs;
  };
  const auto joined = [](std::vector<std::uint32_t> first, const std::vector<std::uint32_t>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
  };
  const std::string hebrew = "\u05D0\u05D1\u05D2";
  const std::string mirrored = "\u05D2\u05D1\u05D0";
  EXPECT_NE(letters(hebrew), letters(mirrored));
  // Mostly Hebrew, so the Latin word at the start of the text stands on the right.
  const auto mixed = letters("ab " + hebrew);
  EXPECT_EQ(mixed, joined(joined(letters(hebrew), letters(" ")), letters("ab")));
  // Mostly Latin.
  EXPECT_EQ(letters("abcd " + hebrew), joined(letters("abcd "), letters(hebrew)));
}

const struct HostileText {
  const char* name;
  std::string text;
} hostile[] = {
    {"Empty", ""},
    {"NotUTF8", "a\xFF\xC0\x80\xED\xA0\x80\xF8z"},
    {"Zeros", std::string(100, '\0')},
    {"Controls", "\x01\x02\x1B[31m\x7F\u0085\u2028\u2029"},
    {"ManyMarks", "a" + repeated("\u0301", 20'000)},
    {"ManyJoiners", repeated("\u200D", 20'000)},
    {"DeepEmbeddings", repeated("\u202B\u202Aa", 5'000)},
    {"ManyIsolates", repeated("\u2067(", 10'000)},
    {"OneLongWord", repeated("x", 100'000)},
    {"ManyNewlines", repeated("\n", 50'000)},
    {"EveryPlane", "\uFFFE\uFFFF\U0001F600\U000E0001\U0010FFFF"},
    {"OneLongArabicWord", repeated("\u0644\u0627", 30'000)},
};

class HostileTextTest : public TestWithParam<HostileText> {};
INSTANTIATE_TEST_SUITE_P(All, HostileTextTest, ValuesIn(hostile), byName);

TEST_P(HostileTextTest, StaysInItsWidth) {
  Paragraphs paragraphs(systemFonts(), nullptr);
  for (const double width : {0.0, 1.0, 150.0, infinity}) {
    const auto paragraph = paragraphs.wrapped(GetParam().text, body, 1, width);
    const Size size = paragraph->size();
    EXPECT_TRUE(std::isfinite(size.width) && std::isfinite(size.height));
    EXPECT_LE(size.width, width >= 150 ? width : infinity);
    for (std::size_t i = 0; i < std::min<std::size_t>(paragraph->lineCount(), 50); ++i) {
      EXPECT_TRUE(std::isfinite(paragraph->line(i).width));
    }
  }
}

TEST(FontFaceTest, SurvivesDamagedFiles) {
  std::mt19937 random(11);
  for (const char* family : {"Inter", "Noto Sans Arabic"}) {
    const auto files = SystemFonts().family(family);
    ASSERT_FALSE(files.empty()) << family;
    const std::string whole = contentOf(files.front().path);
    for (int round = 0; round < 40; ++round) {
      std::string damaged = whole.substr(0, round % 4 == 0 ? random() % whole.size() : whole.size());
      // Most tables are found through the first bytes.
      for (int i = 0; i < 20; ++i)
        damaged[random() % std::min<std::size_t>(damaged.size(), i < 5 ? 300 : SIZE_MAX)] =
            static_cast<char>(random());
      const FontSource source{"damaged", std::make_shared<const std::string>(damaged)};
      FontSet fonts({source}, false);
      const ShapedText shaped("Hamburg \u0633\u0644\u0627\u0645", FontWeight::bold, fonts, "", nullptr);
      for (const PlacedGlyph& each : shaped.line(0, shaped.size(), 17).glyphs) {
        const GlyphPicture picture = each.face->draw(each.glyph, 17, 2, 0.5);
        EXPECT_EQ(picture.bytes.size(),
                  static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height));
      }
    }
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
