#pragma once

// A view that is on show: its place in the tree, what it remembers between renderings, and where layout put
// it.

#include <any>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <typeindex>
#include <unordered_map>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/view/AnyView.h"
#include "TalvoConsentSDK/view/State.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

/// Identity of a view in its tree: a hash of the keys or positions on the way from the root. It stays the
/// same from one rendering to the next, and when a view goes and comes back.
using ElementId = std::uint64_t;

/// The room that a parent offers. An absent side asks for the natural size.
struct Proposal {
  std::optional<double> width;
  std::optional<double> height;
  friend bool operator==(const Proposal&, const Proposal&) = default;
};

struct Element;

/// What a LazyRows element knows of its rows.
struct LazyRowsState {
  std::map<std::size_t, std::unique_ptr<Element>> rows;  // those that exist now, by index
  std::vector<double> heights;                           // of all rows, last seen; negative: not yet
  double width = -1;                                     // for which the heights hold
  double estimate = 0;                                   // height of a row that has not been seen
};

struct Element {
  Element(ElementId identity, Element* parentElement) : id(identity), parent(parentElement) {}

  const ElementId id;
  Element* const parent;
  AnyView view;
  std::vector<std::unique_ptr<Element>> children;
  std::unique_ptr<LazyRowsState> lazyRows;

  /// Sizes answered since the view last changed, and the width below which a word in it would be broken.
  std::vector<std::pair<Proposal, Size>> sizes;
  std::optional<double> minContentWidth;

  /// Results of layout, in window coordinates; mirrored already where the layout is right to left.
  Rect frame;
  std::optional<Rect> clip;  // the view and everything in it is cut to this
};

/// What survives an element: found again by identity for as long as the banner is on show.
class ElementMemory {
 public:
  /// The value of type `T` remembered for `id`, made by `make` the first time.
  template <class T, class Make>
  T& get(ElementId id, Make make) {
    std::any& value = values_[{id, typeid(T)}];
    if (!value.has_value()) value = make();
    return *std::any_cast<T>(&value);
  }

 private:
  using Key = std::pair<ElementId, std::type_index>;
  struct KeyHash {
    std::size_t operator()(const Key& key) const {
      return std::hash<ElementId>()(key.first) ^ key.second.hash_code();
    }
  };

  std::unordered_map<Key, std::any, KeyHash> values_;
};

/// What a component's body may ask for.
class RenderContext {
 public:
  RenderContext(ElementId component, ElementMemory& memory, std::weak_ptr<const ChangeListener> listener)
      : component_(component), memory_(memory), listener_(std::move(listener)) {}

  /// The component's own value: `initial` at its first rendering, later whatever it was set to. One per
  /// component and type. A change renders anew.
  template <class T>
  State<T> state(T initial) {
    const auto& state = memory_.get<State<T>>(component_, [&] { return State<T>(std::move(initial)); });
    state.listen(listener_);
    return state;
  }

  /// Renders anew when one of these changes.
  template <class... T>
  void observe(const State<T>&... states) {
    (states.listen(listener_), ...);
  }

 private:
  const ElementId component_;
  ElementMemory& memory_;
  const std::weak_ptr<const ChangeListener> listener_;
};

/// The elements of one window.
class ElementTree {
 public:
  /// `onChange` is called when a state that a view shows has changed.
  explicit ElementTree(ChangeListener onChange);
  ~ElementTree();

  /// Brings the elements in line with `root`; what has not changed keeps its measured sizes.
  void render(const AnyView& root);

  Element& root() { return root_; }
  const Element& root() const { return root_; }
  ElementMemory& memory() { return memory_; }

  /// The row at `index` of a LazyRows element, made if need be.
  Element& row(Element& rows, std::size_t index);

 private:
  bool update(Element& element, const AnyView& view);
  bool updateChildren(Element& element);
  bool updateRows(Element& element);

  const std::shared_ptr<const ChangeListener> onChange_;
  ElementMemory memory_;
  Element root_;
};

/// Forgets the measured sizes of an element and of all it lies in.
TALVO_EXPORT void forgetSizes(Element& element);

/// Forgets the measured sizes of an element and of all in it.
TALVO_EXPORT void forgetAllSizes(Element& element);

/// Calls `visit` for the element's children, the rows that exist included, in order.
template <class Visit>
void forEachChild(const Element& element, Visit visit) {
  for (const auto& child : element.children) visit(*child);
  if (!element.lazyRows) return;
  for (const auto& [index, row] : element.lazyRows->rows) visit(*row);
}

}  // namespace view
}  // namespace TalvoConsentSDK
