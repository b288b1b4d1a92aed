// What the mount puts on screen, and that it paints anew only what has changed.

#include "adapters/qt/QtImageLoader.h"
#include "adapters/qt/VisualMount.h"

#include "tests/qt/QtTesting.h"

namespace TalvoConsentSDK {
namespace {

// A picture whose pixel changes behind the back of everybody who holds it, so that painting it anew shows.
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
  VisualMount mount{*window.contentItem(), {}};
};

TEST_F(VisualMountTest, PaintsAnewOnlyWhatHasChanged) {
  Probe still, moved, grown;
  mount.update({still.at(1, {0, 0, 10, 10}), moved.at(2, {20, 0, 10, 10}), grown.at(3, {40, 0, 10, 10})});
  EXPECT_EQ(at(5, 5), QColor(Qt::red));
  for (Probe* each : {&still, &moved, &grown}) each->pixel = qRgb(0, 0, 255);
  mount.update({still.at(1, {0, 0, 10, 10}), moved.at(2, {20, 50, 10, 10}), grown.at(3, {40, 0, 20, 20})});
  EXPECT_EQ(at(5, 5), QColor(Qt::red));
  EXPECT_EQ(at(25, 55), QColor(Qt::red)) << "an item that moves is not painted";
  EXPECT_EQ(at(55, 15), QColor(Qt::blue));
  mount.update({moved.at(2, {20, 50, 10, 10})});
  EXPECT_EQ(at(5, 5), QColor(Qt::white));
  mount.update({still.at(1, {0, 0, 10, 10})});
  EXPECT_EQ(at(5, 5), QColor(Qt::blue)) << "an item that went comes back new";

  int frames = 0;
  QObject::connect(&window, &QQuickWindow::frameSwapped, [&] { ++frames; });
  for (const int changes : {1, 1, 0}) {  // at first the window may still come on screen
    frames = 0;
    mount.update({still.at(1, {0, 0, 10, 10})});
    QTest::qWait(50);
    EXPECT_LE(frames, changes) << "nothing is drawn while nothing changes";
  }
}

TEST_F(VisualMountTest, PaintsAnewForOtherPixels) {
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
  EXPECT_EQ(at(25, 25), QColor(Qt::green)) << "its corner";
  mount.update({{3, 0, {15, 15, 5, 5}, {}, 1, blue}, {2, 0, {0, 0, 18, 100}, clip, 1, green}});
  EXPECT_EQ(at(17, 17), QColor(Qt::green)) << "what came last lies on top";
  EXPECT_EQ(at(19, 17), QColor(Qt::blue));
}

TEST_F(VisualMountTest, LeavesNoSeamsInRoundedBoxes) {
  const double ratio = window.effectiveDevicePixelRatio();
  for (const double size : {20.25, 20.5, 20.75, 21.5}) {
    mount.update({{1, 0, {0, 0, size, size}, {}, 1, visual::Box{{1, 0, 0, 1}, 4}}});
    const QImage drawn = window.grabWindow();
    const int middle = static_cast<int>(size / 2 * ratio);
    for (int i = 0; i < size * ratio - 1; ++i) {
      for (const QPoint& pixel : {QPoint(i, middle), QPoint(middle, i)}) {
        EXPECT_EQ(drawn.pixelColor(pixel), QColor(Qt::red)) << size << ": " << pixel.x() << ", " << pixel.y();
      }
    }
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
