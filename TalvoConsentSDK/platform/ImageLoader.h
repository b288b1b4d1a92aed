#pragma once

// The seam for pictures from the network.

#include <functional>
#include <memory>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/base/Result.h"
#include "TalvoConsentSDK/base/URL.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// A decoded picture, in the toolkit's own form.
class Image {
 public:
  virtual ~Image() = default;

  /// The size in points, at one pixel per point.
  virtual Size size() const = 0;
};

/// Fetches pictures through the platform's URLSession and decodes them off the main thread.
class ImageLoader {
 public:
  using Completion = std::function<void(Result<std::shared_ptr<const Image>>)>;

  virtual ~ImageLoader() = default;

  /// Loads the picture at `url` and calls `completion` once, on the main actor, never inside `load`.
  virtual void load(const URL& url, Completion completion) = 0;
};

}  // namespace platform
}  // namespace TalvoConsentSDK
