#pragma once

// Decodes the usual picture formats of the web.

#include <memory>
#include <string_view>

#include "TalvoConsentSDK/base/Result.h"

#include "adapters/draw/DrawImage.h"

namespace TalvoConsentSDK {

/// Decodes a PNG, JPEG or WebP file of at most 16 million pixels. Makes pictures smaller that are larger than
/// any surface shows them. Works on any thread.
Result<std::shared_ptr<const platform::Image>> decodedPicture(std::string_view bytes);

}  // namespace TalvoConsentSDK
