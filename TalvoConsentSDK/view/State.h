#pragma once

// Values that views show and that handlers change.

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

/// Read and write access to a value that is stored elsewhere. Main thread only.
template <class T>
class Binding {
 public:
  /// What `get` returns: a copy of a trivially copyable value, or else a reference that is valid until the
  /// next change.
  using Reading = std::conditional_t<std::is_trivially_copyable_v<T>, T, const T&>;

  /// Changes a value in place.
  using Change = std::function<void(T&)>;

  /// Gives access to the value in `place`, an object with `Reading get() const` and
  /// `void update(const Change&)`; `update` changes the value and then notifies the views that show it.
  template <class Place>
  explicit Binding(std::shared_ptr<Place> place)
      : place_(std::move(place)),
        get_([](const void* from) -> Reading { return static_cast<const Place*>(from)->get(); }),
        update_([](void* at, const Change& change) { static_cast<Place*>(at)->update(change); }) {}

  /// A value that never changes.
  static Binding constant(T value) {
    struct Constant {
      T value;
      Reading get() const { return value; }
      void update(const Change&) const {}
    };
    return Binding(std::make_shared<Constant>(Constant{std::move(value)}));
  }

  Reading get() const { return get_(place_.get()); }

  void update(const Change& change) const { update_(place_.get(), change); }

  void set(T value) const {
    update([&](T& current) { current = std::move(value); });
  }

 private:
  std::shared_ptr<void> place_;
  Reading (*get_)(const void* place);
  void (*update_)(void* place, const Change& change);
};

/// Called after each change of a value that a view shows.
using ChangeListener = std::function<void()>;

/// A value that outlives the views made from it. Copies share the value. A change notifies the listener that
/// was set last, if it still exists. Main thread only.
template <class T>
class State {
 public:
  explicit State(T initial) : cell_(std::make_shared<Cell>(Cell{std::move(initial), {}})) {}

  const T& get() const noexcept { return cell_->value; }

  void update(const typename Binding<T>::Change& change) const { cell_->update(change); }

  void set(T value) const {
    update([&](T& current) { current = std::move(value); });
  }

  Binding<T> binding() const { return Binding<T>(cell_); }

  void listen(const std::weak_ptr<const ChangeListener>& listener) const { cell_->listener = listener; }

 private:
  struct Cell {
    T value;
    std::weak_ptr<const ChangeListener> listener;

    typename Binding<T>::Reading get() const { return value; }

    void update(const typename Binding<T>::Change& change) {
      change(value);
      if (const auto notify = listener.lock()) (*notify)();
    }
  };

  std::shared_ptr<Cell> cell_;
};

}  // namespace view
}  // namespace TalvoConsentSDK
