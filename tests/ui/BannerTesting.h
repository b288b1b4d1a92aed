#pragma once

// What the banner's tests share: documents from short descriptions, and a screen that tests can read and
// touch.

#include "TalvoConsentSDK/ui/ConsentBannerPresenter.h"
#include "TalvoConsentSDK/view/HostingController.h"
#include "TalvoConsentSDK/view/Views.h"

#include "testing/fakes/FixedWidthMeasurer.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

using Customization = BannerCustomization::Customization;
using URLs = decltype(Customization::urls)::value_type;

/// Parses components from words. A word is an identifier, optionally followed by a colon and the entries of
/// its list. The entries of "tabs" are the categories of one tab that shows vendors.
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

/// A customization with two screens. `texts` adds members to its messages, as JSON.
inline Customization customization(const std::string& mainScreen, const std::string& secondaryScreen = "",
                                   const std::string& texts = "") {
  const std::string document = R"({"bannerType":"","customization":{"components":{},
    "colors":{"background":"#FFF","buttonBackground":"#00F","buttonFontColor":"#FF0","font":"#000"},
    "settings":{"positioning":"bottom","showBlurBackground":false,"showPoweredBy":true},"messages":{
    "bannerMessages":{"acceptButton":"Accept","rejectButton":"Reject","title":"Title","mainMessage":"Message")";
  Customization site = *parsed<BannerCustomization>(document + texts + "}}}}").customization;
  site.components->mainScreen = components(mainScreen);
  site.components->secondaryScreen = components(secondaryScreen);
  return site;
}

/// The document from which a site's banner is made, as the service sends it.
inline std::string bannerDocument(const Customization& site) {
  BannerCustomization document;
  document.bannerType = "popup";
  document.customization = site;
  return written(document);
}

/// A catalogue with one service per vendor, from a text such as "marketing:A,B statistics:A".
inline Services catalogue(const std::string& text) {
  Services services;
  services.libraries.emplace();
  for (const std::string& word : words(text)) {
    for (const std::string& vendor : split(word.substr(word.find(':') + 1), ',')) {
      services.libraries->emplace_back().vendor = vendor;
      services.libraries->back().category = word.substr(0, word.find(':'));
    }
  }
  return services;
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
  return std::string(rawValue(element.role)) + " " + element.name;
}

/// Returns the first element whose line starts with `start`.
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

/// A view at the top of a window without a toolkit. Nothing moves unless a test asks for it.
struct TestScreen : HostingController {
  explicit TestScreen(const AnyView& view, Size size = {390, 844}, LayoutDirection direction = {},
                      SafeArea safeArea = {}, double textScale = 1)
      : HostingController(view.frame(wholeWindow), direction) {
    setEnvironment(
        {std::make_shared<FixedWidthMeasurer>(textScale), nullptr, textScale, size, safeArea, {}, true});
  }

  /// Changes one part of the environment.
  template <class Part, class Value>
  void set(Part ViewEnvironment::* part, Value value) {
    ViewEnvironment changed = environment();
    changed.*part = std::move(value);
    setEnvironment(changed);
    frame({});
  }

  /// What is drawn, one entry each: a text or "box", and its frame.
  std::string drawn() {
    Texts lines;
    for (const Visual& each : frame({})) {
      const auto* shown = std::get_if<visual::Text>(&each.content);
      lines.push_back((shown ? shown->text : "box") + " " + rectText(each.frame));
    }
    return joined(lines);
  }

  /// All accessible elements, one entry each.
  std::string list(bool withFrames = false) {
    Texts lines;
    for (const auto& each : accessibleElements()) {
      lines.push_back(line(each) + (withFrames ? " " + rectText(each.frame) : ""));
    }
    return joined(lines);
  }

  /// Moves a finger from point to point, one every 10 ms, and lets it rest on the last point.
  void touch(const std::vector<Point>& points, std::chrono::milliseconds rest = 10ms) {
    Clock::time_point now;
    touchBegan(points.front(), now);
    for (const Point& point : points) touchMoved(point, now += 10ms);
    touchEnded(points.back(), now + rest);
  }
};

inline const Services vendors = catalogue("marketing:B,A necessary:v statistics:a,b");

/// Creates banners that record in `trace` which callbacks they call.
class BannerTest : public ::testing::Test {
 protected:
  BannerTest() { platform.install(); }

  ConsentBannerView banner(const std::optional<BasicConsent>& stored = {},
                           const std::optional<Services>& services = vendors,
                           const std::optional<SiteConfiguration>& configured = {}) {
    const auto recording = [this](const char* what) { return [this, what] { trace.push_back(what); }; };
    const auto save = [this](const BasicConsent& consent) { trace.push_back(written(consent)); };
    const BannerCallbacks callbacks{recording("accept"), recording("reject"), recording("manage"), save,
                                    recording("close")};
    return {site, services, configured, stored, callbacks};
  }

  MemoryPlatform platform;
  Customization site =
      customization("title buttons:acceptAll,rejectAll,managePreferences links:doNotSellMyData closeButton",
                    "title tabs:necessary,marketing,doNotSell buttons:savePreferences,preferences "
                    "links:doNotSellMyData closeButton");
  Texts trace;
};

}  // namespace TalvoConsentSDK
