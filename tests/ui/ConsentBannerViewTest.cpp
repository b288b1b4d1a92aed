#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {
namespace {

class ConsentBannerViewTest : public BannerTest {
 protected:
  static std::string screenOf(const ConsentBannerView& view) {
    return words("vendor main preferences").at(view.currentScreen().index());
  }
};

TEST_F(ConsentBannerViewTest, BeginsWithThePreferencesIfAskedTo) {
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
      EXPECT_EQ(std::get<0>(view.currentScreen()).group.vendor, group.vendor) << "opens from any screen";
    }
  }
  EXPECT_THAT(platform.application->opened, IsEmpty());
}

TEST_F(ConsentBannerViewTest, PrintsAnUnknownComponentOnce) {
  site = customization("strange buttons:managePreferences", "tabs:marketing strange links");
  TestScreen screen(banner().view());
  tap(screen, "button Manage");
  tap(screen, "switch M");
  screen.accessibleElements();
  EXPECT_THAT(platform.printer->take(),
              ElementsAre("⚠️ Unknown component type: strange", "⚠️ Unknown component type: links"));
  TestScreen another(banner().view());
  another.accessibleElements();
  EXPECT_THAT(platform.printer->take(), ::testing::SizeIs(1)) << "another banner prints the line again";
}

TEST_F(ConsentBannerViewTest, OpensLinks) {
  site.urls =
      URLs{{"dsrForm", "a.b/dsr"},    {"dsr", "https://x"}, {"big", "HTTP://A/b"},  {"safe", "https://c"},
           {"broken", "%zz"},         {"foo", ""},          {"space", "a/b c?\"é"}, {"letters", "ä.b"},
           {"words", "see our site"}, {"host", "a<b/c"}};
  const auto table = tableOf<3>("banner/links.txt");
  for (const auto& [link, opened, line] : table) {
    banner().handleLinkAction(link);
    EXPECT_THAT(platform.application->opened, IsEmpty()) << "opens in a task of its own: " << link;
    platform.settle();
    EXPECT_EQ(joined(std::exchange(platform.application->opened, {})), opened) << link;
    EXPECT_EQ(joined(platform.printer->take()), line) << link;
  }
  const auto refusing = std::make_shared<FailingExecutor>(platform.mainActor);
  replaceSeam(&Platform::mainActor, refusing);
  refusing->refuses = true;
  EXPECT_NO_THROW(banner().handleLinkAction("dsr"));
  EXPECT_THAT(platform.application->opened, ElementsAre("https://a.b/dsr"));
  site.urls.reset();
  banner().handleLinkAction("dsr");
  EXPECT_THAT(platform.printer->take(), ElementsAre("No URL found for link: dsr (URL key: dsrForm)"));
}

TEST_F(ConsentBannerViewTest, SwitchesAndSaves) {
  const auto table = tableOf<6>("banner/switches.txt");
  const std::string texts =
      R"(,"necessaryTitle":"N","statisticsTitle":"S","preferencesTitle":"P","marketingTitle":"M",
      "doNotSellLabelText":"D","preferences":"why")";
  for (const auto& [categories, flag, stored, taps, expected, marketing] : table) {
    site = customization("", (flag == "second" ? "tabs:necessary tabs:" : "tabs:") + categories, texts);
    auto& shown = site.components->secondaryScreen->back().tabs->front();
    shown.readOnly = flag == "readOnly" || flag == "second";
    shown.services = flag != "bare";
    shown.showCategoryDescription = flag == "describe";
    auto services = flag == "none" ? std::nullopt : std::optional(vendors);
    if (flag == "unnamed") {
      services->libraries->push_back(services->libraries->front());
      services->libraries->back().vendor = "";
    }
    const auto view = banner(parsed<BasicConsent>(stored), services);
    view.handleMainAction("preferences");
    TestScreen screen(view.view());
    for (const std::string& each : split(taps, ';')) EXPECT_TRUE(tap(screen, each)) << each;
    Texts found;
    for (const auto& each : screen.accessibleElements()) {
      if (each.role == Role::dialog || each.name == "Back" || each.name == "Close") continue;
      std::string mark = each.role == Role::expander ? (each.value == "expanded" ? "+" : "-") : "";
      if (const auto count = each.description.find(" / "); count < each.description.npos) {
        mark += each.description[count - 1] + std::string("/") + each.description[count + 3];
      }
      if (each.role == Role::toggle) mark = "=" + each.value + (each.isEnabled ? "" : "!");
      found.push_back(words(each.name).front() + mark);
    }
    EXPECT_EQ(joined(found, " "), expected) << flag << stored << taps;
    view.handlePreferencesAction("savePreferences");
    EXPECT_THAT(trace.back(), HasSubstr("\"marketing\":" + marketing + ",")) << flag << stored << taps;
  }
}

// Tries every sequence of two switches, and compares before the first and after each of them.
TEST_F(ConsentBannerViewTest, DrawsSwitchesAsTheyWouldBeSaved) {
  site = customization("", "tabs:statistics,marketing,doNotSell",
                       R"(,"statisticsTitle":"S","marketingTitle":"M","doNotSellLabelText":"D")");
  const Texts switches = words("M A B S D");
  const auto isSaved = [](const ConsentValue& value, const std::string& vendor) {
    return value.isAll() || (value.isPartial() && std::ranges::count(value.items(), vendor) > 0);
  };
  for (const char* stored :
       {"{}", R"({"marketing":true,"statistics":true,"optedIn":false})", R"({"marketing":["gone"]})",
        R"({"marketing":["A","gone"],"optedIn":false})", R"({"marketing":["A"],"statistics":["gone"]})"}) {
    for (std::size_t sequence = 0; sequence < 25; ++sequence) {
      const auto view = banner(parsed<BasicConsent>(stored));
      view.handleMainAction("preferences");
      TestScreen screen(view.view());
      tap(screen, "expander M");
      for (std::size_t rest = sequence, step = 0; step < 3; rest /= 5, ++step) {
        const auto isOn = [&](const std::string& name) {
          return find(screen, "switch " + name).value == "on";
        };
        const ConsentValue marketing = view.consentValue(ConsentCategory::marketing);
        EXPECT_EQ(isOn("M"), marketing.isEnabled()) << stored << sequence << step;
        EXPECT_EQ(isOn("S"), view.consentValue(ConsentCategory::statistics).isEnabled())
            << stored << sequence;
        for (const char* vendor : {"A", "B"}) {
          EXPECT_EQ(isOn(vendor), isSaved(marketing, vendor)) << stored << sequence << step;
        }
        tap(screen, "switch " + switches[rest % 5]);
      }
    }
  }
}

TEST_F(BannerTest, NamesTheCategoryWithEachVendorUnlessItIsLong) {
  for (const std::size_t length : {1000U, 1001U}) {
    const std::string title(length, 'M');
    site.messages.bannerMessages.marketingTitle = title;
    const ConsentBannerView view = banner();
    view.handleMainAction("preferences");
    TestScreen screen(bannerComposition(view.view(), site));
    tap(screen, "expander M");
    for (const char* each : {"button A", "switch A"})
      EXPECT_EQ(find(screen, each).description, length == 1000 ? title : "");
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
