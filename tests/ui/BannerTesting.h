#pragma once

// What the banner's tests share: documents and tables in a few words, and a screen to read and to touch.

#include "TalvoConsentSDK/ui/ConsentBannerPresenter.h"
#include "TalvoConsentSDK/view/HostingController.h"
#include "TalvoConsentSDK/view/Views.h"

#include "testing/fakes/FixedWidthMeasurer.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

using namespace std::chrono_literals;
using Customization = BannerCustomization::Customization;
using URLs = decltype(Customization::urls)::value_type;

/// Components as words: an identifier, and after a colon the entries of its list. Those of "tabs" are the
/// categories of one tab with vendors.
inline std::vector<BannerCustomization::ComponentItem> components(const std::string& text) {
  std::vector<BannerCustomization::ComponentItem> items;
  for (const std::string& word : words(text)) {
    auto& item = items.emplace_back();
    item.id = word.substr(0, word.find(':'));
    if (word == *item.id) continue;
    const Texts entries = split(word.substr(item.id->size() + 1), ',');
    if (item.id == "links") item.links = entries;
    if (item.id == "buttons") item.buttons.emplace();
    if (item.id == "tabs") item.tabs.emplace(1).front().categories = entries;
    if (item.tabs) item.tabs->front().services = true;
    for (std::size_t i = 0; item.buttons && i < entries.size(); ++i) {
      item.buttons->emplace_back().id = entries[i];
    }
  }
  return items;
}

/// A customization with two screens, and more members of its messages as JSON.
inline Customization customization(const std::string& mainScreen, const std::string& secondaryScreen = "",
                                   const std::string& texts = "") {
  const std::string document = R"({"bannerType":"","customization":{"components":{},
    "colors":{"background":"#FFF","buttonBackground":"#00F","buttonFontColor":"#FF0","font":"#000"},
    "settings":{"positioning":"bottom","showBlurBackground":false,"showPoweredBy":true},"messages":{
    "bannerMessages":{"acceptButton":"Accept","rejectButton":"Reject","title":"Title","mainMessage":"Message")";
  Customization made = *parsed<BannerCustomization>(document + texts + "}}}}").customization;
  made.components->mainScreen = components(mainScreen);
  made.components->secondaryScreen = components(secondaryScreen);
  return made;
}

/// A catalogue with one service a vendor: "marketing:A,B statistics:A".
inline Services catalogue(const std::string& text) {
  Services made;
  made.libraries.emplace();
  for (const std::string& word : words(text)) {
    for (const std::string& vendor : split(word.substr(word.find(':') + 1), ',')) {
      made.libraries->emplace_back().vendor = vendor;
      made.libraries->back().category = word.substr(0, word.find(':'));
    }
  }
  return made;
}

inline std::string rectText(const Rect& rect) {
  std::ostringstream stream;
  stream << rect.x << " " << rect.y << " " << rect.width << " " << rect.height;
  return stream.str();
}

inline AnyView box(double width, double height) {
  return shape({}).frame({.minWidth = width, .maxWidth = width, .minHeight = height, .maxHeight = height});
}

inline std::string line(const AccessibleElement& element) {
  const Texts roles = words("none text heading image button link switch expander dialog");
  return roles[static_cast<std::size_t>(element.role)] + " " + element.name;
}

/// The first element whose line starts so.
inline const AccessibleElement& find(HostingController& controller, const std::string& start) {
  for (const auto& each : controller.accessibleElements()) {
    if (line(each).starts_with(start)) return each;
  }
  throw std::runtime_error("No such element: " + start);
}

inline bool tap(HostingController& controller, const std::string& start) {
  return controller.activate(find(controller, start).id);
}

inline const node::Frame wholeWindow{
    .maxWidth = infinity, .maxHeight = infinity, .alignment = {{}, VerticalAlignment::top}};

/// A view at the top of a window without a toolkit.
struct TestScreen : HostingController {
  explicit TestScreen(const AnyView& view, Size size = {390, 844}, LayoutDirection direction = {},
                      Insets safeArea = {}, double textScale = 1)
      : HostingController(view.frame(wholeWindow), direction) {
    setEnvironment({std::make_shared<FixedWidthMeasurer>(), nullptr, textScale, size, safeArea, {}, false});
  }

  /// What is drawn, one line each: a text or "box", and its frame.
  std::string drawn() {
    Texts lines;
    for (const Visual& each : frame({})) {
      const auto* shown = std::get_if<visual::Text>(&each.content);
      lines.push_back((shown ? shown->text : "box") + " " + rectText(each.frame));
    }
    return joined(lines);
  }

  /// Everything there is, one line each.
  std::string list(bool withFrames = false) {
    Texts lines;
    for (const auto& each : accessibleElements()) {
      lines.push_back(line(each) + (withFrames ? " " + rectText(each.frame) : ""));
    }
    return joined(lines);
  }

  /// A finger that goes from point to point, one every 10 ms, and stays on the last for a while.
  void touch(const std::vector<Point>& points, std::chrono::milliseconds rest = 10ms) {
    Clock::time_point now;
    touchBegan(points.front(), now);
    for (const Point& point : points) touchMoved(point, now += 10ms);
    touchEnded(points.back(), now + rest);
  }
};

inline const Services vendors = catalogue("marketing:B,A necessary:v statistics:a,b");

/// Makes banners that tell in `trace` what they call.
class BannerTest : public ::testing::Test {
 protected:
  BannerTest() { platform.install(); }

  ConsentBannerView banner(const std::optional<BasicConsent>& stored = {},
                           const std::optional<Services>& services = vendors,
                           const std::optional<SiteConfiguration>& configured = {}) {
    const auto noting = [this](const char* what) { return [this, what] { trace.push_back(what); }; };
    const auto save = [this](const BasicConsent& consent) { trace.push_back(written(consent)); };
    const BannerCallbacks callbacks{noting("accept"), noting("reject"), noting("manage"), save,
                                    noting("close")};
    return {made, services, configured, stored, callbacks};
  }

  MemoryPlatform platform;
  Customization made =
      customization("title buttons:acceptAll,rejectAll,managePreferences links:doNotSellMyData closeButton",
                    "title tabs:necessary,marketing,doNotSell buttons:savePreferences,preferences "
                    "links:doNotSellMyData closeButton");
  Texts trace;
};

}  // namespace TalvoConsentSDK
