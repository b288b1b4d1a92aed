#include "adapters/qt/AccessibleTree.h"

#include <QGuiApplication>
#include <algorithm>
#include <map>
#include <ranges>
#include <unordered_set>
#include <utility>

#include "adapters/qt/AccessibleInterfaces.h"
#include "adapters/qt/QtText.h"
#include "adapters/qt/ViewWindow.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

// The maximum number of new rows that are announced when a list opens. A client that is notified of one row
// reads the others itself.
constexpr std::size_t maxAnnounced = 64;

void announce(QAccessibleInterface* interface, QAccessible::Event type) {
  QAccessibleEvent event(interface, type);
  QAccessible::updateAccessibility(&event);
}

void announceState(QAccessibleInterface* interface, const QAccessible::State& changed) {
  QAccessibleStateChangeEvent event(interface, changed);
  QAccessible::updateAccessibility(&event);
}

std::vector<ElementId> ids(const std::vector<AccessibleElement>& elements) {
  std::vector<ElementId> all;
  for (const AccessibleElement& each : elements) all.push_back(each.id);
  return all;
}

}  // namespace

AccessibleTree::AccessibleTree(ViewWindow& window)
    : window_(window), root_(QAccessible::registerAccessibleInterface(makeAccessibleWindow(*this, window))) {}

AccessibleTree::~AccessibleTree() {
  if (root()) announce(root(), QAccessible::ObjectDestroyed);
  for (const auto& [id, known] : known_) removed_.push_back(known.item);
  removed_.push_back(root_);
  std::ranges::for_each(removed_, QAccessible::deleteAccessibleInterface);
}

QAccessibleInterface* AccessibleTree::container() {
  return hasDialog() ? item(elements_.front()) : root();
}

QAccessibleInterface* AccessibleTree::item(const AccessibleElement& element) {
  KnownItem& known = known_[element.id];
  if (!known.item) {
    known = {QAccessible::registerAccessibleInterface(makeAccessibleItem(*this, element.id)), element};
  }
  return QAccessible::accessibleInterface(known.item);
}

const std::vector<AccessibleElement>& AccessibleTree::elements() {
  if (!window_.controller()) return elements_;
  const auto revision = window_.controller()->accessibleRevision();
  if (std::exchange(revision_, revision) == revision) return elements_;
  std::vector<AccessibleElement> now = window_.controller()->accessibleElements(Layout::Rows::all);
  std::unordered_map<ElementId, std::size_t> indices;
  for (std::size_t i = 0; i < now.size(); ++i) indices[now[i].id] = i;
  std::map<std::size_t, QAccessible::Id> removed;  // by their former place
  std::erase_if(known_, [&](const auto& each) {
    if (indices.contains(each.first)) return false;
    const auto former = indices_.find(each.first);
    removed.emplace(former == indices_.end() ? elements_.size() + each.first : former->second,
                    each.second.item);
    return true;
  });
  for (const auto& [place, each] : removed) {  // announced while clients can still query the element
    announce(QAccessible::accessibleInterface(each), QAccessible::ObjectHide);
    announce(QAccessible::accessibleInterface(each), QAccessible::ObjectDestroyed);
    removed_.push_back(each);
  }
  elements_ = std::move(now);
  indices_ = std::move(indices);
  if (announcedOrder_.empty()) announcedOrder_ = ids(elements_);
  return elements_;
}

const AccessibleElement* AccessibleTree::find(ElementId id) {
  const auto& all = elements();
  const auto found = indices_.find(id);
  return found == indices_.end() ? nullptr : &all[found->second];
}

bool AccessibleTree::hasDialog() {
  return !elements().empty() && elements_.front().role == Role::dialog;
}

const AccessibleElement* AccessibleTree::at(Point point) {
  if (!window_.controller()) return nullptr;
  const AccessibleElement* control = controlAt(window_.controller()->accessibleElements(), point);
  if (control) return find(control->id);
  for (const AccessibleElement& each : std::views::reverse(elements())) {
    if (each.frame.contains(point) && (!each.clip || each.clip->contains(point))) return &each;
  }
  return nullptr;
}

std::optional<ElementId> AccessibleTree::focused() const {
  // A child window of the host never gets the keyboard focus itself.
  const QWindow* const active = QGuiApplication::focusWindow();
  const bool hasKeys = active && (active == &window_ || active == window_.parent());
  return hasKeys && window_.controller() ? window_.controller()->focused() : std::nullopt;
}

void AccessibleTree::activate(ElementId id) {
  const ViewWindow::HandlerScope scope(window_);
  const auto controller = window_.controller();  // keeps it alive if its handlers replace it
  if (const AccessibleElement* element = find(id)) controller->reveal(*element);
  controller->activate(id);
}

void AccessibleTree::focus(ElementId id) {
  window_.controller()->focus(id);
}

void AccessibleTree::notify() {
  if (QAccessible::isActive()) {
    const auto& all = elements();
    if (std::exchange(announcedRevision_, revision_) != revision_) {
      // A copy, because a client that is notified may query the elements and so change them.
      const std::vector<AccessibleElement> now = all;
      notifyNew(now);
      for (const AccessibleElement& each : now) {
        const auto known = known_.find(each.id);
        if (known != known_.end())
          notifyChange(item(each), std::exchange(known->second.announced, each), each);
      }
    }
    if (focused() != announcedFocus_) notifyFocus();
  }
  std::ranges::for_each(std::exchange(removed_, {}), QAccessible::deleteAccessibleInterface);
}

void AccessibleTree::notifyNew(const std::vector<AccessibleElement>& now) {
  std::vector<ElementId> order = ids(now);
  const std::vector<ElementId> before = std::exchange(announcedOrder_, order);
  if (before == order) return;
  const std::unordered_set<ElementId> old(before.begin(), before.end());
  std::size_t count = 0;
  for (const AccessibleElement& each : now) {
    if (old.contains(each.id) || ++count > maxAnnounced) continue;
    announce(item(each), QAccessible::ObjectCreated);
    announce(item(each), QAccessible::ObjectShow);
  }
  announce(container(), QAccessible::ObjectReorder);
}

// Sends one event per state, because platforms look at only one state of an event.
void AccessibleTree::notifyChange(QAccessibleInterface* item, const AccessibleElement& before,
                                  const AccessibleElement& now) {
  if (before.name != now.name) announce(item, QAccessible::NameChanged);
  if (before.description != now.description) announce(item, QAccessible::DescriptionChanged);
  QAccessible::State value;
  value.checked = now.role == Role::toggle;
  value.expanded = now.role == Role::expander;
  QAccessible::State enabled;
  enabled.disabled = true;
  if (before.value != now.value) announceState(item, value);
  if (before.isEnabled != now.isEnabled) announceState(item, enabled);
}

void AccessibleTree::notifyFocus() {
  announcedFocus_ = focused();
  const AccessibleElement* const element =
      announcedFocus_ && QAccessible::isActive() ? find(*announcedFocus_) : nullptr;
  if (element) announce(item(*element), QAccessible::Focus);
}

}  // namespace TalvoConsentSDK
