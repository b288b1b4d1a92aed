#pragma once

// Shows assistive technology all elements of a ViewWindow's controller, and notifies it of their changes.
// AccessibleInterfaces.h has the interfaces that Qt passes to assistive technology.

#include <QAccessible>
#include <optional>
#include <unordered_map>
#include <vector>

#include "TalvoConsentSDK/view/Accessible.h"

namespace TalvoConsentSDK {

class ViewWindow;

/// Use it on the GUI thread. The root is the window. Its children are the elements in reading order,
/// including rows that are far out of sight. If there is a dialog, it is the root's only child and the other
/// elements are its children. Listing the elements takes time in proportion to their number, so they are
/// listed on demand and at most once per change.
class AccessibleTree {
 public:
  explicit AccessibleTree(ViewWindow& window);
  ~AccessibleTree();
  AccessibleTree(const AccessibleTree&) = delete;
  AccessibleTree& operator=(const AccessibleTree&) = delete;

  ViewWindow& window() const { return window_; }
  QAccessibleInterface* root() const { return QAccessible::accessibleInterface(root_); }

  /// The dialog, or the root if there is no dialog.
  QAccessibleInterface* container();

  /// The interface of an element. It stays the same as long as the element exists.
  QAccessibleInterface* item(const view::AccessibleElement& element);

  /// The elements in reading order. Valid until the content changes.
  const std::vector<view::AccessibleElement>& elements();
  const view::AccessibleElement* find(view::ElementId id);
  bool hasDialog();

  /// The control that a touch at a point of the window is meant for; if there is none, the topmost element
  /// there.
  const view::AccessibleElement* at(platform::Point point);

  /// The focused element; nullopt while the window does not receive the keys.
  std::optional<view::ElementId> focused() const;

  /// Scrolls the element into view and activates it.
  void activate(view::ElementId id);

  /// Gives the element the focus, which also scrolls it into view.
  void focus(view::ElementId id);

  /// Must be called when the window gets another controller, because each controller counts its own
  /// revisions.
  void controllerChanged() { revision_.reset(); }

  /// Notifies assistive technology, if it is active, of what changed since the last call.
  void notify();

  /// Notifies assistive technology, if it is active, of the focused element.
  void notifyFocus();

 private:
  struct KnownItem {
    QAccessible::Id item = 0;
    view::AccessibleElement announced;  // its state when assistive technology was last notified
  };

  void notifyNew(const std::vector<view::AccessibleElement>& now);
  void notifyChange(QAccessibleInterface* item, const view::AccessibleElement& before,
                    const view::AccessibleElement& now);

  ViewWindow& window_;
  const QAccessible::Id root_;  // not a pointer: Qt owns the interfaces and deletes them with the application
  std::vector<view::AccessibleElement> elements_;
  std::unordered_map<view::ElementId, std::size_t> indices_;
  std::unordered_map<view::ElementId, KnownItem> known_;  // the elements that have an interface
  std::vector<QAccessible::Id> removed_;                  // deleted later, because callers may still use them
  std::vector<view::ElementId> announcedOrder_;
  std::optional<view::ElementId> announcedFocus_;
  std::optional<std::uint64_t> revision_;  // of elements_
  std::optional<std::uint64_t> announcedRevision_;
};

}  // namespace TalvoConsentSDK
