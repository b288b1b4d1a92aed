// Measured and drawn text agree: a frame of the measured size shows all of the text.

#include <QPainter>

#include "adapters/qt/ScriptFonts.h"
#include "adapters/qt/WrappedText.h"

#include "tests/support/Cost.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK {
namespace {

constexpr double ratio = 2;
constexpr double margin = 40;  // around the frame, to find what is drawn outside it

// Draws a text in a frame and returns the rectangle of all coloured pixels, in points from the frame's
// corner.
QRectF ink(const std::string& text, const Font& font, double scale, const Size& frame,
           Qt::Alignment alignment, bool isUnderlined = true) {
  QImage image((QSizeF(frame.width + 2 * margin, frame.height + 2 * margin) * ratio).toSize(),
               QImage::Format_Alpha8);
  image.setDevicePixelRatio(ratio);
  image.fill(0);
  QPainter painter(&image);
  painter.translate(margin, margin);
  WrappedText(text, font, {scale}, frame.width, alignment).draw(painter, Qt::black, isUnderlined);
  painter.end();
  QRect found;
  for (int i = 0; i < image.width() * image.height(); ++i) {
    const int x = i % image.width();
    const int y = i / image.width();
    if (image.constScanLine(y)[x] > 16) found |= QRect(x, y, 1, 1);
  }
  return QRectF(QPointF(found.topLeft()) / ratio, QSizeF(found.size()) / ratio).translated(-margin, -margin);
}

class QtTextTest : public TestWithParam<std::array<std::string, 1>> {
 protected:
  const std::string text = unescaped(GetParam()[0]);
};
INSTANTIATE_TEST_SUITE_P(All, QtTextTest, ValuesIn(tableOf<1>("texts/samples.txt")));

TEST_P(QtTextTest, IsNotCutAtItsMeasuredSize) {
  // Items show 6 points around their frames, because leaning and stacked letters extend beyond them.
  for (const double scale : {0.8, 1.0, 1.35, 2.0}) {
    for (const auto style : {TextStyle::headline, TextStyle::subheadline, TextStyle::footnote}) {
      for (const double width : {90.0, 250.4, std::numeric_limits<double>::infinity()}) {
        const Font font{style, FontWeight::semibold};
        const Size size = QtTextMeasurer({scale}).measure(text, font, width);
        EXPECT_LE(size.width, width);
        const QRectF shown = QRectF(0, 0, size.width, size.height).marginsAdded({6, 6, 6, 6});
        for (const auto alignment : {Qt::AlignLeft, Qt::AlignRight}) {
          EXPECT_TRUE(shown.contains(ink(text, font, scale, size, alignment)))
              << "scale " << scale << ", font size " << font.size() << ", width " << width;
        }
      }
    }
  }
}

TEST_P(QtTextTest, HasAsManyLinesAsWereMeasured) {
  for (double width = 60; width < 300; ++width) {
    const Size size = QtTextMeasurer({1}).measure(text, {TextStyle::footnote}, width);
    EXPECT_EQ(WrappedText(text, {TextStyle::footnote}, {1}, size.width).size().height, size.height) << width;
  }
}

// Otherwise a link's line would be longer than its text.
TEST(LinkTextTest, IsAsWideAsItsLetters) {
  const Font font{TextStyle::footnote};
  for (const char* text :
       {"Privacy policy", "निजता नीति", "কুকি নীতি", "உங்கள் உரிமைகள்", "สิทธิของคุณ", "សិទ្ធិរបស់អ្នក"}) {
    const Size size = QtTextMeasurer({1}).measure(text, font, std::numeric_limits<double>::infinity());
    EXPECT_NEAR(ink(text, font, 1, size, Qt::AlignLeft, false).width(), size.width, 3) << text;
  }
}

std::string repeated(const std::string& part, std::size_t length) {
  std::string all;
  while (all.size() < length) all += part;
  return all;
}

const char* const parts[] = {
    "x",    "We ask before we (1) measure. ", "قبول",        "قبول الكل (3): abc, (de) 12 ", "e\u0301",
    "隱私", "\U0001F468\u200D\U0001F469",     "one\ntwo (\n"};

// A long text gives the same pixels whether it is laid out in pieces or at once. (Only the beginning is
// compared, because Qt itself shapes at most 4,096 characters at once.)
TEST(LongTextTest, LooksTheSameAsLaidOutAtOnce) {
  constexpr int width = 200, height = 1700;
  for (const char* part : parts) {
    const std::string text = repeated(part, 20'000);
    const auto painted = [](const std::function<void(QPainter&)>& paint) {
      QImage image(width, height, QImage::Format_Alpha8);
      image.fill(0);
      QPainter painter(&image);
      paint(painter);
      return image;
    };
    const QImage pieces = painted([&](QPainter& painter) {
      WrappedText(text, {TextStyle::footnote}, {}, width).draw(painter, Qt::black, false, 0, height);
    });
    const QImage atOnce = painted([&](QPainter& painter) {
      const bool isArabic = QString::fromUtf8(text.data(), 2) == QString::fromUtf8("ق");
      QTextLayout layout(toQString(text).replace(QLatin1Char('\n'), QChar::LineSeparator),
                         toQFont({TextStyle::footnote}, {}));
      layout.setFormats(scriptFormats(layout.text()));
      QTextOption option(Qt::AlignLeft | Qt::AlignAbsolute);
      option.setTextDirection(isArabic ? Qt::RightToLeft : Qt::LeftToRight);
      option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
      layout.setTextOption(option);
      layout.beginLayout();
      const double lineHeight = Font{TextStyle::footnote}.lineHeight();
      for (double top = 0; top < height; top += lineHeight) {
        QTextLine line = layout.createLine();
        if (!line.isValid()) break;
        line.setLineWidth(width);
        line.setPosition({0, top + (lineHeight - line.height()) / 2});
      }
      layout.endLayout();
      layout.draw(&painter, {0, 0});
    });
    EXPECT_EQ(pieces, atOnce) << part;
  }
}

TEST(LongTextTest, TakesTimeInProportionToItsLength) {
  Texts all(std::begin(parts), std::end(parts));
  all.push_back("\U0001F468\u200D");  // its repetitions join to one character, so no line can end in it
  for (const std::string& part : all) {
    double width = 300;
    const auto cost = [&](std::size_t length) {
      const std::string text = repeated(part, length);
      return bestCost([&] { QtTextMeasurer({}).measure(text, {TextStyle::footnote}, width -= 0.5); });
    };
    EXPECT_LE(growth(cost, 10'000, 15), 15) << part;
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
