#include "adapters/draw/Atlas.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace TalvoConsentSDK {

namespace {

constexpr int firstSize = 256;
constexpr int gap =
    1;  // clear pixels around each picture, so that neighbours do not show when it is drawn turned

TextureId newTexture() {
  static std::atomic<TextureId> last{0};
  return ++last;
}

}  // namespace

const AtlasPlace* Atlas::find(const AtlasKey& key) {
  const auto found = entries_.find(key);
  if (found == entries_.end()) return nullptr;
  found->second.lastUsed = list_;
  return &found->second.place;
}

const AtlasPlace* Atlas::add(const AtlasKey& key, const AtlasPlace& place,
                             std::span<const std::uint8_t> bytes) {
  const auto [width, height] = std::pair(place.width, place.height);
  Shelf* shelf = nullptr;
  if (width > 0 && height > 0) {
    shelf = shelfFor(width, height);
    while (!shelf && !isMostlyUnused() && grow()) shelf = shelfFor(width, height);
    if (!shelf) return nullptr;
  }
  Entry& entry = entries_[key];
  entry = {place, list_};
  if (!shelf) {
    entry.place.width = entry.place.height = 0;
    return &entry.place;
  }
  entry.place.x = shelf->used + gap;
  entry.place.y = shelf->y + gap;
  if (shelf->changed < 0) shelf->changed = shelf->used;
  shelf->used += width + gap;
  const std::size_t rowBytes = static_cast<std::size_t>(width) * pixelBytes();
  for (int row = 0; row < height; ++row) {
    const std::size_t target =
        (static_cast<std::size_t>(entry.place.y + row) * static_cast<std::size_t>(size_) +
         static_cast<std::size_t>(entry.place.x)) *
        pixelBytes();
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(static_cast<std::size_t>(row) * rowBytes),
                rowBytes, bytes_.begin() + static_cast<std::ptrdiff_t>(target));
  }
  return &entry.place;
}

// Returns the lowest shelf with room, or a new one. Pictures do not go to shelves that are much higher than
// they are.
Atlas::Shelf* Atlas::shelfFor(int width, int height) {
  Shelf* best = nullptr;
  for (Shelf& shelf : shelves_) {
    const bool fits = shelf.height >= height + gap &&
                      shelf.height <= height + gap + std::max(2, height / 2) &&
                      shelf.used + width + 2 * gap <= size_;
    if (fits && (!best || shelf.height < best->height)) best = &shelf;
  }
  if (best) return best;
  const int y = shelves_.empty() ? 0 : shelves_.back().y + shelves_.back().height;
  if (y + height + 2 * gap > size_ || width + 2 * gap > size_) return nullptr;
  return &shelves_.emplace_back(Shelf{y, height + gap});
}

bool Atlas::grow() {
  if (size_ >= maxSize_) return false;
  const int old = size_;
  size_ = std::min(maxSize_, std::max(firstSize, size_ * 2));
  const std::size_t oldRow = static_cast<std::size_t>(old) * pixelBytes();
  const std::size_t newRow = static_cast<std::size_t>(size_) * pixelBytes();
  std::vector<std::uint8_t> grown(newRow * static_cast<std::size_t>(size_));
  for (std::size_t row = 0; row < static_cast<std::size_t>(old); ++row) {
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(row * oldRow), oldRow,
                grown.begin() + static_cast<std::ptrdiff_t>(row * newRow));
  }
  bytes_ = std::move(grown);
  replaceTexture();
  return true;
}

// Whether the pictures of the list that is being built, and of the one before, would fit easily if they were
// alone.
bool Atlas::isMostlyUnused() const {
  if (clearedIn_ == list_ || size_ == 0) return false;
  std::int64_t used = 0;
  for (const auto& [key, entry] : entries_) {
    if (entry.lastUsed + 1 >= list_) used += std::int64_t{entry.place.width} * entry.place.height;
  }
  return used < std::int64_t{size_} * size_ / 4;
}

bool Atlas::clear() {
  if (clearedIn_ == list_) return false;
  clearedIn_ = list_;
  entries_.clear();
  shelves_.clear();
  std::ranges::fill(bytes_, std::uint8_t{0});
  return true;
}

void Atlas::forgetTexture() {
  isUploaded_ = false;  // so that it is not released
  if (texture_ != 0) replaceTexture();
}

void Atlas::replaceTexture() {
  if (isUploaded_) released_.push_back(texture_);
  isUploaded_ = false;
  texture_ = newTexture();
  for (Shelf& shelf : shelves_) shelf.changed = 0;
}

void Atlas::takeUploads(std::vector<TextureUpload>& uploads, std::vector<TextureId>& released) {
  released.insert(released.end(), released_.begin(), released_.end());
  released_.clear();
  for (Shelf& shelf : shelves_) {
    if (shelf.changed < 0) continue;
    isUploaded_ = true;
    // With the gap below it, which the first row of the next shelf covers again.
    const PixelRect area{shelf.changed, shelf.y, std::min(size_, shelf.used + gap) - shelf.changed,
                         std::min(size_ - shelf.y, shelf.height + gap)};
    shelf.changed = -1;
    const std::size_t row = static_cast<std::size_t>(size_) * pixelBytes();
    const std::size_t begin =
        static_cast<std::size_t>(area.y) * row + static_cast<std::size_t>(area.x) * pixelBytes();
    uploads.push_back({texture_, format_, size_, size_, area, bytes_.data() + begin, row});
  }
}

}  // namespace TalvoConsentSDK
