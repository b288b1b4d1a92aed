#include "adapters/qt/AccessibleInterfaces.h"

#include <QAccessibleObject>
#include <QGuiApplication>
#include <algorithm>

#include "TalvoConsentSDK/platform/Platform.h"

#include "adapters/qt/AccessibleTree.h"
#include "adapters/qt/QtText.h"
#include "adapters/qt/ViewWindow.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

QAccessible::Role toQtRole(Role role) {
  switch (role) {
    case Role::none:
      return QAccessible::Grouping;
    case Role::text:
      return QAccessible::StaticText;
    case Role::heading:
      return QAccessible::Heading;
    case Role::image:
      return QAccessible::Graphic;
    case Role::button:
    case Role::expander:
      return QAccessible::Button;
    case Role::link:
      return QAccessible::Link;
    case Role::toggle:
      return QAccessible::CheckBox;
    case Role::dialog:
      return QAccessible::Dialog;
  }
  return QAccessible::NoRole;
}

// Returns no value for a switch: Qt's bridges announce its state in the user's language themselves. Returns
// the value of an expander, because some bridges, such as the one for Windows, ignore its state.
QString textOf(const AccessibleElement& element, QAccessible::Text kind) {
  switch (kind) {
    case QAccessible::Name:
      return toQString(element.name);
    case QAccessible::Description:
      return toQString(element.description);
    case QAccessible::Value:
      if (element.role != Role::expander) return {};
      return toQString(Platform::current().localization->text(element.value));
    default:
      return {};
  }
}

QAccessible::State toState(const AccessibleElement& element, const AccessibleTree& tree) {
  QAccessible::State state;
  const bool isFocused = tree.focused() == element.id;
  state.focusable = (element.isControl() && element.isEnabled) || isFocused;
  state.focused = isFocused;
  state.disabled = !element.isEnabled;
  state.readOnly = !element.isControl();
  state.modal = element.isModal;
  state.invisible = !tree.window().isVisible();
  state.offscreen = element.clip && !element.clip->intersects(element.frame);
  state.checkable = element.role == Role::toggle;
  state.checked = state.checkable && element.value == "on";
  state.expandable = element.role == Role::expander;
  state.expanded = state.expandable && element.value == "expanded";
  state.collapsed = state.expandable && !state.expanded;
  return state;
}

Point toPoint(const ViewWindow& window, int x, int y) {
  const QPoint point = window.mapFromGlobal(QPoint(x, y));
  return {static_cast<double>(point.x()), static_cast<double>(point.y())};
}

// The index of the container's first child among the elements. The dialog, if there is one, comes first.
int firstChild(AccessibleTree& tree) {
  return tree.hasDialog() ? 1 : 0;
}

int elementCount(AccessibleTree& tree) {
  return static_cast<int>(tree.elements().size()) - firstChild(tree);
}

QAccessibleInterface* elementAt(AccessibleTree& tree, int index) {
  if (index < 0 || index >= elementCount(tree)) return nullptr;
  return tree.item(tree.elements()[static_cast<std::size_t>(index + firstChild(tree))]);
}

// Whether Qt's bridge on this system passes on the language of a text.
#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN) && !defined(Q_OS_ANDROID)
constexpr bool passesOnLanguages = true;
#else
constexpr bool passesOnLanguages = false;
#endif

// Returns a language code such as "de-AT", or an empty text if it has characters that no code has.
QString languageOf(const AccessibleElement& element) {
  const QString language = toQString(element.language).replace(u'_', u'-');
  const bool isCode = std::ranges::all_of(
      language, [](QChar c) { return (c.isLetterOrNumber() && c.unicode() < 128) || c == u'-'; });
  return isCode ? language : QString();
}

class Item : public QAccessibleInterface, public QAccessibleActionInterface, public QAccessibleTextInterface {
 public:
  Item(AccessibleTree& tree, ElementId id) : tree_(tree), id_(id) {}

  ElementId id() const { return id_; }

  bool isValid() const override { return element() != nullptr; }
  QObject* object() const override { return nullptr; }
  QWindow* window() const override { return &tree_.window(); }

  QAccessible::Role role() const override {
    return element() ? toQtRole(element()->role) : QAccessible::NoRole;
  }

  QAccessible::State state() const override {
    if (element()) return toState(*element(), tree_);
    QAccessible::State gone;
    gone.invalid = true;
    return gone;
  }

  QString text(QAccessible::Text kind) const override {
    return element() ? textOf(*element(), kind) : QString();
  }
  void setText(QAccessible::Text, const QString&) override {}

  QRect rect() const override {
    if (!element()) return {};
    Rect f = element()->frame;
    if (element()->clip && element()->clip->intersects(f)) f = f.intersection(*element()->clip);
    return QRectF(tree_.window().mapToGlobal(QPointF(f.x, f.y)), QSizeF(f.width, f.height)).toAlignedRect();
  }

  QAccessibleInterface* parent() const override { return isContainer() ? tree_.root() : tree_.container(); }
  int childCount() const override { return isContainer() ? elementCount(tree_) : 0; }
  QAccessibleInterface* child(int index) const override {
    return isContainer() ? elementAt(tree_, index) : nullptr;
  }
  int indexOfChild(const QAccessibleInterface* child) const override;

  QAccessibleInterface* childAt(int x, int y) const override {
    const AccessibleElement* found = isContainer() ? tree_.at(toPoint(tree_.window(), x, y)) : nullptr;
    return found && found->id != id_ ? tree_.item(*found) : nullptr;
  }

  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::ActionInterface) return static_cast<QAccessibleActionInterface*>(this);
    const bool tellsLanguage = type == QAccessible::TextInterface && passesOnLanguages && element() &&
                               element()->role != Role::dialog && !languageOf(*element()).isEmpty();
    return tellsLanguage ? static_cast<QAccessibleTextInterface*>(this) : nullptr;
  }

  // Everything readable accepts the focus, so that the view scrolls along with the assistive cursor.
  QStringList actionNames() const override {
    QStringList names;
    if (!element() || element()->role == Role::dialog) return names;
    if (element()->isControl() && element()->isEnabled) names << controlAction();
    return names << setFocusAction();
  }

  void doAction(const QString& name) override {
    if (!actionNames().contains(name)) return;
    if (name == setFocusAction()) return tree_.focus(id_);
    tree_.activate(id_);
  }

  QStringList keyBindingsForAction(const QString&) const override { return {}; }

  // The name as a text that cannot be edited. Its only attribute is its language, in the form of
  // IAccessible2.
  QString attributes(int, int* start, int* end) const override {
    *start = 0;
    *end = characterCount();
    return element() ? QStringLiteral("language:") + languageOf(*element()) : QString();
  }
  int characterCount() const override { return static_cast<int>(text(QAccessible::Name).size()); }
  QString text(int start, int end) const override { return text(QAccessible::Name).mid(start, end - start); }
  QRect characterRect(int) const override { return rect(); }
  int offsetAtPoint(const QPoint& point) const override { return rect().contains(point) ? 0 : -1; }
  void scrollToSubstring(int, int) override { tree_.focus(id_); }
  int cursorPosition() const override { return 0; }
  void setCursorPosition(int) override {}
  int selectionCount() const override { return 0; }
  void selection(int, int* start, int* end) const override { *start = *end = 0; }
  void addSelection(int, int) override {}
  void removeSelection(int) override {}
  void setSelection(int, int, int) override {}

 private:
  const AccessibleElement* element() const { return tree_.find(id_); }
  bool isContainer() const { return tree_.hasDialog() && tree_.elements().front().id == id_; }
  const QString& controlAction() const {
    return element()->role == Role::toggle ? toggleAction() : pressAction();
  }

  AccessibleTree& tree_;
  const ElementId id_;
};

int indexOf(AccessibleTree& tree, const QAccessibleInterface* child) {
  const auto* item = dynamic_cast<const Item*>(child);
  const AccessibleElement* element = item ? tree.find(item->id()) : nullptr;
  return element ? static_cast<int>(element - tree.elements().data()) - firstChild(tree) : -1;
}

int Item::indexOfChild(const QAccessibleInterface* child) const {
  return isContainer() ? indexOf(tree_, child) : -1;
}

class Root : public QAccessibleObject {
 public:
  Root(AccessibleTree& tree, QObject& window) : QAccessibleObject(&window), tree_(tree) {}

  QWindow* window() const override { return &tree_.window(); }
  QAccessible::Role role() const override { return QAccessible::Window; }

  QAccessible::State state() const override {
    QAccessible::State state;
    state.active = QGuiApplication::focusWindow() == &tree_.window();
    state.modal = tree_.window().modality() != Qt::NonModal;
    state.invisible = !tree_.window().isVisible();
    return state;
  }

  QString text(QAccessible::Text kind) const override {
    if (kind != QAccessible::Name) return {};
    const QString title = tree_.window().title();
    return title.isEmpty() && tree_.hasDialog() ? toQString(tree_.elements().front().name) : title;
  }

  QRect rect() const override { return {tree_.window().mapToGlobal(QPoint(0, 0)), tree_.window().size()}; }

  QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(qApp); }
  int childCount() const override { return tree_.hasDialog() ? 1 : elementCount(tree_); }
  QAccessibleInterface* child(int index) const override {
    if (!tree_.hasDialog()) return elementAt(tree_, index);
    return index == 0 ? tree_.container() : nullptr;
  }
  int indexOfChild(const QAccessibleInterface* child) const override {
    if (!tree_.hasDialog()) return indexOf(tree_, child);
    return child == tree_.container() ? 0 : -1;
  }

  QAccessibleInterface* childAt(int x, int y) const override {
    const AccessibleElement* found = tree_.at(toPoint(tree_.window(), x, y));
    if (!found) return nullptr;
    return tree_.hasDialog() ? tree_.container() : tree_.item(*found);
  }

  QAccessibleInterface* focusChild() const override {
    const auto focused = tree_.focused();
    const AccessibleElement* element = focused ? tree_.find(*focused) : nullptr;
    return element ? tree_.item(*element) : nullptr;
  }

 private:
  AccessibleTree& tree_;
};

}  // namespace

QAccessibleInterface* makeAccessibleWindow(AccessibleTree& tree, QObject& window) {
  return new Root(tree, window);
}

QAccessibleInterface* makeAccessibleItem(AccessibleTree& tree, ElementId id) {
  return new Item(tree, id);
}

}  // namespace TalvoConsentSDK
