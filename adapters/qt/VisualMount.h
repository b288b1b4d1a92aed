#pragma once

// Updates the items of a scene to match a list of visuals.

#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/view/Visual.h"

#include "adapters/qt/VisualItem.h"

namespace TalvoConsentSDK {

/// Keeps one item per visual and finds it again by its identity. Does not redraw items that did not change.
/// Consecutive visuals with the same clip share a clipping item.
class VisualMount {
 public:
  explicit VisualMount(QQuickItem& root) : root_(root) {}

  /// The settings with which texts are drawn from the next update on.
  void setTextSettings(const TextSettings& settings);

  void update(const std::vector<view::Visual>& visuals);

 private:
  using Identity = std::pair<view::ElementId, int>;

  QQuickItem& group(std::size_t index, const std::optional<platform::Rect>& clip);

  QQuickItem& root_;
  TextSettings settings_;
  std::vector<std::unique_ptr<QQuickItem>> groups_;
  std::map<Identity, std::unique_ptr<VisualItem>> items_;  // declared last: destroyed before groups_
};

}  // namespace TalvoConsentSDK
