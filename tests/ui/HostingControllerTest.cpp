// Touches, keys, focus and assistive technology, on a banner in a window without a toolkit.

#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

const auto at = [](int time) {
  return HostingController::Clock::time_point(std::chrono::milliseconds(time));
};

class HostingControllerTest : public BannerTest {
 protected:
  AnyView noting(const std::string& name, double width, double height) {
    return button(box(width, height), [this, name] { trace.push_back(name); }).accessibility({.label = name});
  }

  std::string used() { return joined(std::exchange(trace, {})); }
};

TEST_F(HostingControllerTest, TellsWhatThereIsAndWhereItCanBeHit) {
  made = customization("closeButton title description links:doNotSellMyData buttons:acceptAll");
  TestScreen clear(bannerComposition(banner().view(), made));
  EXPECT_EQ(clear.list(true),
            "dialog Title 12 662 366 170; heading Title 24 674 42.5 22; text Message 24 712 52.5 20; "
            "link Don't Sell My Data 24 727 117 44; button Accept 24 774 342 46; button Close 332 664 44 44");
  EXPECT_FALSE(find(clear, "dialog").isModal || clear.covers({200, 661}) || !clear.covers({200, 663}));
  made.settings.isShowBlurBackground = true;
  TestScreen dimmed(bannerComposition(banner().view(), made));
  EXPECT_TRUE(find(dimmed, "dialog").isModal && dimmed.covers({200, 10}));
  dimmed.touch({{200, 10}});
  EXPECT_EQ(used(), "");
}

// Over every screen lies the close control; a long list of vendors leaves only the last buttons in reach.
TEST_F(HostingControllerTest, KeepsControlsInReach) {
  made.messages.bannerMessages.title = std::string(200, 'T');
  for (const char* first :
       {"unknown title", "title", "tabs:statistics unknown", "buttons:acceptAll,rejectAll"}) {
    const auto all = components(first + std::string(" tabs:marketing closeButton buttons:save bannerLogo"));
    made.components->secondaryScreen = all;
    const ConsentBannerView view = banner();
    view.handleMainAction("preferences");
    TestScreen screen(view.view(), {390, 400});
    tap(screen, "expander Marketing");
    EXPECT_FALSE(find(screen, "button Save").clip) << first;
    const Rect close = find(screen, "button Close").control->frame;
    for (const auto& each : screen.accessibleElements()) {
      if (each.role == Role::dialog || each.isDismissal) continue;
      EXPECT_FALSE(close.intersects(each.control ? each.control->frame : each.frame)) << first << line(each);
    }
  }
}

TEST_F(HostingControllerTest, HitsTheNearestControl) {
  const AnyView clipped = scroll(noting("clip", 20, 200)).frame({.minHeight = 20, .maxHeight = 20});
  const AnyView deep = depthStack({}, {noting("low", 60, 20), noting("high", 20, 20)});
  const AnyView off = noting("off", 20, 20).disabled();
  const VerticalOptions leading{.alignment = HorizontalAlignment::leading};
  TestScreen screen(verticalStack(leading, {noting("a", 20, 20), noting("b", 20, 20), off, deep, clipped}));
  const std::tuple<double, double, std::string> table[] = {
      {10, 10, "a"}, {31, 5, "a"},     {33, 5, ""},     {25, 18, "a"},   {25, 22, "b"},    {10, 42, ""},
      {10, 50, ""},  {30, 70, "high"}, {15, 70, "low"}, {50, 70, "low"}, {10, 95, "clip"}, {10, 105, ""}};
  for (const auto& [x, y, name] : table) {
    screen.touch({{x, y}});
    EXPECT_EQ(used(), name) << x << " " << y;
  }
}

TEST_F(HostingControllerTest, TapsButDoesNotDrag) {
  TestScreen screen(noting("tap", 100, 100));
  const auto opacity = [&] { return screen.frame(at(0)).front().opacity; };
  screen.touchBegan({50, 50}, at(0));
  EXPECT_LT(opacity(), 1) << "pressed";
  screen.touchCancelled();
  screen.touchEnded({50, 50}, at(10));
  EXPECT_EQ(opacity(), 1);
  screen.touchBegan({50, 50}, at(20));  // its end gets lost
  screen.touch({{300, 300}});
  screen.touch({{50, 50}, {58, 58}, {50, 50}});
  EXPECT_EQ(used(), "");
  screen.touch({{50, 50}, {56, 57}});
  EXPECT_EQ(used(), "tap");
}

TEST_F(HostingControllerTest, CallsTheNewestHandlerOfWhatIsEnabled) {
  TestScreen screen(component("counter", [this](RenderContext& context) {
    const State<int> count = context.state<int>(0);
    const State<std::string> said = context.state<std::string>("");  // one of each type
    const auto use = [this, count, said, now = count.get()] {
      trace.push_back(std::to_string(now) + said.get());
      said.set(said.get() + "!");
      count.set(now + 1);
    };
    return button(box(10, 10), use).disabled(count.get() == 3);
  }));
  const ElementId id = find(screen, "button").id;
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(screen.activate(id));
  EXPECT_FALSE(screen.activate(id));
  EXPECT_FALSE(screen.activate(id + 1));
  EXPECT_EQ(used(), "0; 1!; 2!!");
}

TEST_F(HostingControllerTest, MovesTheFocusByKeys) {
  using enum Key;
  made = customization("title buttons:acceptAll,rejectAll,managePreferences closeButton",
                       "title tabs:necessary,marketing buttons:savePreferences");
  TestScreen screen(banner({}, catalogue("marketing:A,B")).view());
  // What has the focus after each key, what was called, and "!" where the key is left to the host.
  const auto press = [&](std::initializer_list<Key> keys) {
    std::string all;
    for (const Key key : keys) {
      const std::string rest = screen.press(key) ? " " : "! ";
      for (const auto& each : screen.accessibleElements()) {
        if (each.id == screen.focused()) all += words(each.name).front() + used() + rest;
      }
    }
    return all;
  };
  EXPECT_EQ(press({enter, down}), "Title! Title! ");
  EXPECT_EQ(press({tab, tab, backtab, space}), "Accept Reject Accept Acceptaccept ");
  EXPECT_EQ(press({escape, backtab, enter, tab}), "Acceptclose Close Closeclose Accept ");
  EXPECT_EQ(press({backtab, backtab, enter}), "Close Manage Title ") << "a screen begins at its title";
  EXPECT_EQ(press({escape}), "Title! ") << "this one cannot be closed";
  EXPECT_EQ(press({tab, space, tab, tab, tab}), "Marketing Marketing Marketing A A ") << "past disabled ones";
  EXPECT_EQ(press({backtab, enter, backtab, space}), "A Title Back Title ") << "to a vendor and back";
  EXPECT_EQ(press({backtab, backtab}), "Save B ");
  const Visual ring = screen.frame(at(0)).back();
  EXPECT_TRUE(std::holds_alternative<visual::FocusRing>(ring.content));
  screen.touch({{0, 0}});
  EXPECT_NE(screen.frame(at(0)).back().part, ring.part) << "a finger shows where it is";
}

class ScrollingTest : public HostingControllerTest {
 protected:
  double offset() { return 0 - find(screen, "button first").frame.y; }

  const std::vector<AnyView> views{noting("first", 100, 50), box(100, 2900), noting("last", 100, 50)};
  TestScreen screen{scroll(verticalStack({}, views)), {100, 300}};
};

TEST_F(ScrollingTest, FollowsAFingerAndGoesOn) {
  screen.touch({{50, 250}, {50, 241}});
  EXPECT_EQ(offset(), 0) << "too little to be a drag";
  screen.touch({{50, 250}, {50, 230}, {50, 150}}, 500ms);
  EXPECT_EQ(offset(), 80) << "what told the drag from a tap does not scroll";
  EXPECT_FALSE(screen.isMoving()) << "it rested";
  // 100 points in 40 ms are 2500 a second, which fall to their e^-2 a second: 1250 * (1 - e^-2t).
  screen.touch({{50, 250}, {50, 230}, {50, 150}});
  screen.setOnNeedsFrame([] { ADD_FAILURE() << "a frame that is due is not asked for"; });
  const std::pair<int, double> table[] = {{140, 226.6}, {150, 246.9}, {540, 790.2}, {4540, 1250}};
  for (const auto& [time, distance] : table) {
    EXPECT_TRUE(screen.isMoving());
    screen.frame(at(time));
    EXPECT_NEAR(offset(), 160 + distance, 1) << time;
  }
  EXPECT_FALSE(screen.isMoving());
  screen.setOnNeedsFrame({});

  screen.touch({{50, 100}, {50, 130}, {50, 150}});
  screen.frame(at(100));
  const double caught = offset();
  screen.touch({{50, 10}});
  screen.frame(at(500));
  EXPECT_EQ(offset(), caught) << "a touch ends it";
  screen.touch({{50, 100}, {50, 250}, {50, 290}});
  screen.frame(at(1000));
  screen.frame(at(1010));
  EXPECT_FALSE(screen.isMoving()) << "there is nothing above";
}

TEST_F(ScrollingTest, ObeysWheelAndKeysAndShowsTheFocus) {
  using enum Key;
  const Key keys[] = {down, up, up, pageDown, pageUp, end, home, backtab, tab};
  const double offsets[] = {40, 0, 0, 270, 0, 2700, 0, 2700, 0};
  for (std::size_t i = 0; i < std::size(keys); ++i) {
    EXPECT_TRUE(screen.press(keys[i]));
    EXPECT_EQ(offset(), offsets[i]);
  }
  const Visual ring = screen.frame(at(0)).back();
  EXPECT_EQ(ring.frame.intersection(*ring.clip), ring.frame) << "seen whole";
  screen.scroll({50, 100}, 33);
  screen.scroll({150, 100}, 33);  // beside what scrolls
  EXPECT_EQ(offset(), 33);
}

// Rendering asks the host for texts and prints lines on its printer; either may run an event loop.
TEST_F(HostingControllerTest, IsAskedWhileItRenders) {
  HostingController* asked = nullptr;
  int renderings = 0;
  const AnyView nested = component("nested", [&](RenderContext&) {
    ++renderings;
    asked->touchBegan({1, 1}, {});
    asked->touchEnded({1, 1}, {});
    EXPECT_TRUE(asked->frame({}).empty() && asked->covers({1, 1}) && asked->accessibleElements(true).empty());
    asked->setEnvironment({std::make_shared<FixedWidthMeasurer>(), nullptr, 1, {390, 844}, {}, {}, false});
    return text("Shown", {});
  });
  TestScreen screen(verticalStack({}, {text("First", {}), nested}));
  asked = &screen;
  EXPECT_THAT(screen.drawn(), HasSubstr("Shown"));
  EXPECT_EQ(renderings, 1);
}

}  // namespace
}  // namespace TalvoConsentSDK
