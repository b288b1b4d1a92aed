#pragma once

// A value, or the Error that prevented it. Members are named as in std::expected.

#include <utility>
#include <variant>

#include "TalvoConsentSDK/base/Error.h"
#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Either a `T` or an `Error`. Reading the value of a failed result throws its `Error`; reading the error of
/// a successful one throws `std::bad_variant_access`.
template <class T>
class [[nodiscard]] Result {
 public:
  Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
  template <std::derived_from<std::exception> Failure>
  Result(Failure failure) : state_(std::in_place_index<1>, std::move(failure)) {}

  bool has_value() const noexcept { return state_.index() == 0; }
  explicit operator bool() const noexcept { return has_value(); }

  const T& value() const& {
    if (!has_value()) error().raise();
    return *std::get_if<0>(&state_);
  }
  T& value() & { return const_cast<T&>(std::as_const(*this).value()); }
  T&& value() && { return std::move(value()); }

  const Error& error() const { return std::get<1>(state_); }

  const T& operator*() const& { return value(); }
  T& operator*() & { return value(); }
  T&& operator*() && { return std::move(*this).value(); }
  const T* operator->() const { return &value(); }
  T* operator->() { return &value(); }

 private:
  std::variant<T, Error> state_;
};

/// Success without a value, or an `Error`.
template <>
class [[nodiscard]] Result<void> {
 public:
  Result() = default;
  template <std::derived_from<std::exception> Failure>
  Result(Failure failure) : state_(std::in_place_index<1>, std::move(failure)) {}

  bool has_value() const noexcept { return state_.index() == 0; }
  explicit operator bool() const noexcept { return has_value(); }

  void value() const {
    if (!has_value()) error().raise();
  }
  const Error& error() const { return std::get<1>(state_); }

 private:
  std::variant<std::monostate, Error> state_;
};

}  // namespace TalvoConsentSDK
