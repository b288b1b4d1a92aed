// Checks exact frames. Every character of body text is 8.5 points wide, and every line of it is 22 points
// high.

#include <cmath>

#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {

namespace {

using Clock = HostingController::Clock;

const auto body = [](const std::string& content) { return text(content, {}); };

AnyView buttons(const std::string& first, const std::string& second) {
  const auto wide = [](const std::string& title) {
    return button(body(title).frame({.maxWidth = infinity, .maxHeight = infinity}).padding(Insets::all(12)),
                  [] {});
  };
  return scrollView(
      horizontalStack({.spacing = 12, .overflow = Overflow::stackAtBrokenWord}, {wide(first), wide(second)}));
}

TEST(LayoutTest, PlacesViews) {
  using enum VerticalAlignment;
  const auto trailing = HorizontalAlignment::trailing;
  const HorizontalOptions links{.spacing = 16, .overflow = Overflow::wrap};
  const AnyView none;
  const auto onBlack = [](const AnyView& view) { return view.background({.color = Color::black()}); };
  const std::pair<AnyView, std::string> table[] = {
      {buttons("a", "bbbb"), "a 42.75 12 8.5 22; bbbb 136 12 34 22"},
      {buttons("two words", "a"), "two words 25.75 12 42.5 44; a 148.75 23 8.5 22"},
      {buttons("unbreakable", "a"), "unbreakable 53.25 12 93.5 22; a 95.75 70 8.5 22"},
      {buttons("unbreakable", "more than one line is needed"),
       "unbreakable 53.25 23 93.5 22; more than one line is needed 23.5 92 153 44; box 0 120 200 20"},
      {horizontalStack(links, {body("ten letter"), none, body("ten letter"), body("ten letter + ten more")}),
       "ten letter 0 0 85 22; ten letter 101 0 85 22; ten letter + ten more 0 38 178.5 22"},
      {horizontalStack(links, {body("more letters than a line can hold")}),
       "more letters than a line can hold 0 0 161.5 44"},
      {scrollView(
           horizontalStack({}, {body("ab").frame({.maxHeight = infinity}).background({}), box(20, 50)})),
       "box 0 0 17 50; ab 0 14 17 22; box 17 0 20 50"},  // as high as its neighbour
      {horizontalStack({.alignment = top, .spacing = 10}, {body("one two three"), box(120, 5)}),
       "one two three 0 0 59.5 44; box 69.5 0 120 5"},
      {horizontalStack({.spacing = 8}, {none, shape({}), none, shape({}).padding({.top = 10})}),
       "box 0 0 96 140; box 104 10 96 130"},
      {verticalStack({.alignment = trailing, .spacing = 4}, {box(50, 10), none, box(30, 10), divider({})}),
       "box 150 0 50 10; box 170 14 30 10; box 0 28 200 1"},
      {depthStack({trailing, top}, {box(50, 40), box(10, 10)}), "box 0 0 50 40; box 40 0 10 10"},
      {body("ab").frame({.minWidth = 40, .minHeight = 30, .alignment = {trailing}}), "ab 23 4 17 22"},
      {body("ab").padding({1, 2, 3, 4}).background({}).overlay(box(10, 10), {trailing, bottom}),
       "box 0 0 23 26; ab 2 1 17 22; box 13 16 10 10"},
      {onBlack(body("ab").padding({.leading = 30})).overlay(onBlack(body("x")), {trailing}),
       "box 0 0 47 22; ab 30 0 17 22; box 38.5 0 8.5 22; x 38.5 0 8.5 22"},
      {onBlack(body("ab").padding({.leading = 30})).overlay(onBlack(body("y")), {}),
       "box 0 0 47 22; ab 30 0 17 22; y 19.25 0 8.5 22"},
  };
  for (const auto& [view, expected] : table) EXPECT_EQ(TestScreen(view, {200, 140}).drawn(), expected);
}

TEST(LayoutTest, KeepsAPicturesProportions) {
  struct Loader : ImageLoader, Image {
    explicit Loader(Size size) : own(size) {}
    void load(const URL&, Completion loaded) override { completion = std::move(loaded); }
    Size size() const override { return own; }
    Size own;
    Completion completion;
  };
  const std::pair<Size, std::string> table[] = {{{100, 50}, "box 0 20 92 46; line 0 66 34 22"},
                                                {{1600, 100}, "box 0 36.75 200 12.5; line 0 66 34 22"},
                                                {{0, 0}, "line 0 66 34 22"}};
  for (const auto& [natural, expected] : table) {
    const auto loader = std::make_shared<Loader>(natural);
    TestScreen screen(verticalStack({.alignment = HorizontalAlignment::leading},
                                    {box(10, 20), asyncImage(*URL::parse("https://a.b"), 46), body("line")}),
                      {200, 140});
    screen.set(&ViewEnvironment::imageLoader, loader);
    loader->completion(std::shared_ptr<const Image>(loader));
    EXPECT_EQ(screen.drawn(), "box 0 0 10 20; " + expected);
  }
}

TEST(LayoutTest, ScalesControlsWithTheTextButAtMostToTwiceTheirSize) {
  const AnyView view = verticalStack(
      {}, {symbol({.size = 10}).padding({.bottom = 50}), toggle(Binding<bool>::constant(true), {})});
  const std::pair<double, std::string> table[] = {
      {0.8, "box 20.5 0 10 10; box 0 60 51 31; switch  0 53.5 51 44"},
      {1.5, "box 30.75 0 15 15; box 0 65 76.5 46.5; switch  0 55.25 76.5 66"},
      {3.1, "box 41 0 20 20; box 0 70 102 62; switch  0 57 102 88"}};
  for (const auto& [scale, expected] : table) {
    TestScreen screen(view, {200, 140}, {}, {}, scale);
    EXPECT_EQ(screen.drawn() + "; " + screen.list(true), expected);
  }
}

TEST(LayoutTest, KeepsToTheSafeAreaAndMirrors) {
  const AnyView view =
      depthStack({HorizontalAlignment::leading, VerticalAlignment::bottom},
                 {shape({}).ignoresSafeArea(), horizontalStack({.spacing = 5}, {box(20, 10), body("ab")})});
  const SafeArea safeArea{.top = 10, .left = 30, .bottom = 20, .right = 5};
  EXPECT_EQ(TestScreen(view, {200, 100}, LayoutDirection::leftToRight, safeArea).drawn(),
            "box 0 0 200 100; box 30 64 20 10; ab 55 58 17 22");
  EXPECT_EQ(TestScreen(view, {200, 100}, LayoutDirection::rightToLeft, safeArea).drawn(),
            "box 0 0 200 100; box 175 64 20 10; ab 153 58 17 22");
}

// The bar is at least 30 points high, the title as high as the table says. The edges of what scrolls are
// listed as boxes, too.
TEST(LayoutTest, PinsTheTitleAndTheFooter) {
  const auto table = tableOf<6>("banner/pinned.txt");
  for (const auto& [title, content, ends, height, scale, expected] : table) {
    const bool hasBar = title.ends_with(" bar");
    const AnyView bar = hasBar ? text("bar", {}).frame({.minHeight = 30}) : AnyView();
    const AnyView name =
        title == "none" ? AnyView() : text("title", {}).frame({.minHeight = std::stod(title)});
    const double links = std::stod(ends);
    const AnyView view =
        pinnedEnds({}, {bar, name, box(100, std::stod(content)), links > 0 ? box(100, links) : AnyView(),
                        box(100, std::stod(ends.substr(ends.find(' '))))});
    TestScreen screen(view.background({.color = Color::black()}), {100, std::stod(height)}, {}, {},
                      std::stod(scale));
    screen.scroll({50, std::stod(height) - 5}, 30);
    EXPECT_EQ(screen.drawn(), expected) << title << "|" << ends << "|" << height << "|" << scale;
  }
}

// Where the footer scrolls, too, it does not seem to end between two buttons, so that nobody takes the first
// of them for the only one.
TEST(LayoutTest, CutsAButtonAtTheLowerEdge) {
  const AnyView label = body("text").padding(Insets::all(12)).background({.color = Color::black()});
  const std::vector<AnyView> buttons(4, button(label, [] {}));
  for (const double scale : {1.0, 3.1}) {
    const AnyView view = pinnedEnds({}, {{}, {}, label, {}, verticalStack({.spacing = 12}, buttons)});
    const double all = 5 * (22 * scale + 24) + 3 * 12;
    for (double height = all - 120; height < all - 5; ++height) {
      TestScreen screen(view, {100 * scale, height}, {}, {}, scale);
      const auto isCut = [](const AccessibleElement& each) {
        const double shown = each.clip ? each.clip->bottom() - each.frame.y : 0;
        return each.role == Role::button && shown > 8 && shown < each.frame.height - 5;
      };
      EXPECT_TRUE(std::ranges::any_of(screen.accessibleElements(), isCut)) << scale << " " << height;
    }
  }
}

// Where the content would seem to end, between two lines, it is cut off within the line before. A line is 22
// points high, times the text scale. So is an opened list, and content that was scrolled and is still again.
// At the end of the content, nothing is cut off.
TEST(LayoutTest, CutsALineAtTheLowerEdge) {
  using Case = std::tuple<bool, double, double, std::string>;
  for (const auto& [opens, scale, least, word] : {Case(false, 1, 250, "text"),
                                                  {false, 3.1, 440, "text"},
                                                  {false, 2, 440, "shrinkingword"},
                                                  {true, 1, 200, "text"},
                                                  {true, 3.1, 440, "text"}}) {
    const std::vector<AnyView> texts(20,
                                     text("text text text text text " + word, {}).padding({.bottom = 24}));
    const auto measurer = std::make_shared<FixedWidthMeasurer>(scale, true);
    const double line = measurer->measure(word, Font(), 100 * scale).height;
    const AnyView list = component("list", [&](RenderContext& context) {
      const State<bool> isOpen = context.state<bool>(!opens);
      const AnyView header = button(box(100, 10), [isOpen] { isOpen.set(true); });
      return verticalStack({}, {header, disclosure(isOpen.get(), verticalStack({}, texts))});
    });
    for (double height = least; height < least + 100; ++height) {
      TestScreen screen(pinnedEnds({.growsUp = true}, {{}, {}, list, {}, box(100, 40)}),
                        {100 * scale, height}, {}, {}, scale);
      screen.set(&ViewEnvironment::textMeasurer, measurer);
      if (opens) tap(screen, "button");
      const auto isCut = [&] {
        return std::ranges::any_of(screen.accessibleElements(), [&](const AccessibleElement& each) {
          const double shown = each.clip->bottom() - each.frame.y;
          const double ofLine = std::fmod(shown, line);
          return shown > 0 && shown < each.frame.height && ofLine > 0.35 * line && ofLine < 0.8 * line;
        });
      };
      EXPECT_TRUE(isCut()) << opens << " " << scale << " " << height;
      for (Clock::time_point now; now.time_since_epoch() < 20s && std::fmod(height, 20) == 0; now += 250ms) {
        screen.scroll({50, 100}, 7 * scale);
        screen.frame(now);
        EXPECT_TRUE(screen.isMoving());
        screen.frame(now + 200ms);
        EXPECT_FALSE(screen.isMoving());
        EXPECT_TRUE(isCut()) << opens << " " << scale << " " << height << " " << now.time_since_epoch() / 1ms;
      }
      screen.press(Key::end);
      EXPECT_EQ(screen.accessibleElements().back().clip->bottom(), height - 40);
    }
  }
}

// So it is when a control was revealed, unless that would hide this control: by the focus or by a tool, while
// the edge moves, before a user leaves the screen and returns, and before the window is resized.
TEST(LayoutTest, CutsALineBelowARevealedControl) {
  enum Way { focus, reveal, interrupt, leave, resize };
  const AnyView row = verticalStack({}, {text("text", {}), toggle(Binding<bool>::constant(true), {})});
  for (double height = 240; height < 660; height == 330 ? height += 150 : ++height) {
    const auto way = static_cast<Way>(static_cast<int>(height) % 5);
    const double scale = height < 330 ? 1 : 2;
    const std::vector<AnyView> rows(9, row.padding({.bottom = scale == 1 ? 24.0 : 64}));
    const AnyView view = pinnedEnds({}, {{}, {}, verticalStack({}, rows), {}, box(100, 40)});
    const State<bool> isAway(false);
    const AnyView screens = component("screens", [&](RenderContext& context) {
      context.observe(isAway);
      return isAway.get() ? body("away") : view;
    });
    TestScreen screen(screens, {100 * scale, height}, {}, {}, scale);
    screen.set(&ViewEnvironment::reducesMotion, way != interrupt);
    const auto isCut = [&] {
      return std::ranges::any_of(screen.accessibleElements(), [&](const AccessibleElement& each) {
        const double shown = each.clip->bottom() - each.frame.y;
        return each.control ? shown > 14 && shown < 33 : shown > 8 && shown < 18;
      });
    };
    for (std::size_t index = 1; index < 14; index += 2) {
      SCOPED_TRACE(std::to_string(height) + " " + std::to_string(index));
      Clock::time_point now(index * 10s);
      const auto draw = [&](std::initializer_list<Clock::duration> pauses) {
        for (const auto pause : pauses) screen.frame(now += pause);
      };
      if (way == interrupt) {
        screen.scroll({50, 100}, 30 + 5 * static_cast<double>(index));
        draw({0ms, 200ms, 40ms});
      }
      const AccessibleElement control = screen.accessibleElements()[index];
      way == reveal ? screen.reveal(control) : screen.focus(control.id);
      isAway.set(way == leave);
      draw({0ms});
      isAway.set(false);
      if (way != leave) draw({200ms, 300ms, 300ms, 300ms});
      if (way == resize) screen.set(&ViewEnvironment::size, Size{100 * scale, height + 9});
      draw({0ms});
      const AccessibleElement& shown = screen.accessibleElements()[index];
      EXPECT_LE(shown.frame.bottom(), shown.clip->bottom() - 20);
      EXPECT_TRUE(scale == 2 || isCut());
      screen.scroll({50, 100}, -30);
      draw({0ms, 200ms, 300ms, 300ms, 300ms});
      EXPECT_TRUE(scale == 2 || isCut()) << "a user scrolls";
    }
  }
}

/// A window of 100 by 200 points with lazy rows. Every third row is 20 points high. Tapping a row switches
/// it.
struct Rows : TestScreen {
  Rows(std::size_t count, double height, double below = 0)
      : TestScreen(scrollView(lazyRows(count, row(height)).padding({.bottom = below})), {100, 200}) {}

  static std::function<AnyView(std::size_t)> row(double height) {
    return [=](std::size_t index) {
      return component("row", [=](RenderContext& context) {
        const State<bool> isOn = context.state<bool>(false);
        const AnyView label =
            text(std::to_string(index) + (isOn.get() ? "on" : ""), {.font = {TextStyle::footnote}});
        const double own = index % 3 == 0 ? 20 : height;
        return button(label.frame({.minHeight = own, .maxHeight = own}), [isOn] { isOn.set(!isOn.get()); });
      });
    };
  }

  /// Presses a key, if there is one, and returns the first and the last visible row.
  std::string seen(std::optional<Key> key = {}) {
    if (key) press(*key);
    Texts lines = split(drawn(), ';');
    while (lines.back().starts_with("box")) lines.pop_back();  // the hairlines
    return words(lines.front()).front() + " " + words(lines.back()).front();
  }
};

TEST(LayoutTest, MakesOnlyNearbyRows) {
  Rows rows(10'000, 20);
  EXPECT_EQ(rows.seen(), "0 9");
  EXPECT_LE(rows.accessibleElements().size(), 22u);
  EXPECT_EQ(rows.seen(Key::end), "9990 9999");
  rows.scroll({50, 100}, -40);
  EXPECT_EQ(rows.seen(), "9988 9997");
  const auto& all = rows.accessibleElements(Layout::Rows::all);
  const auto revision = rows.accessibleRevision();
  ASSERT_EQ(all.size(), 10'000u);
  EXPECT_EQ(rows.seen(), "9988 9997");
  EXPECT_LE(rows.accessibleElements().size(), 34u);
  const auto* first = all.data();
  EXPECT_EQ(rows.accessibleElements(Layout::Rows::all).data(), first) << "nothing has changed";
  performAction(*all[5'000].control);  // its row is gone, but the control still works
  EXPECT_EQ(rows.accessibleElements(Layout::Rows::all).at(5'000).name, "5000on");
  EXPECT_TRUE(rows.activate(rows.accessibleElements(Layout::Rows::all)[5'000].id));
  EXPECT_EQ(rows.accessibleElements(Layout::Rows::all).at(5'000).name, "5000");
  EXPECT_GT(rows.accessibleRevision(), revision);
}

TEST(LayoutTest, KeepsRowsStatesAndLearnsTheirHeights) {
  Rows rows(300, 50);
  EXPECT_TRUE(tap(rows, "button 3"));
  const ElementId last = find(rows, "button 5").id;
  rows.focus(last);
  EXPECT_EQ(rows.seen(Key::end), "295 299");
  EXPECT_ANY_THROW(find(rows, "button 3"));
  EXPECT_EQ(rows.focused(), last) << "the focused row is kept, however far away it is";
  EXPECT_EQ(rows.seen(Key::home), "0 4");
  EXPECT_TRUE(find(rows, "button 3").name == "3on" && find(rows, "button 4").name == "4");
}

TEST(LayoutTest, KeepsVisibleRowsInPlaceWhileRowsAboveAreMeasured) {
  for (const double height : {50.0, 12.0}) {
    Rows rows(300, height, 30);
    rows.seen(Key::backtab);
    EXPECT_LE(find(rows, "button 299").control->frame.bottom(), 180)
        << "entered from below, the last row is scrolled into view";
    for (int i = 0; i < 100; ++i) {
      // The row in the middle moves only by the wheel's 40 points, even if a row is switched and all are
      // measured.
      const auto isBelow = [](const auto& each) { return each.control->frame.bottom() > 80; };
      const auto seen = *std::ranges::find_if(rows.accessibleElements(), isBelow);
      rows.scroll({50, 100}, -40);
      if (i % 10 == 0) tap(rows, "button " + seen.name);
      if (i % 30 == 0) rows.accessibleElements(Layout::Rows::all);
      EXPECT_EQ(find(rows, "button " + seen.name).frame.y, seen.frame.y + 40) << i;
    }
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
