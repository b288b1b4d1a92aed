// Finds words that would be split on the narrowest phone at double text size.

#include <algorithm>
#include <cmath>
#include <set>
#include <unordered_map>

#include "TalvoConsentSDK/ui/BannerActions.h"
#include "TalvoConsentSDK/ui/ComponentRenderer.h"
#include "TalvoConsentSDK/ui/ConsentBannerView.h"
#include "TalvoConsentSDK/view/Layout.h"

#include "apps/lint/Site.h"

namespace TalvoConsentSDK::linting {

using namespace platform;
using namespace view;

namespace {

constexpr Size screenSize{320, 568};
constexpr double textScale = 2;
// Tolerance in points: because of rounding, a frame made for a word may be this much narrower than the word.
constexpr double rounding = 1;

// Returns the customization without the components that are not drawn, so that drawing prints no line about
// them.
BannerCustomization::Customization drawable(BannerCustomization::Customization customization) {
  const auto isNotDrawn = [](const auto& item) { return !ComponentRendererFactory::isComplete(item); };
  if (auto& components = customization.components) {
    for (auto* screen : {&components->mainScreen, &components->secondaryScreen}) {
      if (*screen) std::erase_if(**screen, isNotDrawn);
    }
  }
  return customization;
}

const ServicesDocument* servicesFor(const Site& site, const std::string& language) {
  for (const std::string& wanted : {language, std::string()}) {
    const auto found = std::ranges::find(site.services, wanted, &ServicesDocument::language);
    if (found != site.services.end()) return &*found;
  }
  return site.services.empty() ? nullptr : &site.services.front();
}

// Checks one banner in one language. Opens no category, so names and addresses from the catalogue are not
// checked: the site does not choose them.
class FitCheck {
 public:
  FitCheck(const CustomizationDocument& document, const ServicesDocument* services,
           std::shared_ptr<TextMeasurer> measurer, Report& report)
      : document_(document),
        banner_(drawable(*document.record.customization),
                services ? std::optional(services->record) : std::nullopt, {}, {}, {}),
        report_(report) {
    environment_.textMeasurer = std::move(measurer);
    environment_.textScale = textScale;
    environment_.size = screenSize;
    forEachText(document.json, "", [&](const std::string& path, const std::string& text) {
      if (path.starts_with(messages)) paths_.emplace(text, path);
    });
  }

  void run() {
    for (const Screen& screen : screens(document_.record)) {
      if (!screen.isMain) banner_.handleMainAction(std::string(manageAction));
      ElementTree tree([] {});
      tree.render(banner_.view());
      Animations animations(tree.memory());
      Layout(tree, environment_, animations).run({});
      checkTexts(tree.root());
    }
  }

 private:
  static constexpr const char* messages = "customization.messages.bannerMessages";

  void checkTexts(const Element& element) {
    if (const auto* text = std::get_if<node::Text>(&element.view.node().content)) {
      const double widest = environment_.textMeasurer->widestWord(text->text, text->font);
      if (widest > element.frame.width + rounding) reportBrokenWord(*text, widest, element.frame.width);
    }
    forEachChild(element, [this](const Element& child) { checkTexts(child); });
  }

  void reportBrokenWord(const node::Text& text, double widest, double room) {
    const auto whole = [](double points) { return std::to_string(std::lround(points)); };
    const std::string sentence = "contains a word that is " + whole(widest) +
                                 " points wide at text scale 2, but a screen of 320 points has room for " +
                                 whole(room) + ": shorten it, or add a soft hyphen (\\u00AD)";
    const auto path = paths_.find(text.text);
    if (!reported_.insert(text.text).second) return;  // both screens may draw it
    if (path != paths_.end()) return report_.error(document_.name, path->second, sentence);
    report_.error(document_.name, messages, "the standard text " + quoted(text.text) + " " + sentence);
  }

  const CustomizationDocument& document_;
  std::unordered_map<std::string, std::string> paths_;  // the path of the key that holds a text, by text
  std::set<std::string> reported_;
  const ConsentBannerView banner_;
  ViewEnvironment environment_;
  Report& report_;
};

}  // namespace

void checkFit(const Site& site, const std::shared_ptr<TextMeasurer>& doubleScale, Report& report) {
  for (const auto& document : site.customizations) {
    if (!document.record.customization) continue;
    FitCheck(document, servicesFor(site, document.language), doubleScale, report).run();
  }
}

}  // namespace TalvoConsentSDK::linting
