// Checks what the mount puts on screen, and that it repaints only what has changed.

#include <QPainter>
#include <QQuickRenderControl>
#include <QQuickRenderTarget>

#include "adapters/qt/QtImageLoader.h"
#include "adapters/qt/VisualMount.h"
#include "adapters/qt/WrappedText.h"

#include "tests/qt/QtTesting.h"

namespace TalvoConsentSDK {
namespace {

// A picture whose pixel a test can change without a notification, so that a repaint is visible.
struct Probe {
  QRgb pixel = qRgb(255, 0, 0);
  std::shared_ptr<const Image> image = std::make_shared<QtImage>(
      QImage(reinterpret_cast<const uchar*>(&pixel), 1, 1, QImage::Format_ARGB32_Premultiplied));

  Visual at(ElementId id, const Rect& frame) const { return {id, 0, frame, {}, 1, visual::Picture{image}}; }
};

class VisualMountTest : public ::testing::Test {
 protected:
  VisualMountTest() {
    window.resize(100, 100);
    window.show();
  }

  QColor at(int x, int y) { return colorAt(window, {x, y}); }

  QQuickWindow window;
  VisualMount mount{*window.contentItem()};
};

TEST_F(VisualMountTest, RepaintsOnlyWhatHasChanged) {
  Probe still, moved, grown;
  mount.update({still.at(1, {0, 0, 10, 10}), moved.at(2, {20, 0, 10, 10}), grown.at(3, {40, 0, 10, 10})});
  EXPECT_EQ(at(5, 5), QColor(Qt::red));
  for (Probe* each : {&still, &moved, &grown}) each->pixel = qRgb(0, 0, 255);
  mount.update({still.at(1, {0, 0, 10, 10}), moved.at(2, {20, 50, 10, 10}), grown.at(3, {40, 0, 20, 20})});
  EXPECT_EQ(at(5, 5), QColor(Qt::red));
  EXPECT_EQ(at(25, 55), QColor(Qt::red)) << "an item that moves is not repainted";
  EXPECT_EQ(at(55, 15), QColor(Qt::blue));
  mount.update({moved.at(2, {20, 50, 10, 10})});
  EXPECT_EQ(at(5, 5), QColor(Qt::white));
  mount.update({still.at(1, {0, 0, 10, 10})});
  EXPECT_EQ(at(5, 5), QColor(Qt::blue)) << "an item that was removed is painted again when it comes back";

  int frames = 0;
  QObject::connect(&window, &QQuickWindow::frameSwapped, [&] { ++frames; });
  for (const int changes : {1, 1, 0}) {  // at first, the window may draw a frame because it appears
    frames = 0;
    mount.update({still.at(1, {0, 0, 10, 10})});
    QTest::qWait(50);
    EXPECT_LE(frames, changes) << "nothing is drawn while nothing changes";
  }
}

TEST_F(VisualMountTest, RepaintsForAnotherPixelRatio) {
  struct Item : VisualItem {
    using VisualItem::itemChange;
    using VisualItem::VisualItem;
  };
  Probe probe;
  Item item(TextSettings{});
  item.setParentItem(window.contentItem());
  item.show(probe.at(1, {0, 0, 10, 10}), {}, 1);
  EXPECT_EQ(at(5, 5), QColor(Qt::red));
  probe.pixel = qRgb(0, 0, 255);
  item.itemChange(QQuickItem::ItemDevicePixelRatioHasChanged, 3.0);
  EXPECT_EQ(at(5, 5), QColor(Qt::blue));
}

TEST_F(VisualMountTest, KeepsTheOrderAndTheClips) {
  const Rect clip{10, 10, 20, 20};
  const visual::Box green{{0, 1, 0, 1}};
  const visual::Box blue{{0, 0, 1, 1}};
  mount.update({{1, 0, {0, 0, 100, 100}, {}, 1, visual::Box{{1, 0, 0, 1}}},
                {2, 0, {0, 0, 100, 100}, clip, 1, green},
                {3, 0, {15, 15, 5, 5}, clip, 1, blue},
                {4, 0, {25, 25, 50, 50}, {}, 0.5, visual::Box{{0, 0, 1, 1}, 8}}});
  EXPECT_EQ(at(5, 5), QColor(Qt::red));
  EXPECT_EQ(at(12, 12), QColor(Qt::green));
  EXPECT_EQ(at(17, 17), QColor(Qt::blue));
  EXPECT_EQ(at(28, 31), QColor(128, 0, 127)) << "a translucent box over both";
  EXPECT_EQ(at(25, 25), QColor(Qt::green)) << "outside its rounded corner";
  mount.update({{3, 0, {15, 15, 5, 5}, {}, 1, blue}, {2, 0, {0, 0, 18, 100}, clip, 1, green}});
  EXPECT_EQ(at(17, 17), QColor(Qt::green)) << "the last visual lies on top";
  EXPECT_EQ(at(19, 17), QColor(Qt::blue));
}

// Draws visuals in a window of 100 x 100 points with `ratio` pixels per point.
QImage drawnAt(double ratio, const std::vector<Visual>& visuals) {
  QImage image((QSizeF(100, 100) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(ratio);
  QQuickRenderControl control;
  QQuickWindow window(&control);
  QQuickRenderTarget target = QQuickRenderTarget::fromPaintDevice(&image);
  target.setDevicePixelRatio(ratio);
  window.setRenderTarget(target);
  window.resize(100, 100);
  VisualMount mount(*window.contentItem());
  mount.update(visuals);
  control.polishItems();
  control.sync();
  control.render();
  return image;
}

TEST_F(VisualMountTest, FadesABoxFromEdgeToEdge) {
  mount.update({{1, 0, {0, 0, 40, 40}, {}, 1, visual::Box{{0, 0, 1, 1}, 0, 1}},
                {2, 0, {50, 0, 40, 40}, {}, 1, visual::Box{{0, 0, 1, 1}, 0, -1}}});
  for (const int y : {1, 10, 20, 30, 38}) {
    EXPECT_NEAR(at(20, y).red(), 255 - at(70, y).red(), 8) << y;
    EXPECT_LT(at(20, y - 1).red(), at(20, y + 1).red()) << y;
  }
  EXPECT_EQ(at(20, 0), QColor(Qt::blue));
}

TEST_F(VisualMountTest, FillsTranslucentBoxesEvenly) {
  const QColor mixed(255 - 51, 255 - 102, 255);  // the box's colour at 40 % over white
  for (const double ratio : {1.0, 1.5, 2.0, 2.625}) {
    const QImage drawn =
        drawnAt(ratio, {{1, 0, {3.2, 4.1, 50.3, 40.7}, {}, 1, visual::Box{{0.5, 0, 1, 0.4}, 8}}});
    const int left = static_cast<int>(std::lround(3.2 * ratio)),
              top = static_cast<int>(std::lround(4.1 * ratio));
    const auto expectMixed = [&](int x, int y) {
      const QColor found = drawn.pixelColor(left + x, top + y);
      const int apart =
          std::max({std::abs(found.red() - mixed.red()), std::abs(found.green() - mixed.green()),
                    std::abs(found.blue() - mixed.blue())});
      EXPECT_LE(apart, 1) << ratio << ": " << x << ", " << y << ": " << found.name().toStdString();
    };
    for (int x = 0; x < 50.3 * ratio - 1; ++x) expectMixed(x, static_cast<int>(20 * ratio));
    for (int y = 0; y < 40.7 * ratio - 1; ++y) expectMixed(static_cast<int>(25 * ratio), y);
    for (const double corner : {5.0, 35.0})
      expectMixed(static_cast<int>(corner * ratio), static_cast<int>(5 * ratio));
  }
}

TEST_F(VisualMountTest, ShowsAnyPartOfALongText) {
  std::string text;
  for (int i = 0; i < 20'000; ++i) text += std::to_string(i);
  const visual::Text shown{text, {TextStyle::footnote}, {}, true};
  const Size size = WrappedText(text, shown.font, {}, 80).size();
  for (const double y : {-20'000.0, -20'020.0, 0.0, 100 - size.height}) {
    mount.update({{1, 0, {10, y, size.width, size.height}, {}, 1, shown}});
    QImage drawn = window.grabWindow();
    drawn.setDevicePixelRatio(window.effectiveDevicePixelRatio());
    QImage letters(drawn.size(), QImage::Format_ARGB32_Premultiplied);
    letters.setDevicePixelRatio(drawn.devicePixelRatio());
    letters.fill(Qt::transparent);
    QPainter painter(&letters);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.translate(10, y);
    WrappedText(text, shown.font, {}, size.width).draw(painter, Qt::black, true, -y, 100 - y);
    painter.end();
    QImage expected = drawn;
    expected.fill(Qt::white);
    QPainter(&expected).drawImage(0, 0, letters);
    EXPECT_EQ(drawn, expected) << y;
  }
  EXPECT_EQ(textTiles(1000, 2, 0, 1000), (TextTiles{0, 0})) << "a short text has one tile";
  EXPECT_EQ(textTiles(20'000, 2, 10'000, 10'800), (TextTiles{19, 21}));
  EXPECT_EQ(textTiles(20'000, 2, 19'000, 21'000), (TextTiles{37, 38}));
}

}  // namespace
}  // namespace TalvoConsentSDK
