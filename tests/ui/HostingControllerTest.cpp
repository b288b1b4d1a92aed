// Touches, keys, focus and assistive technology for a banner in a window without a toolkit.

#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {

namespace {

const auto at = [](int time) {
  return HostingController::Clock::time_point(std::chrono::milliseconds(time));
};

class HostingControllerTest : public BannerTest {
 protected:
  AnyView recordingButton(const std::string& name, double width, double height) {
    return button(box(width, height), [this, name] { trace.push_back(name); }).accessibility({.label = name});
  }

  std::string takeTrace() { return joined(std::exchange(trace, {})); }
};

TEST_F(HostingControllerTest, ListsElementsAndTheirHitAreas) {
  site = customization("closeButton title description links:doNotSellMyData buttons:acceptAll");
  TestScreen clear(bannerComposition(banner().view(), site));
  EXPECT_EQ(clear.list(true),
            "dialog Title 12 662 366 170; heading Title 24 674 42.5 22; text Message 24 712 52.5 20; "
            "link Don't Sell My Data 24 727 117 44; button Accept 24 774 342 46; button Close 332 664 44 44");
  EXPECT_FALSE(find(clear, "dialog").isModal || clear.covers({200, 661}) || !clear.covers({200, 663}));
  site.settings.isShowBlurBackground = true;
  TestScreen dimmed(bannerComposition(banner().view(), site));
  EXPECT_TRUE(find(dimmed, "dialog").isModal && dimmed.covers({200, 10}));
  dimmed.touch({{200, 10}});
  EXPECT_EQ(takeTrace(), "");
}

// The close control lies over every screen and must not overlap other controls or texts, unless they are
// scrolled. Above a long list of vendors, only the buttons at the end stay visible.
TEST_F(HostingControllerTest, KeepsControlsInReach) {
  site.messages.bannerMessages.title = std::string(200, 'T');
  for (const char* first :
       {"unknown title", "title", "tabs:statistics unknown", "buttons:acceptAll,rejectAll"}) {
    const auto all = components(first + std::string(" tabs:marketing closeButton buttons:save bannerLogo"));
    site.components->secondaryScreen = all;
    const ConsentBannerView view = banner();
    view.handleMainAction("preferences");
    TestScreen screen(view.view(), {390, 400});
    const Rect close = find(screen, "button Close").control->frame;
    for (const auto& each : screen.accessibleElements()) {
      if (each.role == Role::dialog || each.isDismissal) continue;
      EXPECT_FALSE(close.intersects(each.control ? each.control->frame : each.frame)) << first << line(each);
    }
    tap(screen, "expander Marketing");
    EXPECT_FALSE(find(screen, "button Save").clip) << first;
  }
}

TEST_F(HostingControllerTest, CanLeaveEveryScreen) {
  const auto table = tableOf<3>("banner/exits.txt");
  for (const auto& [screenName, listed, expected] : table) {
    site = customization(screenName == "main" ? listed : "", listed);
    if (listed == "-") site.components.reset();
    const ConsentBannerView view = banner();
    if (screenName != "main") view.handleMainAction("preferences");
    if (screenName == "vendor") view.showVendorDetail(vendors.groupedByVendor("marketing").front());
    TestScreen screen(view.view());
    const Rect card = find(screen, "dialog").frame;
    Texts found;
    for (const auto& each : screen.accessibleElements()) {
      if (!each.isControl() || each.role == Role::toggle) continue;
      found.push_back(each.name);
      EXPECT_EQ(each.control->frame.intersection(card), each.control->frame) << screenName << listed;
    }
    EXPECT_EQ(joined(found), expected) << screenName << listed;
  }
}

TEST_F(HostingControllerTest, HitsTheNearestControl) {
  const AnyView clipped =
      scrollView(recordingButton("clip", 20, 200)).frame({.minHeight = 20, .maxHeight = 20});
  const AnyView deep = depthStack({}, {recordingButton("low", 60, 20), recordingButton("high", 20, 20)});
  const AnyView off = recordingButton("off", 20, 20).disabled();
  const VerticalOptions leading{.alignment = HorizontalAlignment::leading};
  TestScreen screen(verticalStack(
      leading, {recordingButton("a", 20, 20), recordingButton("b", 20, 20), off, deep, clipped}));
  const std::tuple<double, double, std::string> table[] = {
      {10, 10, "a"}, {31, 5, "a"},     {33, 5, ""},     {25, 18, "a"},   {25, 22, "b"},    {10, 42, ""},
      {10, 50, ""},  {30, 70, "high"}, {15, 70, "low"}, {50, 70, "low"}, {10, 95, "clip"}, {10, 105, ""}};
  for (const auto& [x, y, name] : table) {
    screen.touch({{x, y}});
    EXPECT_EQ(takeTrace(), name) << x << " " << y;
  }
}

TEST_F(HostingControllerTest, TapsButDoesNotDrag) {
  TestScreen screen(recordingButton("tap", 100, 100));
  const auto opacity = [&] { return screen.frame(at(0)).front().opacity; };
  screen.touchBegan({50, 50}, at(0));
  EXPECT_LT(opacity(), 1) << "pressed";
  screen.touchCancelled();
  screen.touchEnded({50, 50}, at(10));
  EXPECT_EQ(opacity(), 1);
  screen.touchBegan({50, 50}, at(20));  // this touch never ends
  screen.touch({{300, 300}});
  screen.touch({{50, 50}, {58, 58}, {50, 50}});
  screen.touchBegan({50, 50}, at(30));
  screen.touchEnded({80, 80}, at(40));  // no movement was reported
  EXPECT_EQ(takeTrace(), "");
  screen.touch({{50, 50}, {56, 57}});
  EXPECT_EQ(takeTrace(), "tap");
}

TEST_F(HostingControllerTest, ActivatesOnlyEnabledControlsWithTheirNewestHandler) {
  TestScreen screen(component("counter", [this](RenderContext& context) {
    const State<int> count = context.state<int>(0);
    const State<std::string> suffix = context.state<std::string>("");  // a component has one state per type
    const auto use = [this, count, suffix, now = count.get()] {
      trace.push_back(std::to_string(now) + suffix.get());
      suffix.set(suffix.get() + "!");
      count.set(now + 1);
    };
    return button(box(10, 10), use).disabled(count.get() == 3);
  }));
  const ElementId id = find(screen, "button").id;
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(screen.activate(id));
  EXPECT_FALSE(screen.activate(id));
  EXPECT_FALSE(screen.activate(id + 1));
  EXPECT_EQ(takeTrace(), "0; 1!; 2!!");
}

TEST_F(HostingControllerTest, MovesTheFocusByKeys) {
  using enum Key;
  site = customization("title buttons:acceptAll,rejectAll,managePreferences closeButton",
                       "title tabs:necessary,marketing buttons:savePreferences");
  TestScreen screen(banner({}, catalogue("marketing:A,B")).view());
  // Presses keys and returns, for each: the focused element, what was called, and "!" if the key is left to
  // the host.
  const auto press = [&](std::initializer_list<Key> keys) {
    std::string all;
    for (const Key key : keys) {
      const std::string rest = screen.press(key) ? " " : "! ";
      for (const auto& each : screen.accessibleElements()) {
        if (each.id == screen.focused()) all += words(each.name).front() + takeTrace() + rest;
      }
    }
    return all;
  };
  EXPECT_EQ(press({enter}), "Title! ");
  EXPECT_EQ(press({tab, tab, backtab, space}), "Accept Reject Accept Acceptaccept ");
  EXPECT_EQ(press({escape, backtab, enter, tab}), "Acceptclose Close Closeclose Accept ");
  EXPECT_EQ(press({backtab, backtab, enter}), "Close Manage Title ") << "a new screen focuses its title";
  EXPECT_EQ(press({escape}), "Title! ") << "this screen cannot be closed";
  EXPECT_EQ(press({tab, space, tab, tab, tab}), "Marketing Marketing Marketing A A ")
      << "skips disabled controls";
  EXPECT_EQ(press({backtab, enter, backtab, space}), "A A Back A ") << "opens a vendor and goes back";
  EXPECT_EQ(press({backtab, backtab}), "Marketing Marketing ");
  const Visual ring = screen.frame(at(0)).back();
  EXPECT_TRUE(std::holds_alternative<visual::FocusRing>(ring.content));
  screen.touch({{0, 0}});
  EXPECT_NE(screen.frame(at(0)).back().part, ring.part) << "a touch hides the focus ring";
}

class ScrollingTest : public HostingControllerTest {
 protected:
  double offset() { return 0 - find(screen, "button first").frame.y; }

  const std::vector<AnyView> views{recordingButton("first", 100, 50), box(100, 2900),
                                   recordingButton("last", 100, 50)};
  TestScreen screen{scrollView(verticalStack({}, views)), {100, 300}};
};

TEST_F(ScrollingTest, FollowsAFingerAndCoasts) {
  screen.touch({{50, 250}, {50, 241}});
  EXPECT_EQ(offset(), 0) << "too short for a drag";
  screen.touch({{50, 250}, {50, 230}, {50, 150}}, 500ms);
  EXPECT_EQ(offset(), 80) << "the movement that turns a tap into a drag does not scroll";
  for (const int time : {600, 800}) screen.frame(at(time));
  EXPECT_EQ(offset(), 80) << "the finger rested before it let go";
  EXPECT_FALSE(screen.isMoving());
  // The finger moves 100 points in 40 ms: 2500 points per second. After a second, e^-2 of the speed is left,
  // so the fling scrolls by 1250 * (1 - e^-2t) in t seconds.
  screen.touch({{50, 250}, {50, 230}, {50, 150}});
  screen.setOnNeedsFrame([] { ADD_FAILURE() << "must not ask for a frame that is already due"; });
  const std::pair<int, double> table[] = {
      {140, 226.6}, {150, 246.9}, {540, 790.2}, {4540, 1250}, {4740, 1250}};
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
  EXPECT_EQ(offset(), caught) << "a touch ends the fling";
  screen.touch({{50, 100}, {50, 250}, {50, 290}});
  screen.frame(at(1000));
  screen.frame(at(1200));
  EXPECT_FALSE(screen.isMoving()) << "there is nothing left to scroll";
}

TEST_F(ScrollingTest, ObeysWheelAndKeysAndShowsTheFocus) {
  using enum Key;
  const Key keys[] = {down, down, up, pageDown, pageUp, end, home, backtab, tab};
  const double offsets[] = {0, 100, 0, 270, 0, 2700, 0, 2700, 0};
  for (std::size_t i = 0; i < std::size(keys); ++i) {
    EXPECT_TRUE(screen.press(keys[i]));
    EXPECT_EQ(offset(), offsets[i]);
  }
  const Visual ring = screen.frame(at(0)).back();
  EXPECT_EQ(ring.frame.intersection(*ring.clip), ring.frame) << "the ring is fully visible";
  screen.scroll({50, 100}, 33);
  screen.scroll({150, 100}, 33);  // beside the scrolling part, so it does nothing
  EXPECT_EQ(offset(), 33);
}

/// The preferences of a banner at the bottom of the window, with two categories of 100 vendors each.
class PreferencesTest : public HostingControllerTest {
 protected:
  PreferencesTest() {
    view.handleMainAction("preferences");
    screen.set(&ViewEnvironment::reducesMotion, false);
  }

  static Services manyVendors() {
    std::string names = "v";
    for (int i = 0; i < 99; ++i) names += ",v" + std::to_string(i);
    return catalogue("statistics:" + names + " marketing:" + names);
  }

  double top(const std::string& element) { return find(screen, element).frame.y; }

  void touchAt(Point point, int time) {
    screen.touchBegan(point, at(time));
    screen.touchEnded(point, at(time));
  }

  /// Draws frames until nothing moves, and returns when that was.
  int settle(int time) {
    do screen.frame(at(time += 10));
    while (screen.isMoving());
    return time;
  }

  const ConsentBannerView view{[this] {
    site = customization(
        "title", "title tabs:statistics,preferences,marketing,doNotSell buttons:savePreferences closeButton");
    return banner({}, manyVendors());
  }()};
  TestScreen screen{bannerComposition(view.view(), site)};
};

TEST_F(PreferencesTest, OpensAListBelowTheFinger) {
  const double card = find(screen, "dialog").frame.height;
  const double marketing = top("expander Marketing");
  const double first = top("expander Statistics");
  touchAt(find(screen, "expander Statistics").frame.center(), 1000);
  double before = marketing;
  for (int time = 1010; time < 1060; time += 10) {
    screen.frame(at(time));
    EXPECT_GT(top("expander Marketing"), std::exchange(before, top("expander Marketing"))) << "slides down";
    EXPECT_EQ(top("expander Statistics"), first);
  }
  EXPECT_NEAR(settle(1060), 1250, 20);
  EXPECT_EQ(top("expander Statistics"), first);
  EXPECT_EQ(find(screen, "dialog").frame.height, card) << "a card that grows would lift the row";

  touchAt(find(screen, "expander Statistics").frame.center(), 2000);
  settle(2000);
  EXPECT_EQ(top("expander Marketing"), marketing) << "closed again";

  touchAt(find(screen, "expander Marketing").frame.center(), 3000);
  settle(3000);
  const AccessibleElement& third = find(screen, "button v1");
  EXPECT_LT(third.frame.bottom(), third.clip->bottom()) << "the first vendors can be seen";
  EXPECT_GT(top("expander Marketing"), marketing - 200) << "the list moves no farther than needed";
  screen.scroll({200, 600}, 1000);
  screen.frame(at(4000));
  EXPECT_GT(find(screen, "dialog").frame.height, card + 200) << "scrolling makes use of the whole window";
}

TEST_F(PreferencesTest, ShowsAShortLastListWhole) {
  site = customization("title", "title tabs:statistics,marketing buttons:savePreferences closeButton");
  for (const auto& [vendors, height] : {std::pair("B", 844.0), {"A,A2,B", 844.0}, {"B", 240.0}}) {
    const ConsentBannerView few = banner({}, catalogue("statistics:A marketing:"s + vendors));
    few.handleMainAction("preferences");
    TestScreen small(bannerComposition(few.view(), site), {390, height});
    small.set(&ViewEnvironment::reducesMotion, false);
    const double card = find(small, "dialog").frame.height;
    tap(small, "expander Marketing");
    int time = 1000;
    do small.frame(at(time += 10));
    while (small.isMoving());
    const AccessibleElement& last = find(small, "switch B");
    EXPECT_EQ(last.frame.intersection(last.clip.value_or(last.frame)), last.frame) << vendors << height;
    EXPECT_EQ(find(small, "dialog").frame.height > card, height > 800) << vendors << height;
  }
}

TEST_F(PreferencesTest, IgnoresTapsOnRowsThatMove) {
  const Point finger = find(screen, "expander Marketing").frame.center();
  touchAt(finger, 1000);
  for (int time = 1010; screen.isMoving() || time == 1010; time += 10) {
    for (const double y : {finger.y, finger.y + 60, finger.y + 100}) {
      screen.touchBegan({finger.x, y}, at(time));
      if (y > finger.y) screen.touchEnded({finger.x, y}, at(time));
      screen.touchCancelled();
    }
    EXPECT_TRUE(std::holds_alternative<ConsentBannerView::PreferencesScreen>(view.currentScreen())) << time;
    screen.frame(at(time));
  }
}

TEST_F(PreferencesTest, ComeBackAsTheyWereLeft) {
  tap(screen, "expander Marketing");
  settle(1000);
  screen.scroll({200, 600}, 1500);
  screen.frame(at(2000));
  const auto& elements = screen.accessibleElements();
  const auto seen = std::ranges::find_if(elements, [](const AccessibleElement& each) {
    return each.role == Role::button && each.clip && each.clip->intersection(each.frame) == each.frame;
  });
  const std::string vendor = line(*seen);
  const double y = seen->frame.y;
  touchAt(seen->frame.center(), 2000);
  EXPECT_EQ(find(screen, "heading").name, words(vendor).back());
  screen.scroll({200, 600}, 1000);
  EXPECT_FALSE(find(screen, "button Back").clip) << "the way back does not scroll";
  EXPECT_TRUE(screen.press(Key::escape));
  EXPECT_EQ(top(vendor), y);
  EXPECT_EQ(find(screen, vendor).id, screen.focused());
}

TEST_F(HostingControllerTest, LeadsToTheDoNotSellSwitch) {
  const ConsentBannerView view = banner();
  TestScreen screen(bannerComposition(view.view(), site), {390, 300});
  for (int time = 0; time < 2; ++time) {
    tap(screen, "link");
    const AccessibleElement& found = find(screen, "switch Don't Sell My Data");
    EXPECT_EQ(screen.focused(), found.id);
    EXPECT_EQ(found.frame.intersection(*found.clip), found.frame) << "in view";
    screen.press(Key::home);
  }
}

// Rendering gets texts from the host and prints lines with its printer. Either may run an event loop, whose
// handlers call the controller. When it renders again, the list that the handlers touch is gone.
TEST_F(HostingControllerTest, AnswersCallsWhileItRenders) {
  HostingController* asked = nullptr;
  int renderings = 0;
  const State<bool> hasList(true);
  const AnyView nested = component("nested", [&](RenderContext&) {
    ++renderings;
    asked->touchBegan({1, 1}, {});
    asked->touchEnded({1, 1}, {});
    EXPECT_TRUE(asked->covers({1, 1}));
    EXPECT_EQ(asked->frame({}).empty(), renderings == 1);
    EXPECT_EQ(asked->accessibleElements(Layout::Rows::all).empty(), renderings == 1);
    asked->setEnvironment({std::make_shared<FixedWidthMeasurer>(), nullptr, 1, {390, 844}, {}, {}, false});
    return text("Shown", {});
  });
  TestScreen screen(component("both", [&](RenderContext& context) {
    context.observe(hasList);
    return verticalStack({}, {hasList.get() ? scrollView(box(390, 2000)) : text("First", {}), nested});
  }));
  asked = &screen;
  for (const int expected : {1, 2}) {
    EXPECT_THAT(screen.drawn(), HasSubstr("Shown"));
    EXPECT_EQ(renderings, expected);
    hasList.set(false);
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
