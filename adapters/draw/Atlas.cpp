#include "adapters/draw/Atlas.h"

#include <algorithm>
#include <atomic>
#include <new>
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
  if (!bytes_) bytes_ = clearPixels();
  if (shelf->changed < 0) shelf->changed = shelf->used;
  shelf->used += width + gap;
  const std::size_t pictureRow = static_cast<std::size_t>(width) * pixelBytes();
  std::uint8_t* target = &bytes_[static_cast<std::size_t>(entry.place.y) * rowBytes() +
                                 static_cast<std::size_t>(entry.place.x) * pixelBytes()];
  for (int row = 0; row < height; ++row, target += rowBytes()) {
    std::copy_n(&bytes[static_cast<std::size_t>(row) * pictureRow], pictureRow, target);
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
                      shelf.used + width + 2 * gap <= width_;
    if (fits && (!best || shelf.height < best->height)) best = &shelf;
  }
  if (best) return best;
  const int y = shelves_.empty() ? 0 : shelves_.back().y + shelves_.back().height;
  if (y + height + 2 * gap > height_ || width + 2 * gap > width_) return nullptr;
  return &shelves_.emplace_back(Shelf{y, height + gap});
}

Atlas::Pixels Atlas::clearPixels() const {
  auto* const bytes = static_cast<std::uint8_t*>(std::calloc(static_cast<std::size_t>(height_), rowBytes()));
  if (!bytes) throw std::bad_alloc();
  return Pixels(bytes);
}

// Doubles the shorter side, so that little of a texture is empty.
bool Atlas::grow() {
  if (height_ >= maxSize_ || lacksPixels_) return false;
  const std::size_t oldRow = rowBytes();
  if (width_ == 0) {
    width_ = height_ = firstSize;
  } else {
    int& side = width_ > height_ ? height_ : width_;
    side = std::min(maxSize_, side * 2);
  }
  Pixels grown = clearPixels();
  for (const Shelf& shelf : shelves_) {
    const std::size_t used = static_cast<std::size_t>(shelf.used) * pixelBytes();
    for (int row = shelf.y; row < shelf.y + shelf.height; ++row) {
      const auto place = static_cast<std::size_t>(row);
      std::copy_n(&bytes_[place * oldRow], used, &grown[place * rowBytes()]);
    }
  }
  bytes_ = std::move(grown);
  replaceTexture();
  return true;
}

// Whether the pictures of the list that is being built, and of the one before, would fit easily if they were
// alone.
bool Atlas::isMostlyUnused() const {
  if (clearedIn_ == list_ || width_ == 0) return false;
  std::int64_t used = 0;
  for (const auto& [key, entry] : entries_) {
    if (entry.lastUsed + 1 >= list_) used += std::int64_t{entry.place.width} * entry.place.height;
  }
  return used < std::int64_t{width_} * height_ / 4;
}

bool Atlas::clear() {
  if (clearedIn_ == list_) return false;
  clearedIn_ = list_;
  entries_.clear();
  shelves_.clear();
  bytes_ = clearPixels();
  lacksPixels_ = false;
  return true;
}

void Atlas::releasePixels() {
  bytes_.reset();
  lacksPixels_ = !shelves_.empty();
}

void Atlas::forgetTexture() {
  if (lacksPixels_) {
    entries_.clear();
    shelves_.clear();
    releasePixels();
  }
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
    const PixelRect area{shelf.changed, shelf.y, std::min(width_, shelf.used + gap) - shelf.changed,
                         std::min(height_ - shelf.y, shelf.height + gap)};
    shelf.changed = -1;
    const std::size_t begin =
        static_cast<std::size_t>(area.y) * rowBytes() + static_cast<std::size_t>(area.x) * pixelBytes();
    uploads.push_back({texture_, format_, width_, height_, area, &bytes_[begin], rowBytes()});
  }
}

}  // namespace TalvoConsentSDK
