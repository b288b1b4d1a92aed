#pragma once

// Combines the library with SDL, libcurl and SQLite.

#include <cstddef>
#include <filesystem>
#include <memory>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Platform.h"

#include "adapters/curl/CurlURLSession.h"
#include "adapters/draw/ConsentSurface.h"
#include "adapters/posix/PosixPlatform.h"
#include "adapters/threads/MainQueue.h"

union SDL_Event;
struct SDL_Renderer;
struct SDL_Window;

namespace TalvoConsentSDK TALVO_EXPORT {

/// The banner in a window that the host draws with SDL's renderer. Main thread only.
///
///     SDLBanner banner(window, renderer);
///     Platform::install(makeSDLPlatform(banner, store));
///
/// Then pass each event to `handle`, and call `draw` in each frame. Destroy it before `renderer`.
class SDLBanner {
 public:
  /// The surface's size follows the window's. `options.size.scale` multiplies the number of pixels in a unit
  /// of the window, which is 1 on systems whose windows are measured in pixels: pass the display's density
  /// there. A minimised or hidden window counts as in the background, and SDL opens URLs, unless `options`
  /// has callbacks for these.
  SDLBanner(SDL_Window* window, SDL_Renderer* renderer, SurfaceOptions options = {});
  SDLBanner(const SDLBanner&) = delete;
  SDLBanner& operator=(const SDLBanner&) = delete;
  ~SDLBanner();

  /// Returns whether the banner took the event; if not, it is for the host. Also runs what the library has
  /// posted to the main thread: a post wakes a host that waits in SDL_WaitEvent by an event.
  bool handle(const SDL_Event& event);

  /// Draws the banner above what the host has drawn in this frame. Does nothing while there is none. Returns
  /// false if SDL failed; SDL_GetError then says why.
  bool draw();

  /// For settings, for assistive technology, and to find out whether the banner is modal or has changed.
  ConsentSurface& surface();

  /// The main actor.
  const std::shared_ptr<MainQueue>& mainQueue() const;

 private:
  class Implementation;
  const std::unique_ptr<Implementation> implementation_;
};

/// Makes the platform of `makePosixPlatform`, with the windows and the main actor of `banner`.
TALVO_EXPORT Platform makeSDLPlatform(SDLBanner& banner,
                                      const std::filesystem::path& store = defaultStoreFile(),
                                      const CurlOptions& options = {},
                                      std::size_t maxCacheBytes = 10'000'000);

}  // namespace TalvoConsentSDK
