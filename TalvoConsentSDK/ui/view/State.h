#pragma once

// Values that views show and handlers change.

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include "TalvoConsentSDK/platform/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Two-way access to a value that lives elsewhere. Main thread only.
template <class T>
class Binding {
 public:
  /// What reading gives: a copy of something small, else a reference that is valid until the next change.
  using Reading = std::conditional_t<std::is_trivially_copyable_v<T>, T, const T&>;

  Binding(std::function<Reading()> get, std::function<void(const std::function<void(T&)>&)> update)
      : get_(std::move(get)), update_(std::move(update)) {}

  /// Access to a small value through two functions.
  static Binding computed(std::function<T()> get, std::function<void(T)> set) {
    return Binding(get, [get, set](const std::function<void(T&)>& change) {
      T value = get();
      change(value);
      set(std::move(value));
    });
  }

  Reading get() const { return get_(); }

  /// Changes the value in place, then tells whoever shows it.
  void update(const std::function<void(T&)>& change) const { update_(change); }

  void set(T value) const {
    update_([&](T& current) { current = std::move(value); });
  }

 private:
  std::function<Reading()> get_;
  std::function<void(const std::function<void(T&)>&)> update_;
};

/// Tells whoever shows a view that a value behind it has changed.
using ChangeListener = std::function<void()>;

/// A value that outlives the views made from it: copies share it. A change tells the listener that last
/// asked, as long as that one is alive. Main thread only.
template <class T>
class State {
 public:
  explicit State(T initial) : cell_(std::make_shared<Cell>(Cell{std::move(initial), {}})) {}

  const T& get() const noexcept { return cell_->value; }

  void update(const std::function<void(T&)>& change) const {
    change(cell_->value);
    if (const auto listener = cell_->listener.lock()) (*listener)();
  }

  void set(T value) const {
    update([&](T& current) { current = std::move(value); });
  }

  Binding<T> binding() const {
    return Binding<T>([state = *this]() -> typename Binding<T>::Reading { return state.get(); },
                      [state = *this](const std::function<void(T&)>& change) { state.update(change); });
  }

  void listen(const std::weak_ptr<const ChangeListener>& listener) const { cell_->listener = listener; }

 private:
  struct Cell {
    T value;
    std::weak_ptr<const ChangeListener> listener;
  };

  std::shared_ptr<Cell> cell_;
};

}  // namespace TalvoConsentSDK
