// Checks exact frames. Every character of body text is 8.5 points wide, and every line of it is 22 points
// high.

#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {

namespace {

const auto body = [](const std::string& content) { return text(content, {}); };

AnyView buttons(const std::string& first, const std::string& second) {
  const auto wide = [](const std::string& title) {
    return button(body(title).frame({.maxWidth = infinity}).padding(Insets::all(12)), [] {});
  };
  return horizontalStack({.spacing = 12, .overflow = Overflow::stackAtBrokenWord},
                         {wide(first), wide(second)});
}

TEST(LayoutTest, PlacesViews) {
  using enum VerticalAlignment;
  const auto trailing = HorizontalAlignment::trailing;
  const HorizontalOptions links{.spacing = 16, .overflow = Overflow::wrap};
  const AnyView none;
  const std::pair<AnyView, std::string> table[] = {
      {buttons("a", "bbbb"), "a 42.75 12 8.5 22; bbbb 136 12 34 22"},
      {buttons("two words", "a"), "two words 25.75 12 42.5 44; a 148.75 23 8.5 22"},
      {buttons("unbreakable", "a"), "unbreakable 53.25 12 93.5 22; a 95.75 70 8.5 22"},
      {horizontalStack(links, {body("ten letter"), none, body("ten letter"), body("ten letter + ten more")}),
       "ten letter 0 0 85 22; ten letter 101 0 85 22; ten letter + ten more 0 38 178.5 22"},
      {horizontalStack(links, {body("more letters than a line can hold")}),
       "more letters than a line can hold 0 0 161.5 44"},
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
  };
  for (const auto& [view, expected] : table) EXPECT_EQ(TestScreen(view, {200, 140}).drawn(), expected);
}

TEST(LayoutTest, KeepsToTheSafeAreaAndMirrors) {
  const AnyView view =
      depthStack({HorizontalAlignment::leading, VerticalAlignment::bottom},
                 {shape({}).ignoresSafeArea(), horizontalStack({.spacing = 5}, {box(20, 10), body("ab")})});
  const Insets safeArea{.top = 10, .leading = 30, .bottom = 20, .trailing = 0};
  EXPECT_EQ(TestScreen(view, {200, 100}, LayoutDirection::leftToRight, safeArea).drawn(),
            "box 0 0 200 100; box 30 64 20 10; ab 55 58 17 22");
  EXPECT_EQ(TestScreen(view, {200, 100}, LayoutDirection::rightToLeft, safeArea).drawn(),
            "box 0 0 200 100; box 150 64 20 10; ab 128 58 17 22");
}

// Scrolled content ends in a hairline, which is listed as a box.
TEST(LayoutTest, PinsTheFooter) {
  const auto table = tableOf<4>("banner/footer.txt");
  for (const auto& [content, height, scale, expected] : table) {
    const AnyView view = pinnedFooter(box(100, std::stod(content)), box(100, 40), 28);
    EXPECT_EQ(TestScreen(view, {100, std::stod(height)}, {}, {}, std::stod(scale)).drawn(), expected);
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
  EXPECT_EQ(rows.seen(Key::up), "9988 9997");
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
    EXPECT_LE(find(rows, "button 299").control->frame.bottom(), 188)
        << "entered from below, the last row is scrolled into view";
    for (int i = 0; i < 100; ++i) {
      // The row in the middle moves only by the key's 40 points, even if a row is switched and all are
      // measured.
      const auto isBelow = [](const auto& each) { return each.control->frame.bottom() > 80; };
      const auto seen = *std::ranges::find_if(rows.accessibleElements(), isBelow);
      rows.press(Key::up);
      if (i % 10 == 0) tap(rows, "button " + seen.name);
      if (i % 30 == 0) rows.accessibleElements(Layout::Rows::all);
      EXPECT_EQ(find(rows, "button " + seen.name).frame.y, seen.frame.y + 40) << i;
    }
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
