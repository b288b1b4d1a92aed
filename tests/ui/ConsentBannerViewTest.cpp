#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {
namespace {

class ConsentBannerViewTest : public BannerTest {
 protected:
  static std::string screenOf(const ConsentBannerView& view) {
    return words("vendor main preferences").at(view.currentScreen().index());
  }
};

TEST_F(ConsentBannerViewTest, BeginsWithTheSecondScreenWhereThatIsAskedFor) {
  SiteConfiguration configuration;
  EXPECT_EQ(screenOf(banner(BasicConsent(), vendors, configuration)), "main");
  EXPECT_EQ(screenOf(banner(BasicConsent())), "main");
  for (const bool isAskedFor : {true, false}) {
    configuration.returnSecondaryView = isAskedFor;
    EXPECT_EQ(screenOf(banner(BasicConsent(), vendors, configuration)), isAskedFor ? "preferences" : "main");
    EXPECT_EQ(screenOf(banner({}, vendors, configuration)), "main");
  }
}

TEST_F(ConsentBannerViewTest, AnswersActions) {
  const auto table = tableOf<3>("banner/actions.txt");
  for (const auto& [events, to, called] : table) {
    trace.clear();
    const ConsentBannerView view = banner();
    TestScreen screen(view.view());
    for (const std::string& event : split(events, ';')) {
      const std::string kind = words(event).front(), what = words(event).back();
      if (kind == "main") view.handleMainAction(what);
      if (kind == "other") view.handlePreferencesAction(what);
      if (kind != "main" && kind != "other") {
        EXPECT_TRUE(tap(screen, event)) << event;
      }
    }
    std::ranges::copy(platform.printer->take(), std::back_inserter(trace));
    for (std::string& each : trace) each = each.starts_with("{") ? "save" : each;
    EXPECT_EQ(screenOf(view), to) << events;
    EXPECT_EQ(joined(trace), called) << events;
    for (const auto& group : vendors.groupedByVendor("marketing")) {
      view.showVendorDetail(group);
      EXPECT_EQ(std::get<0>(view.currentScreen()).group.vendor, group.vendor) << "from any screen";
    }
  }
  EXPECT_THAT(platform.application->opened, IsEmpty());
}

TEST_F(ConsentBannerViewTest, OpensLinks) {
  made.urls = URLs{{"dsrForm", "a.b/dsr"}, {"dsr", "https://x"}, {"big", "HTTP://A/b"},
                   {"safe", "https://c"},  {"broken", "%zz"},    {"foo", ""}};
  const auto table = rows<3>(R"(
    dsr             | https://a.b/dsr |
    dsrForm         | https://a.b/dsr |
    big             | HTTP://A/b      |
    safe            | https://c       |
    doNotSellMyData |                 |
    broken          |                 | ⚠️ Invalid URL for link broken: %zz
    Big             |                 | No URL found for link: Big (URL key: Big))");
  for (const auto& [link, opened, line] : table) {
    banner().handleLinkAction(link);
    EXPECT_THAT(platform.application->opened, IsEmpty()) << "in a task of its own: " << link;
    platform.settle();
    EXPECT_EQ(joined(std::exchange(platform.application->opened, {})), opened) << link;
    EXPECT_EQ(joined(platform.printer->take()), line) << link;
  }
  made.urls.reset();
  banner().handleLinkAction("dsr");
  EXPECT_THAT(platform.printer->take(), ElementsAre("No URL found for link: dsr (URL key: dsrForm)"));
}

TEST_F(ConsentBannerViewTest, SwitchesAndSaves) {
  const auto table = tableOf<6>("banner/switches.txt");
  const std::string texts =
      R"(,"necessaryTitle":"N","statisticsTitle":"S","preferencesTitle":"P","marketingTitle":"M",
      "doNotSellLabelText":"D","preferences":"why")";
  for (const auto& [categories, flag, stored, taps, expected, marketing] : table) {
    made = customization("", (flag == "second" ? "tabs:necessary tabs:" : "tabs:") + categories, texts);
    auto& shown = made.components->secondaryScreen->back().tabs->front();
    shown.readOnly = flag == "readOnly" || flag == "second";
    shown.services = flag != "bare";
    shown.showCategoryDescription = flag == "told";
    const auto services = flag == "none" ? std::nullopt : std::optional(vendors);
    const auto view = banner(parsed<BasicConsent>(stored), services);
    view.handleMainAction("preferences");
    TestScreen screen(view.view());
    for (const std::string& each : split(taps, ';')) EXPECT_TRUE(tap(screen, each)) << each;
    Texts found;
    for (const auto& each : screen.accessibleElements()) {
      if (each.role == Role::dialog || each.name == "Back") continue;
      std::string mark = each.role == Role::expander ? (each.value == "expanded" ? "+" : "-") : "";
      if (each.role == Role::toggle) mark = "=" + each.value + (each.isEnabled ? "" : "!");
      found.push_back(words(each.name).front() + mark);
    }
    EXPECT_EQ(joined(found, " "), expected) << flag << stored << taps;
    view.handlePreferencesAction("savePreferences");
    EXPECT_THAT(trace.back(), HasSubstr("\"marketing\":" + marketing + ",")) << flag << stored << taps;
  }
}

TEST_F(ConsentBannerViewTest, SavesARecordOfWhatTheStatesSay) {
  const auto view = banner(parsed<BasicConsent>(R"({"statistics":true,"marketing":["B"],"id":"c"})"));
  const ConsentBindings bindings = view.bindings();
  const auto saved = [&] {
    view.handlePreferencesAction("savePreferences");
    return trace.back();
  };
  EXPECT_TRUE(bindings.categoryStates->get().size() == 4 && bindings.vendorStates->get().size() == 4);
  EXPECT_TRUE(banner({}, std::nullopt).bindings().vendorStates->get().empty());
  vendorSwitch(bindings, "marketing", "old").set(true);  // only the counts are compared
  EXPECT_EQ(saved(), R"({"preferences":false,"statistics":true,"marketing":true,"id":"c","optedIn":true})");
  vendorSwitch(bindings, "marketing", "A").set(true);
  EXPECT_THAT(saved(), HasSubstr(R"("marketing":["B","A","old"])"));
  doNotSellSwitch(bindings, nullptr).set(true);
  bindings.categoryStates->update([](CategoryStates& states) { states["statistics"] = true; });
  EXPECT_THAT(saved(), EndsWith(R"("statistics":false,"marketing":false,"id":"c","optedIn":false})"));
  EXPECT_TRUE(view.consentValue(ConsentCategory::necessary).isAll());

  ConsentBindings alone;
  alone.vendorStates = bindings.vendorStates;
  vendorSwitch(alone, "new", "A").set(true);
  EXPECT_TRUE(vendorSwitch(alone, "new", "A").get() && !vendorSwitch(alone, "never", "heard of").get());
  EXPECT_FALSE(isOn(bindings.categoryStates->get(), "new"));
  const BasicConsent emptySelection(std::nullopt, ConsentValue::partial({}), std::nullopt);
  EXPECT_FALSE(isOn(banner(emptySelection).bindings().categoryStates->get(), "statistics"));
}

}  // namespace
}  // namespace TalvoConsentSDK
