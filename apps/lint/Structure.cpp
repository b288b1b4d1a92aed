// Finds components, actions and links that the banner would leave out or that lead nowhere.

#include <algorithm>

#include "TalvoConsentSDK/base/ASCII.h"
#include "TalvoConsentSDK/ui/BannerActions.h"
#include "TalvoConsentSDK/ui/ComponentRenderer.h"
#include "TalvoConsentSDK/ui/ExternalLink.h"
#include "TalvoConsentSDK/ui/Labels.h"
#include "TalvoConsentSDK/ui/LinkComponentRenderer.h"

#include "apps/lint/Site.h"
#include "apps/lint/Spelling.h"

namespace TalvoConsentSDK::linting {

namespace {

using Item = BannerCustomization::ComponentItem;
using Customization = BannerCustomization::Customization;

bool holds(const std::vector<Item>& items, std::string_view id) {
  const auto isComplete = [&](const Item& each) {
    return each.id == id && ComponentRendererFactory::isComplete(each);
  };
  return std::ranges::any_of(items, isComplete);
}

bool hasButton(const std::vector<Item>& items, std::string_view action) {
  return std::ranges::any_of(items, [&](const Item& item) {
    return item.id == "buttons" && item.buttons &&
           std::ranges::any_of(*item.buttons, [&](const auto& button) { return button.id == action; });
  });
}

// Checks the components of one customization.
class StructureCheck {
 public:
  StructureCheck(const CustomizationDocument& document, Report& report)
      : document_(document), customization_(*document.record.customization), report_(report) {}

  void run() {
    bool hasMain = false;
    bool hasPreferences = false;
    for (const Screen& screen : screens(document_.record)) {
      (screen.isMain ? hasMain : hasPreferences) |= !screen.items.empty();
      if (!screen.isMain) checkPreferences(screen);
    }
    if (!hasMain)
      error("customization.components.mainScreen",
            "the first screen would be empty: list its components here");
    for (const Screen& screen : screens(document_.record)) {
      for (std::size_t i = 0; i < screen.items.size(); ++i) {
        checkComponent(screen, at(screen.path, i), screen.items[i], hasPreferences);
      }
      const auto decides = [](const CommonAction& action) { return action.id; };
      if (screen.isMain && hasMain &&
          std::ranges::none_of(
              commonActions, [&](std::string_view id) { return hasButton(screen.items, id); }, decides)) {
        error(screen.path, "no button on the first screen lets a person decide: add " +
                               anyOf({std::string(acceptAction), std::string(rejectAction)}));
      }
    }
    checkTexts();
    const std::string& position = customization_.settings.positioning;
    if (lowercased(position) != "top" && lowercased(position) != "bottom") {
      warning("customization.settings.positioning",
              quoted(position) + " means \"bottom\": write \"top\" or \"bottom\"");
    }
  }

 private:
  void error(std::string path, std::string sentence) {
    report_.error(document_.name, std::move(path), std::move(sentence));
  }
  void warning(std::string path, std::string sentence) {
    report_.warning(document_.name, std::move(path), std::move(sentence));
  }

  void checkPreferences(const Screen& screen) {
    if (screen.items.empty()) return;
    if (!holds(screen.items, "tabs")) {
      error(screen.path,
            "the preferences have no tabs, so there is nothing to choose: add the component \"tabs\"");
    } else if (!hasButton(screen.items, saveAction)) {
      error(screen.path, "no button saves what a person has chosen: add the button \"savePreferences\"");
    }
  }

  void checkComponent(const Screen& screen, const std::string& path, const Item& item, bool hasPreferences) {
    if (!item.id)
      return error(path + ".id", "a component without an identifier is not drawn: add its \"id\"");
    if (!ComponentRendererFactory::isKnown(*item.id)) {
      return error(path + ".id",
                   "no component is named " + quoted(*item.id) + ": use " + anyOf(componentIdentifiers()));
    }
    if (!ComponentRendererFactory::isComplete(item)) {
      return error(path + "." + *item.id,
                   "the list is absent or empty, so nothing is drawn: add entries, or remove the component");
    }
    if (item.id == "bannerLogo") checkLogo(path);
    if (item.id == "links") checkLinks(path + ".links", *item.links, hasPreferences);
    if (item.id == "buttons") checkButtons(screen, path + ".buttons", *item.buttons, hasPreferences);
    if (item.id == "tabs") checkTabs(path + ".tabs", *item.tabs);
  }

  void checkLogo(const std::string& path) {
    const auto& resources = customization_.resources;
    if (!resources || !resources->mainLogoUrl) {
      error(path, "there is no customization.resources.mainLogoUrl to draw: add it, or remove the component");
    } else if (!URL::parse(*resources->mainLogoUrl)) {
      error("customization.resources.mainLogoUrl", quoted(*resources->mainLogoUrl) +
                                                       " is not a URL: write one that begins with https://, "
                                                       "or with {{base}}/sites/ for a file of the site");
    }
  }

  void checkLinks(const std::string& path, const std::vector<std::string>& links, bool hasPreferences) {
    for (std::size_t i = 0; i < links.size(); ++i) {
      const std::string& link = links[i];
      const std::string key = linkURLKey(link);
      const auto& urls = customization_.urls;
      const auto url = urls ? urls->find(key) : decltype(urls->end())();
      const bool hasURL = urls && url != urls->end();
      if (!isKnownLink(link)) {
        warning(at(path, i), quoted(link) +
                                 " is not a known link, so its label is made from its identifier: use " +
                                 anyOf(linkIdentifiers()));
      }
      if (!LinksComponentRenderer::isVisible(link, customization_)) {
        error(at(path, i), "the link has no URL in customization.urls." + key +
                               ", so it is not drawn: add the URL, or remove the link");
      } else if (link == "doNotSellMyData") {
        if (!hasPreferences)
          error(at(path, i),
                "the link leads to preferences that have no components: add a secondaryScreen, or remove the "
                "link");
      } else if (hasURL && !externalURL(url->second)) {
        error("customization.urls." + key,
              quoted(url->second) + " is not a URL: write one such as \"https://shop.example/privacy\"");
      }
    }
  }

  void checkButtons(const Screen& screen, const std::string& path,
                    const std::vector<BannerCustomization::ButtonItem>& buttons, bool hasPreferences) {
    for (std::size_t i = 0; i < buttons.size(); ++i) {
      const auto& id = buttons[i].id;
      const std::string idPath = at(path, i) + ".id";
      if (!id) {
        error(idPath, "a button without an identifier is not drawn: add its \"id\"");
      } else if (!isKnownAction(*id, screen.isMain)) {
        error(idPath,
              quoted(*id) + " does nothing on this screen: use " + anyOf(buttonIdentifiers(screen.isMain)));
      } else if (screen.isMain && !hasPreferences && opensPreferences(*id)) {
        error(idPath,
              "the button leads to preferences that have no components: add a secondaryScreen, or remove the "
              "button");
      }
    }
  }

  void checkTabs(const std::string& path, const std::vector<BannerCustomization::TabItem>& tabs) {
    const auto known = tabCategories();
    for (std::size_t i = 0; i < tabs.size(); ++i) {
      const auto categories = tabs[i].categories.value_or(std::vector<std::string>());
      for (std::size_t j = 0; j < categories.size(); ++j) {
        if (std::ranges::find(known, categories[j]) != known.end()) continue;
        error(at(at(path, i) + ".categories", j),
              "no category is named " + quoted(categories[j]) + ": use " + anyOf(known));
      }
    }
  }

  void checkTexts() {
    forEachText(document_.json, "", [&](const std::string& path, const std::string& text) {
      if (!path.starts_with("customization.messages.")) return;
      if (text.find_first_not_of(" \t\r\n") == std::string::npos) error(path, "the text is empty: write one");
    });
  }

  const CustomizationDocument& document_;
  const Customization& customization_;
  Report& report_;
};

}  // namespace

void checkStructure(const Site& site, Report& report) {
  for (const auto& document : site.customizations) {
    if (document.record.customization) {
      StructureCheck(document, report).run();
    } else {
      report.error(document.name, "customization", "without this key no banner can be shown: add it");
    }
    const auto all = screens(document.record);
    const bool hasPreferences =
        std::ranges::any_of(all, [](const Screen& each) { return !each.isMain && !each.items.empty(); });
    for (const auto& configuration : site.configurations) {
      if (hasPreferences || !configuration.record.returnSecondaryView.value_or(false)) continue;
      report.error(configuration.name, "returnSecondaryView",
                   "the banner would open on preferences that " + document.name +
                       " lacks: add a secondaryScreen there, or write false");
    }
  }
}

}  // namespace TalvoConsentSDK::linting
