#include "TalvoConsentSDK/view/Element.h"

#include <functional>
#include <span>
#include <string>

#include "TalvoConsentSDK/view/ViewNode.h"

namespace TalvoConsentSDK {
namespace view {

namespace {

// FNV-1a over the parent's identity and the key or position.
ElementId combine(ElementId parent, std::string_view bytes) {
  ElementId hash = parent;
  for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
  return hash;
}

ElementId identity(ElementId parent, const AnyView& view, std::size_t position) {
  const std::string& key = view.node().key;
  return combine(parent, key.empty() ? "#" + std::to_string(position) : "=" + key);
}

void forgetOwnSizes(Element& element) {
  element.sizes.clear();
  element.minContentWidth.reset();
}

}  // namespace

ElementTree::ElementTree(ChangeListener onChange)
    : onChange_(std::make_shared<const ChangeListener>(std::move(onChange))),
      root_(0xcbf29ce484222325U, nullptr) {}

ElementTree::~ElementTree() = default;

void ElementTree::render(const AnyView& root) {
  update(root_, root);
}

Element& ElementTree::row(Element& rows, std::size_t index) {
  std::unique_ptr<Element>& row = rows.lazyRows->rows[index];
  if (!row) {
    const AnyView view = std::get<node::LazyRows>(rows.view.node().content).row.run(index);
    row = std::make_unique<Element>(identity(rows.id, view, index), &rows);
    update(*row, view);
  }
  return *row;
}

// Returns whether the view or anything in it changed, apart from handlers.
bool ElementTree::update(Element& element, const AnyView& view) {
  bool changed = element.view.node().content != view.node().content;
  element.view = view;
  changed |= updateChildren(element);
  changed |= updateRows(element);
  if (changed) forgetOwnSizes(element);
  return changed;
}

bool ElementTree::updateChildren(Element& element) {
  AnyView body;
  std::span<const AnyView> views = element.view.node().children;
  const auto* disclosure = std::get_if<node::Disclosure>(&element.view.node().content);
  if (disclosure && !disclosure->isOpen) return false;  // what closes stays as it was until layout removes it
  if (const auto* component = std::get_if<node::Component>(&element.view.node().content)) {
    RenderContext context(element.id, memory_, onChange_);
    body = component->body.run(context);
    views = {&body, 1};
  }

  bool changed = element.children.size() != views.size();
  element.children.resize(views.size());
  for (std::size_t i = 0; i < views.size(); ++i) {
    std::unique_ptr<Element>& child = element.children[i];
    const ElementId id = identity(element.id, views[i], i);
    const bool isNew =
        !child || child->id != id || child->view.node().content.index() != views[i].node().content.index();
    if (isNew) child = std::make_unique<Element>(id, &element);
    changed |= update(*child, views[i]) || isNew;
  }
  return changed;
}

bool ElementTree::updateRows(Element& element) {
  const auto* rows = std::get_if<node::LazyRows>(&element.view.node().content);
  if (!rows) {
    element.lazyRows.reset();
    return false;
  }
  if (!element.lazyRows) {
    RowHeights& measured = memory_.get<RowHeights>(element.id, [] { return RowHeights(); });
    element.lazyRows = std::make_unique<LazyRowsState>(measured);
  }
  LazyRowsState& state = *element.lazyRows;
  bool changed = state.measured.heights.size() != rows->count;
  state.measured.heights.resize(rows->count, -1);
  state.rows.erase(state.rows.lower_bound(rows->count), state.rows.end());
  for (auto& [index, row] : state.rows) {
    const AnyView view = rows->row.run(index);
    const ElementId id = identity(element.id, view, index);
    if (row->id != id) row = std::make_unique<Element>(id, &element);
    if (update(*row, view)) changed = true;
  }
  return changed;
}

void forgetSizes(Element& element) {
  for (Element* each = &element; each; each = each->parent) forgetOwnSizes(*each);
}

void forgetAllSizes(Element& element) {
  forgetOwnSizes(element);
  if (element.lazyRows) element.lazyRows->measured.width = -1;
  forEachChild(element, [](Element& child) { forgetAllSizes(child); });
}

}  // namespace view
}  // namespace TalvoConsentSDK
