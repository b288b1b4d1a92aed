#pragma once

// Keeps the items of a scene in line with a list of visuals.

#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/view/Visual.h"

#include "adapters/qt/VisualItem.h"

namespace TalvoConsentSDK {

/// One item a visual, found again by identity. What did not change is not touched. Visuals that share a clip
/// and follow each other share a clipping item.
class VisualMount {
 public:
  VisualMount(QQuickItem& root, const TextSettings& settings);

  void update(const std::vector<view::Visual>& visuals);

 private:
  using Identity = std::pair<view::ElementId, int>;

  QQuickItem& group(std::size_t index, const std::optional<platform::Rect>& clip);

  QQuickItem& root_;
  const TextSettings settings_;
  std::vector<std::unique_ptr<QQuickItem>> groups_;
  std::map<Identity, std::unique_ptr<VisualItem>> items_;  // go before the groups they lie in
};

}  // namespace TalvoConsentSDK
