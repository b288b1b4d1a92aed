#pragma once

// What assistive technology knows of a ViewWindow: everything its controller has to read and use, and what
// has changed of it. The interfaces that Qt hands out are in AccessibleInterfaces.h.

#include <QAccessible>
#include <optional>
#include <unordered_map>
#include <vector>

#include "TalvoConsentSDK/view/Accessible.h"

namespace TalvoConsentSDK {

class ViewWindow;

/// Runs on the GUI thread. The window is the root; below it stands the dialog, where there is one, and below
/// that the elements in reading order, rows that are far out of sight included. To list those takes time in
/// proportion to their number, so they are listed when asked for, and at most once a change.
class AccessibleTree {
 public:
  explicit AccessibleTree(ViewWindow& window);
  ~AccessibleTree();
  AccessibleTree(const AccessibleTree&) = delete;
  AccessibleTree& operator=(const AccessibleTree&) = delete;

  ViewWindow& window() const { return window_; }
  QAccessibleInterface* root() const { return QAccessible::accessibleInterface(root_); }

  /// The dialog, or without one the root.
  QAccessibleInterface* container();

  /// The interface of an element, the same one for as long as the element is there.
  QAccessibleInterface* item(const view::AccessibleElement& element);

  /// In reading order; valid until the content changes.
  const std::vector<view::AccessibleElement>& elements();
  const view::AccessibleElement* find(view::ElementId id);
  bool hasDialog();

  /// The topmost element at a point of the window.
  const view::AccessibleElement* at(platform::Point point);

  /// What the keys act on, while the window has them.
  std::optional<view::ElementId> focused() const;

  /// Scrolls the element into view and does what it is for, or gives it the focus.
  void activate(view::ElementId id);
  void focus(view::ElementId id);

  /// A controller of its own has revisions of its own.
  void controllerChanged() { revision_.reset(); }

  /// Tells assistive technology, where there is any, what has changed since the last time.
  void notify();

  /// Tells it what the keys act on.
  void notifyFocus();

 private:
  struct Known {
    QAccessible::Id item = 0;
    view::AccessibleElement told;
  };

  void notifyNew(const std::vector<view::AccessibleElement>& now);
  void notifyChange(QAccessibleInterface* item, const view::AccessibleElement& before,
                    const view::AccessibleElement& now);

  ViewWindow& window_;
  const QAccessible::Id root_;  // ids, since Qt owns the interfaces and deletes them with the application
  std::vector<view::AccessibleElement> elements_;
  std::unordered_map<view::ElementId, std::size_t> indices_;
  std::unordered_map<view::ElementId, Known> known_;  // those that were asked for
  std::vector<QAccessible::Id> gone_;                 // may be in use by who is calling
  std::vector<view::ElementId> toldOrder_;
  std::optional<view::ElementId> toldFocus_;
  std::optional<std::uint64_t> revision_;  // of the elements
  std::optional<std::uint64_t> toldRevision_;
};

}  // namespace TalvoConsentSDK
