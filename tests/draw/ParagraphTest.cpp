// Texts in lines: breaks, directions, fonts for each script, and texts and fonts that mean harm.

#include <cmath>
#include <random>
#include <stdexcept>

#include "TalvoConsentSDK/view/ViewTypes.h"

#include "adapters/draw/Paragraph.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

namespace {

constexpr platform::Font body{TextStyle::body, FontWeight::regular};

std::shared_ptr<FontSet> systemFonts() {
  return std::make_shared<FontSet>(std::vector<FontSource>{}, true);
}

// The text of a row: a beginning, and a part that is repeated.
std::string textOf(const std::string& beginning, const std::string& part, const std::string& count) {
  std::string text = unescaped(beginning);
  for (int i = 0; i < std::stoi(count); ++i) text += unescaped(part);
  return text;
}

class LineBreakTest : public TestWithParam<std::array<std::string, 7>> {};
INSTANTIATE_TEST_SUITE_P(All, LineBreakTest, ValuesIn(tableOf<7>("texts/breaks.txt")), byFirstCell);

TEST_P(LineBreakTest, BreaksAsExpected) {
  const auto& [name, beginning, part, count, width, lines, breaks] = GetParam();
  std::vector<std::size_t> offsets;
  for (const std::string& each : words(breaks))
    offsets.push_back(static_cast<std::size_t>(std::stoull(each)));
  const auto breaker = [&](std::string_view, std::string_view) { return offsets; };
  Paragraphs paragraphs(systemFonts(), breaks.empty() ? nullptr : LineBreaker(breaker));
  const auto paragraph = paragraphs.wrapped(textOf(beginning, part, count), body, 1, std::stod(width));
  EXPECT_EQ(paragraph->lineCount(), std::stoul(lines));
  EXPECT_EQ(paragraph->size().height, std::stod(lines) * paragraph->lineHeight());
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

TEST(ParagraphTest, KeepsALongTextBesideOthers) {
  Paragraphs paragraphs(systemFonts(), nullptr);
  const std::string all = textOf("", "word ", "60000");
  const auto first = paragraphs.wrapped(all, body, 1, 300);
  for (int i = 0; i < 100; ++i) paragraphs.wrapped(std::to_string(i), body, 1, 300);
  EXPECT_EQ(paragraphs.wrapped(all, body, 1, 300), first) << "each frame would shape it again";
}

TEST(ParagraphTest, OutlivesABreakerThatThrows) {
  int calls = 0;
  Paragraphs paragraphs(systemFonts(), [&](std::string_view, std::string_view) -> std::vector<std::size_t> {
    ++calls;
    throw std::runtime_error("no dictionary");
  });
  const std::string thai = textOf("", "\\xE0\\xB8\\x81", "60");
  for (const double width : {100.0, 200.0})
    EXPECT_GT(paragraphs.wrapped(thai, body, 1, width)->lineCount(), 1U);
  EXPECT_EQ(calls, 1);
}

class HostileTextTest : public TestWithParam<std::array<std::string, 4>> {};
INSTANTIATE_TEST_SUITE_P(All, HostileTextTest, ValuesIn(tableOf<4>("texts/hostile.txt")), byFirstCell);

TEST_P(HostileTextTest, StaysInItsWidth) {
  const auto& [name, beginning, part, count] = GetParam();
  Paragraphs paragraphs(systemFonts(), nullptr);
  for (const double width : {0.0, 1.0, 150.0, infinity}) {
    const auto paragraph = paragraphs.wrapped(textOf(beginning, part, count), body, 1, width);
    const Size size = paragraph->size();
    EXPECT_TRUE(std::isfinite(size.width) && std::isfinite(size.height));
    EXPECT_LE(size.width, width >= 150 ? width : infinity);
    for (std::size_t i = 0; i < std::min<std::size_t>(paragraph->lineCount(), 50); ++i) {
      EXPECT_TRUE(std::isfinite(paragraph->line(i).width));
    }
  }
}

TEST(FontFaceTest, IsReplacedIfItCannotBeDrawn) {
  std::string damaged = contentOf(SystemFonts().family("Inter").front().path);
  damaged.replace(damaged.find("CFF "), 4, "lost");  // the letters' outlines
  const FontSource bad{"damaged", std::make_shared<const std::string>(damaged)};
  EXPECT_EQ(FontSet({bad}, false).first(FontWeight::bold), nullptr);
  FontSet fonts({bad, SystemFonts().family("Noto Sans").front()}, true);
  const ShapedText text("a\u0416", FontWeight::bold, fonts, "", nullptr);
  for (const PlacedGlyph& each : text.line(0, 2, 17).glyphs)
    EXPECT_FALSE(each.face->draw(each.glyph, 17, 2, 0).bytes.empty());
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
