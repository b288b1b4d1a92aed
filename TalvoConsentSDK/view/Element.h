#pragma once

// The elements behind a view that is shown: their place in the tree, what they remember between renderings,
// and their layout.

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

/// The identity of a view in its tree: a hash of the keys or positions on the path from the root. It stays
/// the same from one rendering to the next, and when a view disappears and comes back.
using ElementId = std::uint64_t;

/// The room that a parent offers. An absent dimension asks for the natural size.
struct Proposal {
  std::optional<double> width;
  std::optional<double> height;
  friend bool operator==(const Proposal&, const Proposal&) = default;
};

struct Element;

/// The heights of a LazyRows element's rows. Outlive it, so that a list that comes back is scrolled to the
/// same row.
struct RowHeights {
  std::vector<double> heights;  // of all rows; negative until a row is measured
  double width = -1;            // the width at which the heights were measured
  double estimate = 0;          // assumed height of a row not yet measured
};

/// What a LazyRows element knows about its rows.
struct LazyRowsState {
  RowHeights& measured;
  std::map<std::size_t, std::unique_ptr<Element>> rows;  // the rows that exist now, by index
};

struct Element {
  Element(ElementId identity, Element* parentElement) : id(identity), parent(parentElement) {}

  const ElementId id;
  Element* const parent;
  AnyView view;
  std::vector<std::unique_ptr<Element>> children;
  std::unique_ptr<LazyRowsState> lazyRows;

  /// The most recent sizes measured since the view last changed, each with its proposal.
  std::vector<std::pair<Proposal, Size>> sizes;

  /// The minimum width at which no word in the view is split; absent until it is measured.
  std::optional<double> minContentWidth;

  /// The results of layout, in window coordinates. Already mirrored if the layout is right to left.
  Rect frame;
  std::optional<Rect> clip;  // the view and everything in it are clipped to this
};

/// Values that outlive their element. If an element with the same identity appears again while the banner is
/// shown, it finds the values again.
class ElementMemory {
 public:
  /// Returns the value of type `T` that is stored for `id`. The first call creates it by calling `make`.
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

/// What a component's body may use.
class RenderContext {
 public:
  RenderContext(ElementId component, ElementMemory& memory, std::weak_ptr<const ChangeListener> listener)
      : component_(component), memory_(memory), listener_(std::move(listener)) {}

  /// Returns the component's own value: `initial` at first, later what it was last set to. There is one value
  /// per component and type. Changing it triggers a new rendering.
  template <class T>
  State<T> state(T initial) {
    const auto& state = memory_.get<State<T>>(component_, [&] { return State<T>(std::move(initial)); });
    state.listen(listener_);
    return state;
  }

  /// Triggers a new rendering when one of these states changes.
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
  /// `onChange` is called after each change of a state that a view uses.
  explicit ElementTree(ChangeListener onChange);
  ~ElementTree();

  /// Updates the elements to match `root`. Elements that did not change keep their measured sizes.
  void render(const AnyView& root);

  Element& root() { return root_; }
  const Element& root() const { return root_; }
  ElementMemory& memory() { return memory_; }

  /// Returns the row at `index` of a LazyRows element, and creates it if necessary.
  Element& row(Element& rows, std::size_t index);

 private:
  bool update(Element& element, const AnyView& view);
  bool updateChildren(Element& element);
  bool updateRows(Element& element);

  const std::shared_ptr<const ChangeListener> onChange_;
  ElementMemory memory_;
  Element root_;
};

/// Forgets the measured sizes of an element and of all its ancestors.
TALVO_EXPORT void forgetSizes(Element& element);

/// Forgets the measured sizes of an element and of all its descendants.
TALVO_EXPORT void forgetAllSizes(Element& element);

/// Calls `visit` for the element's children in order, including the lazy rows that exist.
template <class Visit>
void forEachChild(const Element& element, Visit visit) {
  for (const auto& child : element.children) visit(*child);
  if (!element.lazyRows) return;
  for (const auto& [index, row] : element.lazyRows->rows) visit(*row);
}

}  // namespace view
}  // namespace TalvoConsentSDK
