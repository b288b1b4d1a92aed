#include "adapters/qt/VisualMount.h"

#include <algorithm>

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

void VisualMount::setTextSettings(const TextSettings& settings) {
  if (settings == settings_) return;
  settings_ = settings;
  items_.clear();
}

void VisualMount::update(const std::vector<Visual>& visuals) {
  std::map<Identity, std::unique_ptr<VisualItem>> kept;
  std::size_t groupCount = 0;
  const std::optional<Rect>* clip = nullptr;
  QQuickItem* parent = nullptr;
  double depth = 0;
  for (const Visual& visual : visuals) {
    if (!clip || *clip != visual.clip) {
      clip = &visual.clip;
      parent = &group(groupCount++, visual.clip);
    }
    const Identity identity(visual.element, visual.part);
    auto item = std::move(items_[identity]);
    if (!item) item = std::make_unique<VisualItem>(settings_);
    item->setParentItem(parent);
    item->show(visual, parent->position(), ++depth);
    kept[identity] = std::move(item);
  }
  items_ = std::move(kept);
  groups_.resize(std::min(groups_.size(), groupCount));
}

QQuickItem& VisualMount::group(std::size_t index, const std::optional<Rect>& clip) {
  if (index == groups_.size()) groups_.push_back(std::make_unique<QQuickItem>());
  QQuickItem& group = *groups_[index];
  group.setParentItem(&root_);
  group.setZ(static_cast<double>(index));
  group.setClip(clip.has_value());
  const Rect frame = clip.value_or(Rect{0, 0, root_.width(), root_.height()});
  group.setPosition({frame.x, frame.y});
  group.setSize({frame.width, frame.height});
  return group;
}

}  // namespace TalvoConsentSDK
