#include "adapters/sdl/SDLPlatform.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include <SDL.h>

#include "TalvoConsentSDK/platform/Printer.h"

#include "adapters/sdl/SDLInput.h"
#include "adapters/sdl/SDLRenderer.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

// The event that wakes the host's loop. The same for all banners.
Uint32 wakeEvent() {
  static const Uint32 type = SDL_RegisterEvents(1);
  return type;
}

// Pushes events until the banner is destroyed, which the host does before it ends SDL. Thread-safe.
class Waker {
 public:
  void wake() {
    const std::lock_guard guard(lock_);
    if (!isOn_) return;
    SDL_Event event{};
    event.type = wakeEvent();
    SDL_PushEvent(&event);  // if the queue is full, the host is awake
  }
  void stop() {
    const std::lock_guard guard(lock_);
    isOn_ = false;
  }

 private:
  std::mutex lock_;
  bool isOn_ = true;
};

SurfaceSize sizeOf(SDL_Window* window, SDL_Renderer* renderer, double scale) {
  int width = 1;
  int height = 1;
  int windowWidth = 1;
  SurfaceSize size;
  SDL_GetWindowSize(window, &windowWidth, nullptr);
  SDL_GetWindowSizeInPixels(window, &width, &height);
  SDL_GetRendererOutputSize(renderer, &size.width, &size.height);
  size.scale = scale * width / windowWidth;
  return size;
}

SurfaceOptions completed(SurfaceOptions options, SDL_Window* window, SDL_Renderer* renderer) {
  options.size = sizeOf(window, renderer, options.size.scale);
  SDL_RendererInfo info{};
  if (SDL_GetRendererInfo(renderer, &info) == 0 && info.max_texture_width > 0) {
    options.maxTextureSize = std::min(options.maxTextureSize, info.max_texture_width);
  }
  if (!options.activationState) {
    options.activationState = [window] {
      const bool isHidden = (SDL_GetWindowFlags(window) & (SDL_WINDOW_HIDDEN | SDL_WINDOW_MINIMIZED)) != 0;
      return isHidden ? ActivationState::background : ActivationState::foregroundActive;
    };
  }
  if (!options.openURL) {
    options.openURL = [](const URL& url) {
      if (SDL_OpenURL(url.text().c_str()) != 0) platform::print("SDL cannot open " + url.text());
    };
  }
  return options;
}

}  // namespace

class SDLBanner::Implementation {
 public:
  Implementation(SDL_Window* ownWindow, SDL_Renderer* ownRenderer, SurfaceOptions options)
      : window(ownWindow),
        output(ownRenderer),
        scale(options.size.scale),
        surface(completed(std::move(options), window, output)),
        input(surface, window),
        renderer(output),
        mainQueue(std::make_shared<MainQueue>([shared = waker] { shared->wake(); })) {}

  SDL_Window* const window;
  SDL_Renderer* const output;
  const double scale;
  const std::shared_ptr<Waker> waker = std::make_shared<Waker>();
  ConsentSurface surface;
  SDLInput input;
  SDLRenderer renderer;
  const std::shared_ptr<MainQueue> mainQueue;
};

SDLBanner::SDLBanner(SDL_Window* window, SDL_Renderer* renderer, SurfaceOptions options)
    : implementation_(std::make_unique<Implementation>(window, renderer, std::move(options))) {}

SDLBanner::~SDLBanner() {
  implementation_->waker->stop();
}

bool SDLBanner::handle(const SDL_Event& event) {
  if (event.type == wakeEvent()) {
    implementation_->mainQueue->drain();
    return false;  // other banners may have jobs, too
  }
  if (event.type == SDL_RENDER_DEVICE_RESET) {
    implementation_->renderer.forgetTextures();
    implementation_->surface.forgetTextures();
    return false;
  }
  return implementation_->input.handle(event);
}

bool SDLBanner::draw() {
  implementation_->mainQueue->drain();  // the host may have flushed the events
  implementation_->surface.resize(
      sizeOf(implementation_->window, implementation_->output, implementation_->scale));
  return implementation_->renderer.draw(implementation_->surface.frame());
}

ConsentSurface& SDLBanner::surface() {
  return implementation_->surface;
}

const std::shared_ptr<MainQueue>& SDLBanner::mainQueue() const {
  return implementation_->mainQueue;
}

Platform makeSDLPlatform(SDLBanner& banner, const std::filesystem::path& store, const CurlOptions& options,
                         std::size_t maxCacheBytes) {
  Platform platform = makePosixPlatform(banner.mainQueue(), store, options, maxCacheBytes);
  banner.surface().addTo(platform);
  return platform;
}

}  // namespace TalvoConsentSDK
