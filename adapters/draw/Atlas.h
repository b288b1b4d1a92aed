#pragma once

// A texture that holds many small pictures. It starts small, grows when it is full, and forgets pictures that
// are no longer drawn.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <unordered_map>
#include <vector>

#include "adapters/draw/DrawList.h"

namespace TalvoConsentSDK {

/// Identifies a picture: what it shows, and in which size.
using AtlasKey = std::array<std::uint32_t, 5>;

/// Where a picture lies in its texture, in pixels, and where it is drawn, seen from the point it belongs to.
/// Pictures may be empty.
struct AtlasPlace {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  int left = 0;
  int top = 0;
};

class Atlas {
 public:
  Atlas(TextureFormat format, int maxSize) : format_(format), maxSize_(maxSize) {}

  /// Pictures that are found or added from here on are in use. Begin a list with it.
  void beginList() { ++list_; }

  /// Returns where a picture lies, or null if it has to be added. Valid until the next `add`.
  const AtlasPlace* find(const AtlasKey& key);

  /// Adds a picture, given as rows of pixels without gaps; the place's `x` and `y` are ignored. Returns null
  /// if there is no room for it: then call `clear` and build the list again or, if that has been done, leave
  /// the picture out.
  const AtlasPlace* add(const AtlasKey& key, const AtlasPlace& place, std::span<const std::uint8_t> bytes);

  /// Forgets all pictures. Returns false, and does nothing, if the list that is being built has done so
  /// already.
  bool clear();

  /// Appends what has changed since the last call.
  void takeUploads(std::vector<TextureUpload>& uploads, std::vector<TextureId>& released);

  /// The renderer has lost its texture. The next uploads are everything, under a new id. Build the next list
  /// anew.
  void forgetTexture();

  /// Frees the pixels, to which the last uploads point: the renderer's texture has them. If the texture has
  /// to grow later, or the renderer loses it, all pictures have to be added again.
  void releasePixels();

  /// 0 until the first picture is added.
  TextureId texture() const { return texture_; }
  int width() const { return width_; }
  int height() const { return height_; }
  int maxSize() const { return maxSize_; }

 private:
  struct Shelf {
    int y = 0;
    int height = 0;
    int used = 0;      // width
    int changed = -1;  // the first column to upload; -1 if nothing changed
  };
  struct Entry {
    AtlasPlace place;
    std::uint64_t lastUsed = 0;
  };

  struct KeyHash {
    std::size_t operator()(const AtlasKey& key) const {
      std::uint64_t hash = 0xCBF29CE484222325U;  // FNV-1a
      for (const std::uint32_t part : key) hash = (hash ^ part) * 0x100000001B3U;
      return static_cast<std::size_t>(hash ^ (hash >> 32U));
    }
  };

  struct Free {
    void operator()(std::uint8_t* bytes) const { std::free(bytes); }
  };
  // Clear pixels. Those that are never written take no memory.
  using Pixels = std::unique_ptr<std::uint8_t[], Free>;

  Pixels clearPixels() const;
  std::size_t rowBytes() const { return static_cast<std::size_t>(width_) * pixelBytes(); }
  bool grow();
  bool isMostlyUnused() const;
  Shelf* shelfFor(int width, int height);
  void replaceTexture();
  std::size_t pixelBytes() const { return format_ == TextureFormat::alpha8 ? 1 : 4; }

  const TextureFormat format_;
  const int maxSize_;
  int width_ = 0;
  int height_ = 0;
  TextureId texture_ = 0;
  bool isUploaded_ = false;
  Pixels bytes_;
  bool lacksPixels_ = false;  // of pictures that were uploaded
  std::vector<Shelf> shelves_;
  std::unordered_map<AtlasKey, Entry, KeyHash> entries_;
  std::vector<TextureId> released_;
  std::uint64_t list_ = 1;
  std::uint64_t clearedIn_ = 0;
};

}  // namespace TalvoConsentSDK
