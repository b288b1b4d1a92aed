#include "adapters/qt/AccessibleTree.h"

#include <QGuiApplication>
#include <algorithm>
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

// When a list opens, at most this many new rows are announced: a client that hears of one reads the others
// itself.
constexpr std::size_t maxAnnounced = 64;

void tell(QAccessibleInterface* interface, QAccessible::Event type) {
  QAccessibleEvent event(interface, type);
  QAccessible::updateAccessibility(&event);
}

void tellState(QAccessibleInterface* interface, const QAccessible::State& changed) {
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
  if (root()) tell(root(), QAccessible::ObjectDestroyed);
  for (const auto& [id, known] : known_) gone_.push_back(known.item);
  gone_.push_back(root_);
  std::ranges::for_each(gone_, QAccessible::deleteAccessibleInterface);
}

QAccessibleInterface* AccessibleTree::container() {
  return hasDialog() ? item(elements_.front()) : root();
}

QAccessibleInterface* AccessibleTree::item(const AccessibleElement& element) {
  Known& known = known_[element.id];
  if (!known.item) {
    known = {QAccessible::registerAccessibleInterface(makeAccessibleItem(*this, element.id)), element};
  }
  return QAccessible::accessibleInterface(known.item);
}

const std::vector<AccessibleElement>& AccessibleTree::elements() {
  if (!window_.controller()) return elements_;
  const auto revision = window_.controller()->accessibleRevision();
  if (std::exchange(revision_, revision) == revision) return elements_;
  std::vector<AccessibleElement> now = window_.controller()->accessibleElements(true);
  std::unordered_map<ElementId, std::size_t> indices;
  for (std::size_t i = 0; i < now.size(); ++i) indices[now[i].id] = i;
  std::vector<QAccessible::Id> gone;
  std::erase_if(known_, [&](const auto& each) {
    if (indices.contains(each.first)) return false;
    gone.push_back(each.second.item);
    return true;
  });
  for (const QAccessible::Id each : gone) {  // told while it can still be asked what it was
    tell(QAccessible::accessibleInterface(each), QAccessible::ObjectHide);
    tell(QAccessible::accessibleInterface(each), QAccessible::ObjectDestroyed);
    gone_.push_back(each);
  }
  elements_ = std::move(now);
  indices_ = std::move(indices);
  if (toldOrder_.empty()) toldOrder_ = ids(elements_);
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
  // A window within the host's is never given the keyboard itself.
  const QWindow* const active = QGuiApplication::focusWindow();
  const bool hasKeys = active && (active == &window_ || active == window_.parent());
  return hasKeys && window_.controller() ? window_.controller()->focused() : std::nullopt;
}

void AccessibleTree::activate(ElementId id) {
  const ViewWindow::Use use(window_);
  const auto controller = window_.controller();  // what it does may end the window's use of it
  if (const AccessibleElement* element = find(id)) controller->reveal(*element);
  controller->activate(id);
}

void AccessibleTree::focus(ElementId id) {
  window_.controller()->focus(id);
}

void AccessibleTree::notify() {
  if (QAccessible::isActive()) {
    const auto& all = elements();
    if (std::exchange(toldRevision_, revision_) != revision_) {
      const std::vector<AccessibleElement> now = all;  // who is told may ask, and make it change
      notifyNew(now);
      for (const AccessibleElement& each : now) {
        const auto known = known_.find(each.id);
        if (known != known_.end()) notifyChange(item(each), std::exchange(known->second.told, each), each);
      }
    }
    if (focused() != toldFocus_) notifyFocus();
  }
  std::ranges::for_each(std::exchange(gone_, {}), QAccessible::deleteAccessibleInterface);
}

void AccessibleTree::notifyNew(const std::vector<AccessibleElement>& now) {
  std::vector<ElementId> order = ids(now);
  const std::vector<ElementId> before = std::exchange(toldOrder_, order);
  if (before == order) return;
  const std::unordered_set<ElementId> old(before.begin(), before.end());
  std::size_t announced = 0;
  for (const AccessibleElement& each : now) {
    if (old.contains(each.id) || ++announced > maxAnnounced) continue;
    tell(item(each), QAccessible::ObjectCreated);
    tell(item(each), QAccessible::ObjectShow);
  }
  tell(container(), QAccessible::ObjectReorder);
}

// Each state is an event of its own: platforms look at one.
void AccessibleTree::notifyChange(QAccessibleInterface* item, const AccessibleElement& before,
                                  const AccessibleElement& now) {
  if (before.name != now.name) tell(item, QAccessible::NameChanged);
  if (before.description != now.description) tell(item, QAccessible::DescriptionChanged);
  QAccessible::State value;
  value.checked = now.role == Role::toggle;
  value.expanded = now.role == Role::expander;
  QAccessible::State enabled;
  enabled.disabled = true;
  if (before.value != now.value) tellState(item, value);
  if (before.isEnabled != now.isEnabled) tellState(item, enabled);
}

void AccessibleTree::notifyFocus() {
  toldFocus_ = focused();
  const AccessibleElement* const element =
      toldFocus_ && QAccessible::isActive() ? find(*toldFocus_) : nullptr;
  if (element) tell(item(*element), QAccessible::Focus);
}

}  // namespace TalvoConsentSDK
