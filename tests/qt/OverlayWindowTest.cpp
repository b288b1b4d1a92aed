// The banner's window over a host's window: its position, its fades, and which window gets which input.

#include <QMetaEnum>
#include <QWheelEvent>

#include "TalvoConsentSDK/view/Views.h"

#include "adapters/qt/OverlayWindow.h"
#include "adapters/qt/QtApplication.h"

#include "tests/qt/QtTesting.h"

namespace TalvoConsentSDK {
namespace {

using Clock = HostingController::Clock;

const QPoint outside(10, 12);

// A host's window that records the touches, clicks, wheel turns and keys that it receives.
class Host : public QQuickWindow {
 public:
  Texts inputs;

 protected:
  bool event(QEvent* event) override {
    std::string name = QMetaEnum::fromType<QEvent::Type>().valueToKey(event->type());
    if (event->isPointerEvent() && event->type() != QEvent::TouchCancel) {
      const QPointF at = static_cast<QPointerEvent*>(event)->points().front().position();
      name += ' ' + std::to_string(std::lround(at.x())) + ' ' + std::to_string(std::lround(at.y()));
    }
    const bool isHovering = event->type() == QEvent::MouseMove || event->type() == QEvent::Enter;
    if (event->isInputEvent() && !isHovering) inputs.push_back(name);
    return QQuickWindow::event(event);
  }
};

class OverlayWindowTest : public ::testing::Test {
 protected:
  OverlayWindowTest() {
    options.safeArea = [](const QWindow& over) { return SafeArea{over.width() / 100.0, 2, 3, 2}; };
    openHost();
  }

  ~OverlayWindowTest() override { close(); }

  // A card at the bottom of the window: a button, and below it 20 more that scroll within 120 points.
  AnyView banner(bool hasBackdrop) {
    std::vector<AnyView> rows;
    for (int row = 0; row < 20; ++row) {
      const AnyView label = text("Row " + std::to_string(row), {}).frame({.minHeight = 50});
      rows.push_back(button(label, [this] { ++rowPresses; }));
    }
    const AnyView list = scrollView(verticalStack({}, rows)).frame({.maxHeight = 120});
    const AnyView press = button(text("Press", {}).padding(Insets::all(14)), [this] {
      ++presses;
      if (onPress) onPress();
    });
    const Alignment bottom{HorizontalAlignment::center, VerticalAlignment::bottom};
    const AnyView card = verticalStack({}, {press, list})
                             .background({.color = Color::black()})
                             .frame({.maxWidth = infinity, .maxHeight = infinity, .alignment = bottom});
    const AnyView backdrop = shape(Color::black().withAlpha(0.5)).ignoresSafeArea();
    return hasBackdrop ? depthStack({}, {backdrop, card}) : card;
  }

  void openHost() {
    host = std::make_unique<Host>();
    host->setGeometry(0, 0, 300, 400);
    host->setColor(Qt::red);
    host->show();
  }

  void show(bool hasBackdrop, std::optional<OverlayKind> kind = {}) {
    ASSERT_TRUE(QTest::qWaitForWindowExposed(host.get()));
    controller = std::make_shared<HostingController>(banner(hasBackdrop));
    window = QtApplication(options, nullptr).connectedScenes().at(0)->makeWindow();
    if (kind) window = std::make_shared<OverlayWindow>(host.get(), options, nullptr, *kind);
    window->setRootViewController(controller);
    window->makeKeyAndVisible();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&surface()));
  }

  void close() {
    window.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  OverlaySurface& surface() { return *overlays().front(); }

  Rect frame(const std::string& name) {
    const auto& elements = controller->accessibleElements();
    return std::ranges::find(elements, name, &AccessibleElement::name)->frame;
  }

  QPoint middle(const std::string& name) {
    const Point center = frame(name).center();
    return QPointF(center.x, center.y).toPoint();
  }

  void click(QWindow& on, const QPoint& at) { QTest::mouseClick(&on, Qt::LeftButton, {}, at); }
  auto touch() { return QTest::touchEvent(&surface(), finger.get()); }

  void wheel(const QPoint& at) {
    QWheelEvent event(at, surface().mapToGlobal(at), {}, {0, -120}, {}, {}, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&surface(), &event);
  }

  int presses = 0;
  std::function<void()> onPress;
  int rowPresses = 0;
  std::unique_ptr<Host> host;
  QtOptions options;
  std::shared_ptr<HostingController> controller;
  std::shared_ptr<Window> window;
  std::unique_ptr<QPointingDevice> finger{QTest::createTouchDevice()};
};

TEST_F(OverlayWindowTest, CoversItsHostAndFollowsIt) {
  for (const bool hasBackdrop : {false, true}) {
    show(hasBackdrop);
    for (const QRect& geometry : {QRect(40, 60, 300, 400), QRect(100, 10, 400, 300)}) {
      host->setGeometry(geometry);
      EXPECT_TRUE(spinUntil([&] { return surface().geometry() == geometry; }));
      EXPECT_EQ(frame("Press").center().x, geometry.width() / 2.0);
      EXPECT_EQ(controller->environment().safeArea.top, geometry.width() / 100.0);
      const auto shows = [&](const QPoint& at) { return hasBackdrop || surface().mask().contains(at); };
      EXPECT_TRUE(spinUntil([&] { return shows(middle("Press")) && shows(outside) == hasBackdrop; }));
      EXPECT_TRUE(surface().mask().isEmpty() || !hasBackdrop);
    }
    EXPECT_EQ(surface().transientParent(), host.get());
  }
  host->resize(300, 400);
  QTimer::singleShot(10, host.get(), [&] { host->setColor(Qt::green); });  // the host redraws itself late
  EXPECT_TRUE(spinUntil([&] { return colorAt(surface(), outside).green() > 100; }));
}

TEST_F(OverlayWindowTest, IsShownAndHiddenWithItsHost) {
  for (const auto kind : {OverlayKind::opaque, OverlayKind::child}) {
    show(false, kind);
    const auto isVisible = [&] { return surface().isVisible(); };
    host->close();
    EXPECT_FALSE(isVisible());
    host->show();
    EXPECT_TRUE(spinUntil(isVisible));
    host->hide();
    window->setHidden(false);
    EXPECT_FALSE(isVisible());
    window->setHidden(true);
    host->show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(host.get()));
    QCoreApplication::processEvents();
    EXPECT_FALSE(isVisible());
    window->setHidden(false);
    surface().close();
    EXPECT_TRUE(spinUntil(isVisible)) << "closing the window is not a decision";
    close();
  }
}

TEST_F(OverlayWindowTest, FadesByTheClock) {
  show(true);
  for (const auto& [alpha, red] : {std::pair(0.0, 255), {0.5, 191}, {1.0, 127}}) {
    window->setAlpha(alpha);
    EXPECT_NEAR(colorAt(surface(), outside).red(), red, 2) << "the host shows through the backdrop";
  }
  window->setAlpha(0);
  const auto start = Clock::now();
  std::chrono::duration<double> first{};
  std::chrono::duration<double> second{};
  window->animateAlpha(1, 300ms, [&] { first = Clock::now() - start; });
  QTest::qWait(150);
  const std::chrono::duration<double> passed = Clock::now() - start;
  const double reached = surface().stage().opacity();
  EXPECT_GT(reached, 0);
  EXPECT_LE(reached, passed / 300ms);
  window->animateAlpha(0, 300ms, [&] { second = Clock::now() - start; });
  EXPECT_GE(surface().stage().opacity(), reached) << "the second fade starts where the first one was";
  EXPECT_TRUE(spinUntil([&] { return first.count() > 0 && second.count() > 0; }));
  EXPECT_GE(first, 300ms);
  EXPECT_LT(first, second) << "the first fade completes at its own end";
  EXPECT_GE(second, passed + 300ms);
  EXPECT_EQ(surface().stage().opacity(), 0);
  EXPECT_TRUE(spinUntil([&] { return !surface().isBusy(); }));
  bool isDone = false;
  window->animateAlpha(1, 0ms, [&] { isDone = true; });
  EXPECT_TRUE(isDone);
}

// A host may run an event loop in a callback, and the banner may be replaced while that loop runs.
TEST_F(OverlayWindowTest, OutlivesItsHandlers) {
  for (const bool byKey : {false, true}) {
    show(true);
    QPointer<OverlaySurface> handling = &surface();
    onPress = [&] {
      QTimer::singleShot(0, host.get(), [&] { window.reset(); });
      EXPECT_FALSE(QTest::qWaitFor([&] { return !handling; }, 50));
    };
    if (byKey) {
      controller->press(Key::tab);
      QTest::keyClick(&surface(), Qt::Key_Space);
    } else {
      click(surface(), middle("Press"));
    }
    EXPECT_FALSE(window);
    EXPECT_TRUE(spinUntil([&] { return !handling; }));
  }
  EXPECT_EQ(presses, 2);
}

TEST_F(OverlayWindowTest, HidesAndGoesAway) {
  show(true);
  window->setHidden(true);
  EXPECT_FALSE(surface().isVisible());
  EXPECT_TRUE(spinUntil([&] { return QGuiApplication::focusWindow() == host.get(); }))
      << "the host gets the keyboard focus back";
  window->setHidden(false);
  EXPECT_TRUE(surface().isVisible());
  window->animateAlpha(0, 10ms, [held = window] { held->setHidden(true); });
  window.reset();
  EXPECT_TRUE(spinUntil([&] { return overlays().empty() || !surface().isVisible(); }));
  close();
  EXPECT_THAT(overlays(), IsEmpty()) << "the fade held the last reference to the window";
  click(*host, outside);
  EXPECT_EQ(host->inputs.size(), 2U) << "the host receives input again";
}

TEST_F(OverlayWindowTest, OutlivesItsHostHidden) {
  for (const auto kind : {OverlayKind::opaque, OverlayKind::translucent, OverlayKind::child}) {
    show(true, kind);
    int ends = 0;
    int losses = 0;
    controller->setOnWindowLost([&] { ++losses; });
    window->animateAlpha(0, 50ms, [&] { ++ends; });
    host.reset();
    EXPECT_EQ(losses, 1);
    EXPECT_TRUE(spinUntil([&] { return ends == 1; }));
    window->animateAlpha(1, 0ms, [&] { ++ends; });
    EXPECT_EQ(ends, 2);
    window->makeKeyAndVisible();
    EXPECT_TRUE(overlays().empty() || !surface().isVisible());
    close();
    openHost();
  }
}

TEST_F(OverlayWindowTest, ASecondWindowCoversTheFirstAndOutlivesIt) {
  show(false);
  const auto first = window;
  show(true);
  EXPECT_EQ(overlays().size(), 2U);
  click(surface(), middle("Press"));
  EXPECT_EQ(presses, 1);
  first->setHidden(true);
  EXPECT_TRUE(surface().isVisible());
  Host other;
  other.show();
  surface().requestActivate();
  EXPECT_TRUE(spinUntil([&] { return surface().isActive(); }));
  show(true);
  EXPECT_EQ(surface().transientParent(), host.get())
      << "uses the host of the active banner, not the newest host";
  close();
  other.close();
  host->hide();
  const auto scenes = QtApplication(options, nullptr).connectedScenes();
  ASSERT_EQ(scenes.size(), 2U) << "banners are not scenes";
  EXPECT_EQ(scenes[0]->activationState(), ActivationState::background);
}

TEST_F(OverlayWindowTest, PassesTouchesOutsideTheCardToItsHostWithoutABackdrop) {
  for (const bool hasBackdrop : {true, false}) {
    show(hasBackdrop);
    const QPoint inside = middle("Press");
    click(surface(), inside);
    touch().press(0, inside);
    touch().release(0, inside);
    wheel(inside);
    EXPECT_THAT(host->inputs, IsEmpty());
    click(surface(), outside);
    wheel(outside);
    QTest::keyClick(&surface(), Qt::Key_A);
    touch().press(0, outside);
    touch().move(0, inside);
    touch().release(0, inside);
    touch().press(0, outside);
    QTouchEvent cancel(QEvent::TouchCancel, finger.get());
    QCoreApplication::sendEvent(&surface(), &cancel);
    EXPECT_TRUE(hasBackdrop || spinUntil([&] { return QGuiApplication::focusWindow() == host.get(); }));
    if (hasBackdrop) {
      click(*host, outside);
      EXPECT_THAT(host->inputs, IsEmpty());
    }
    close();
  }
  EXPECT_THAT(host->inputs, ElementsAre("MouseButtonPress 10 12", "MouseButtonRelease 10 12", "Wheel 10 12",
                                        "KeyPress", "TouchBegin 10 12", StartsWith("TouchUpdate"),
                                        StartsWith("TouchEnd"), "TouchBegin 10 12", "TouchCancel"));
  EXPECT_EQ(presses, 4);
}

TEST_F(OverlayWindowTest, AChildWindowPassesUnusedKeysToItsHost) {
  for (const bool hasBackdrop : {true, false}) {
    show(hasBackdrop, OverlayKind::child);
    for (const auto key : {Qt::Key_Tab, Qt::Key_Space, Qt::Key_A}) QTest::keyPress(host.get(), key);
    close();
  }
  EXPECT_EQ(presses, 2);
  EXPECT_EQ(std::ranges::count(host->inputs, "KeyPress"), 1)
      << "only the letter, and only without a backdrop";
}

TEST_F(OverlayWindowTest, OneFingerTapsAndDrags) {
  show(true);
  const QPoint inside = middle("Press");
  touch().press(0, inside);
  touch().stationary(0).press(1, inside);
  touch().stationary(0).release(1, inside);
  EXPECT_EQ(presses, 0) << "the second finger is ignored";
  touch().release(0, inside);
  touch().press(0, inside);
  QTouchEvent cancel(QEvent::TouchCancel, finger.get());
  QCoreApplication::sendEvent(&surface(), &cancel);
  touch().release(0, inside);
  EXPECT_EQ(presses, 1);

  const double start = frame("Row 0").y;
  const QPoint row = middle("Row 1");
  touch().press(0, row);
  touch().move(0, row - QPoint(0, 12));
  touch().move(0, row - QPoint(0, 42));
  EXPECT_EQ(frame("Row 0").y, start - 30) << "the movement that turns a tap into a drag does not scroll";
  touch().release(0, row - QPoint(0, 42));
  EXPECT_TRUE(spinUntil([&] { return !surface().isBusy(); }));
  EXPECT_LE(frame("Row 0").y, start - 30);
  EXPECT_EQ(rowPresses, 0);
}

TEST_F(OverlayWindowTest, MouseWheelAndKeysReachTheControls) {
  show(true);
  const double start = frame("Row 0").y;
  wheel(middle("Row 0"));
  EXPECT_EQ(frame("Row 0").y, start - 48);
  QTest::keyClick(&surface(), Qt::Key_Home);
  EXPECT_EQ(frame("Row 0").y, start);
  QTest::mousePress(&surface(), Qt::LeftButton, {}, middle("Row 0"));
  QTest::mouseMove(&surface(), middle("Press"));
  QTest::mouseRelease(&surface(), Qt::LeftButton, {}, middle("Press"));
  EXPECT_EQ(presses + rowPresses, 0) << "a drag is not a tap";
  for (const auto key :
       {Qt::Key_Tab, Qt::Key_Space, Qt::Key_Tab, Qt::Key_Return, Qt::Key_Backtab, Qt::Key_Enter}) {
    QTest::keyClick(&surface(), key);
  }
  EXPECT_EQ(presses, 2);
  EXPECT_EQ(rowPresses, 1);
}

}  // namespace
}  // namespace TalvoConsentSDK
