// Reads and operates the banner as the platform's assistive technology does: through Qt's interfaces only.

#include <QAccessible>
#include <QMetaEnum>
#include <regex>

#include <private/qguiapplication_p.h>
#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>

#include "tests/qt/ShownBanner.h"
#include "tests/support/Golden.h"

namespace TalvoConsentSDK {
namespace {

Texts events;  // such as "Focus: Title"

// Returns a text such as "Link 'Privacy policy' (first sentence of the description) focusable".
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
  if (!item || item->object()) return;  // Qt sends the events of the window itself
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

  void show(const std::string& site, const std::string& language = "en", const std::string& blur = "true",
            const std::string& code = "en") {
    const std::string customization = siteFile(site + "/customization." + language + ".json");
    const std::regex shown(R"("showBlurBackground": true)");
    const std::string services = site == "demo" ? "services." + language + ".json" : "services.json";
    banner.reset();  // otherwise the next banner may be shown on its host
    banner = std::make_unique<ShownBanner>(
        std::regex_replace(customization, shown, R"("showBlurBackground": )" + blur),
        siteFile(site + "/" + services), QtOptions(), code);
  }

  QAccessibleInterface& root() { return *banner->surface().accessibleRoot(); }
  QAccessibleInterface& dialog() { return *root().child(0); }

  QAccessibleInterface* find(const std::string& beginning) {
    for (int i = 0; i < dialog().childCount(); ++i) {
      if (describe(*dialog().child(i)).starts_with(beginning)) return dialog().child(i);
    }
    return nullptr;
  }

  // Runs an action of the element whose description starts with `beginning`; the first action if none is
  // named.
  void use(const std::string& beginning, QString action = {}) {
    QAccessibleInterface* const item = find(beginning);
    ASSERT_TRUE(item) << beginning;
    std::vector<QAccessible::Id> ids;
    for (int i = 0; i < dialog().childCount(); ++i) ids.push_back(QAccessible::uniqueId(dialog().child(i)));
    QAccessibleActionInterface* const actions = item->actionInterface();
    if (action.isEmpty()) action = actions->actionNames().front();
    actions->doAction(action);
    EXPECT_TRUE(banner->isStill());
    for (const auto id : ids) {
      QAccessibleInterface* const left = QAccessible::accessibleInterface(id);
      EXPECT_TRUE(!left || dialog().indexOfChild(left) >= 0)
          << "the interface of a removed element must be deleted";
    }
  }

  Texts elements() {
    Texts all{describe(dialog())};
    EXPECT_EQ(root().indexOfChild(&dialog()), 0);
    EXPECT_EQ(dialog().parent(), &root());
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

  // Runs the commands, which start with ">", in a file in tests/golden/accessibility, and compares the lines
  // below each one: below "elements" all elements, below "ACTION ELEMENT" the events.
  void expectMatchesFile(const std::string& name) {
    const std::string file = TALVO_TEST_DATA "/golden/accessibility/" + name + ".txt";
    std::string actual;
    for (const std::string& line : split(contentOf(file), '\n')) {
      if (!line.starts_with('#') && !line.starts_with('>')) continue;
      actual += line + '\n';
      if (line.starts_with('#')) continue;
      const Texts parts = words(line);
      events.clear();
      if (parts[1] == "show") {
        show(parts[2], parts[3], parts[4]);
        events.erase(events.begin(), events.end() - 1);
      } else if (parts[1] != "elements") {
        use(line.substr(line.find(parts[2])), parts[1] == "use" ? "" : QString::fromStdString(parts[1]));
      }
      actual += joined(parts[1] == "elements" ? elements() : events, "\n") + '\n';
    }
    expectGolden(file, actual);
  }

  std::unique_ptr<ShownBanner> banner;
};

TEST_F(AccessibilityTest, ReadsEveryScreen) {
  expectMatchesFile("screens");
}

TEST_F(AccessibilityTest, ReportsChanges) {
  expectMatchesFile("changes");
}

// The platform knows no texts in other languages than English.
TEST_F(AccessibilityTest, TellsTheLanguageOfEachName) {
  const std::pair<std::string, QString> codes[] = {
      {"ar", "language:ar"}, {"ar_EG", "language:ar-EG"}, {"not;a:code", {}}, {"", {}}};
  for (const auto& [code, attributes] : codes) {
    show("demo", "ar", "true", code);
    for (const char* tapped : {"Button 'إدارة", "Button 'التسويق'", "Button 'Adlantern'"}) use(tapped);
    const std::pair<const char*, QString> names[] = {{"Button 'Back'", "language:en"},
                                                     {"Button 'Close'", "language:en"},
                                                     {"StaticText 'Company Name'", "language:en"},
                                                     {"Heading 'Stored Information'", "language:en"},
                                                     {"StaticText 'Adlantern Inc.'", attributes},
                                                     {"CheckBox 'Adlantern'", attributes}};
    for (const auto& [name, expected] : names) {
      QAccessibleInterface* const item = find(name);
      ASSERT_TRUE(item) << name;
      QAccessibleTextInterface* const text = item->textInterface();
      ASSERT_EQ(text == nullptr, expected.isEmpty()) << name << " with the code " << code;
      int start = 1;
      int end = 0;
      if (!text) continue;
      EXPECT_EQ(text->attributes(0, &start, &end), expected) << name;
      EXPECT_EQ(text->text(start, end), item->text(QAccessible::Name));
    }
    EXPECT_FALSE(dialog().textInterface()) << "its name is that of the heading";
  }
}

TEST_F(AccessibilityTest, ActsOnRowsThatAreScrolledOut) {
  show("large");
  use("Button 'Manage");
  use("Button 'Marketing'");
  ASSERT_GT(dialog().childCount(), 1200);
  QAccessibleInterface* const far = dialog().child(1200);
  const std::string name = describe(*far).substr(0, describe(*far).find('('));
  EXPECT_TRUE(far->state().offscreen);
  use(name);
  EXPECT_FALSE(far->state().offscreen) << "using a row scrolls it into view";
  QAccessibleInterface* const first = find("Button 'Necessary'");
  EXPECT_TRUE(first->state().offscreen);
  use("Button 'Necessary'", "SetFocus");
  EXPECT_FALSE(first->state().offscreen);
  EXPECT_TRUE(first->state().focused);
  events.clear();
  far->actionInterface()->doAction("SetFocus");
  while (events.empty()) QCoreApplication::processEvents();
  EXPECT_EQ(events.front(), "Focus: " + far->text(QAccessible::Name).toStdString());
  EXPECT_TRUE(banner->surface().controller()->isMoving()) << "told before the lower edge settles";
}

}  // namespace
}  // namespace TalvoConsentSDK
