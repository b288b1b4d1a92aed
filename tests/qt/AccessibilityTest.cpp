// The banner as the platform's assistive technology reads and uses it: through Qt's interfaces alone.

#include <QAccessible>
#include <QMetaEnum>
#include <regex>

#include <private/qguiapplication_p.h>
#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>

#include "tests/qt/ShownBanner.h"

namespace TalvoConsentSDK {
namespace {

using ::testing::IsSupersetOf;

Texts events;  // as words

// "Link 'Privacy policy' (description's first sentence) focusable".
std::string describe(QAccessibleInterface& item) {
  std::string all = qAccessibleRoleString(item.role());
  all += " '" + item.text(QAccessible::Name).toStdString() + "'";
  const QString description = item.text(QAccessible::Description).section('.', 0, 0);
  if (!description.isEmpty()) all += " (" + description.toStdString() + ")";
  const QAccessible::State state = item.state();
  const auto add = [&](bool is, const char* name) { all += is ? std::string(" ") + name : ""; };
  const std::string value = item.text(QAccessible::Value).toStdString();
  add(!value.empty(), ("= " + value).c_str());
  add(state.modal, "modal");
  add(state.focusable, "focusable");
  add(state.focused, "focused");
  add(state.disabled, "disabled");
  add(state.checkable, state.checked ? "on" : "off");
  add(state.expandable, state.expanded ? "expanded" : "?");
  add(state.expandable, state.collapsed ? "collapsed" : "?");
  add(state.offscreen, "offscreen");
  return std::regex_replace(all, std::regex(" \\?"), "");
}

void record(QAccessibleEvent* event) {
  QAccessibleInterface* const item = event->accessibleInterface();
  if (!item || item->object()) return;  // a window's own events are Qt's
  std::string what = QMetaEnum::fromType<QAccessible::Event>().valueToKey(event->type());
  if (event->type() == QAccessible::StateChanged) {
    const auto changed = static_cast<QAccessibleStateChangeEvent*>(event)->changedStates();
    what = changed.checked ? "checked" : changed.expanded ? "expanded" : changed.disabled ? "disabled" : "?";
  }
  events.push_back(what + ": " + item->text(QAccessible::Name).toStdString());
}

class AccessibilityTest : public ::testing::Test {
 protected:
  AccessibilityTest() {
    QGuiApplicationPrivate::platformIntegration()->accessibility()->setActive(true);
    QAccessible::installUpdateHandler(&record);
  }
  ~AccessibilityTest() override { QAccessible::installUpdateHandler(nullptr); }

  void show(const std::string& site, const std::string& language = "en", const std::string& blur = "true") {
    const std::string customization = siteFile(site + "/customization." + language + ".json");
    const std::regex shown(R"("showBlurBackground": true)");
    const std::string services = site == "demo" ? "services." + language + ".json" : "services.json";
    banner = std::make_unique<ShownBanner>(
        std::regex_replace(customization, shown, R"("showBlurBackground": )" + blur),
        siteFile(site + "/" + services));
  }

  QAccessibleInterface& root() { return *banner->surface().accessibleRoot(); }
  QAccessibleInterface& dialog() { return *root().child(0); }

  QAccessibleInterface* find(const std::string& beginning) {
    for (int i = 0; i < dialog().childCount(); ++i) {
      if (describe(*dialog().child(i)).starts_with(beginning)) return dialog().child(i);
    }
    return nullptr;
  }

  // Does what the element whose description begins so is for, or what is named.
  void use(const std::string& beginning, QString action = {}) {
    QAccessibleInterface* const item = find(beginning);
    ASSERT_TRUE(item) << beginning;
    QAccessibleActionInterface* const actions = item->actionInterface();
    if (action.isEmpty()) action = actions->actionNames().front();
    actions->doAction(action);
    EXPECT_TRUE(banner->isStill());
  }

  Texts elements() {
    Texts all{describe(dialog())};
    for (int i = 0; i < dialog().childCount(); ++i) {
      QAccessibleInterface* const item = dialog().child(i);
      all.push_back(describe(*item));
      EXPECT_EQ(item, QAccessible::accessibleInterface(QAccessible::uniqueId(item)));
      EXPECT_EQ(item->parent(), &dialog());
      EXPECT_EQ(dialog().indexOfChild(item), i);
      const QPoint middle = item->rect().center();
      if (item->role() == QAccessible::Button && !item->state().offscreen) {
        EXPECT_EQ(root().childAt(middle.x(), middle.y()), &dialog());
        EXPECT_EQ(dialog().childAt(middle.x(), middle.y()), item) << all.back();
      }
    }
    return all;
  }

  std::unique_ptr<ShownBanner> banner;
};

TEST_F(AccessibilityTest, ReadsEveryScreen) {
  show("demo");
  EXPECT_EQ(root().indexOfChild(&dialog()), 0);
  EXPECT_EQ(dialog().parent(), &root());
  EXPECT_THAT(elements(),
              ElementsAre("Dialog 'Your privacy, your choice' modal",
                          "Heading 'Your privacy, your choice' focusable focused",
                          StartsWith("StaticText 'We and our partners"), "Link 'Privacy policy' focusable",
                          "Link 'Cookie policy' focusable", "Link 'Your rights' focusable",
                          "Button 'Accept all' focusable", "Button 'Reject all' focusable",
                          "Button 'Manage preferences' focusable", "Button 'Close' focusable"));
  use("Button 'Manage");
  use("Button 'Marketing'");
  EXPECT_THAT(elements(),
              IsSupersetOf({"Button 'Statistics' (4 vendors) = collapsed focusable collapsed"s,
                            "CheckBox 'Necessary' disabled on"s, "CheckBox 'Statistics' focusable off"s,
                            "Button 'Marketing' (4 vendors) = expanded focusable expanded"s,
                            "Button 'Echotrail' (Marketing) focusable"s,
                            "CheckBox 'Echotrail' (Marketing) focusable off"s,
                            "CheckBox 'Do not sell my data' focusable off offscreen"s}));
  use("Button 'Echotrail'");
  EXPECT_THAT(elements(), IsSupersetOf({"Button 'Back' focusable"s, "Heading 'Echotrail'"s,
                                        "CheckBox 'Echotrail' focusable off"s}));
  show("demo", "ar", "false");
  EXPECT_EQ(elements().front(), "Dialog 'خصوصيتك، خيارك'") << "not modal without a backdrop";
}

TEST_F(AccessibilityTest, TellsWhatChanges) {
  show("demo");
  EXPECT_EQ(events.back(), "Focus: Your privacy, your choice");
  QAccessibleInterface* const button = find("Button 'Manage");
  const QAccessible::Id id = QAccessible::uniqueId(button);
  events.clear();
  use("Button 'Manage");
  EXPECT_EQ(QAccessible::accessibleInterface(id), nullptr);
  EXPECT_THAT(events, IsSupersetOf({"ObjectHide: Manage preferences"s, "ObjectDestroyed: Manage preferences"s,
                                    "ObjectCreated: Save choices"s, "ObjectShow: Save choices"s}));
  EXPECT_EQ(events.back(), "Focus: Your privacy, your choice");
  elements();
  events.clear();
  QAccessibleInterface* const expander = find("Button 'Preferences'");
  use("Button 'Preferences'");
  EXPECT_EQ(find("Button 'Preferences'"), expander);
  EXPECT_THAT(events, IsSupersetOf({"ObjectReorder: Your privacy, your choice"s, "expanded: Preferences"s,
                                    "ObjectCreated: Voxlet"s}));
  elements();
  const struct {
    std::string used;
    QString action;
    std::vector<std::string> told;
  } cases[] = {
      {"CheckBox 'Voxlet'",
       "",
       {"checked: Preferences", "DescriptionChanged: Preferences", "checked: Voxlet"}},
      {"CheckBox 'Statistics'", "SetFocus", {"Focus: Statistics"}},
      {"CheckBox 'Necessary'", "Toggle", {}},
      {"StaticText 'Do not", "SetFocus", {"Focus: Do not sell my data"}},
  };
  for (const auto& [used, action, told] : cases) {
    events.clear();
    use(used, action);
    EXPECT_THAT(events, ::testing::UnorderedElementsAreArray(told)) << used;
  }
  use("CheckBox 'Do not sell");
  EXPECT_THAT(events, IsSupersetOf({"checked: Voxlet"s, "disabled: Voxlet"s, "disabled: Statistics"s}));
  EXPECT_THAT(elements(), ::testing::Contains("CheckBox 'Voxlet' (Preferences) disabled off"));
}

TEST_F(AccessibilityTest, UsesRowsFarOutOfSight) {
  show("large");
  use("Button 'Manage");
  use("Button 'Marketing'");
  ASSERT_GT(dialog().childCount(), 1200);
  QAccessibleInterface* const far = dialog().child(1200);
  const std::string name = describe(*far).substr(0, describe(*far).find('('));
  EXPECT_TRUE(far->state().offscreen);
  use(name);
  EXPECT_FALSE(far->state().offscreen) << "what is used is scrolled to";
  QAccessibleInterface* const first = find("Button 'Necessary'");
  EXPECT_TRUE(first->state().offscreen);
  use("Button 'Necessary'", "SetFocus");
  EXPECT_FALSE(first->state().offscreen);
  EXPECT_TRUE(first->state().focused);
}

}  // namespace
}  // namespace TalvoConsentSDK
