#pragma once

// The consent given to one category.

#include <string>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// All of a category, none of it, or only the items listed (vendor or service identifiers). As JSON: `true`,
/// `false`, or an array of strings.
class ConsentValue {
 public:
  static ConsentValue all() { return ConsentValue(Kind::all, {}); }
  static ConsentValue none() { return ConsentValue(Kind::none, {}); }
  static ConsentValue partial(std::vector<std::string> items) {
    return ConsentValue(Kind::partial, std::move(items));
  }

  ConsentValue() : ConsentValue(false) {}

  explicit ConsentValue(bool enabled) : kind_(enabled ? Kind::all : Kind::none) {}

  /// Returns the value for a selection out of `totalCount` items: none if nothing is selected, all if
  /// `totalCount` items are, otherwise partial. Compares only the counts.
  static ConsentValue fromSelection(const std::vector<std::string>& selected, int totalCount);

  bool isAll() const noexcept { return kind_ == Kind::all; }
  bool isNone() const noexcept { return kind_ == Kind::none; }
  bool isPartial() const noexcept { return kind_ == Kind::partial; }

  /// The accepted items of a partial value, in the order given; empty for `all` and `none`.
  const std::vector<std::string>& items() const noexcept { return items_; }

  /// Whether anything of the category is accepted.
  bool isEnabled() const noexcept { return isAll() || !items_.empty(); }

 private:
  enum class Kind { all, none, partial };

  ConsentValue(Kind kind, std::vector<std::string> items) : kind_(kind), items_(std::move(items)) {}

  Kind kind_;
  std::vector<std::string> items_;
};

inline ConsentValue ConsentValue::fromSelection(const std::vector<std::string>& selected, int totalCount) {
  if (selected.empty()) return none();
  if (std::cmp_equal(selected.size(), totalCount)) return all();
  return partial(selected);
}

}  // namespace TalvoConsentSDK
