// A game that draws with SDL's renderer. Its stars move behind the banner; its ball waits while the banner is
// modal.
//
//   game URL [STORE [PICTURE]]
//
// With the name of a BMP file, it plays alone: it saves a frame with the banner, accepts everything, and ends
// when analytics start.

#include <cmath>
#include <cstdio>

#include <SDL.h>
#include <TalvoConsentSDK/TalvoConsentSDK.h>
#include <adapters/sdl/SDLPlatform.h>

using namespace TalvoConsentSDK;

namespace {

void drawScene(SDL_Renderer* renderer, double time, double timeOfBall) {
  SDL_SetRenderDrawColor(renderer, 24, 20, 60, 255);
  SDL_RenderClear(renderer);
  SDL_SetRenderDrawColor(renderer, 255, 190, 90, 255);
  for (int i = 0; i < 60; ++i) {
    const SDL_Rect star{i * 61 % 390, static_cast<int>(i * 97 + time * (20 + i % 5 * 15)) % 844, 3, 3};
    SDL_RenderFillRect(renderer, &star);
  }
  const SDL_Rect ball{175, 240 - static_cast<int>(160 * std::abs(std::sin(timeOfBall * 2))), 40, 40};
  SDL_RenderFillRect(renderer, &ball);
}

void savePicture(SDL_Renderer* renderer, const char* file) {
  SDL_Surface* const picture = SDL_CreateRGBSurfaceWithFormat(0, 390, 844, 24, SDL_PIXELFORMAT_BGR24);
  SDL_RenderReadPixels(renderer, nullptr, SDL_PIXELFORMAT_BGR24, picture->pixels, picture->pitch);
  SDL_SaveBMP(picture, file);
  SDL_FreeSurface(picture);
}

// Here a game passes the elements on to the system's interface for assistive technology, and what the user
// does there to `perform` (docs/platforms.md). This one prints the elements, and acts for a user who accepts.
void describe(ConsentSurface& surface, bool isAccepting) {
  std::uint64_t accepted = 0;
  for (const SurfaceElement& each : surface.accessibleElements()) {
    std::printf("element %d: %s\n", static_cast<int>(each.role), each.name.c_str());
    if (each.role == view::Role::button && each.name == "Accept all") accepted = each.id;
  }
  if (isAccepting) surface.perform(accepted, SurfaceAction::activate);
}

int play(SDL_Window* window, SDL_Renderer* renderer, const char* url, const char* store,
         const char* picture) {
  SDLBanner banner(window, renderer);
  Platform::install(makeSDLPlatform(banner, store ? store : defaultStoreFile()));
  const auto sdk = CookiesSDK::createInstance(url, "demo");
  int status = -1;  // while the game goes on
  const auto start = [&] { status = picture ? 0 : -1, std::puts("analytics: started"); };
  const auto stop = [] { std::puts("analytics: stopped"); };
  const Subscription analytics = sdk->gate().on(ConsentCategory::statistics, start, stop);
  sdk->showBanner(
      BannerHandlers{.onError = [&](const Error& error) { status = 1, std::puts(error.what()); }});

  ConsentSurface& surface = banner.surface();
  double time = 0;
  double timeOfBall = 0;
  for (std::uint64_t described = 0; status < 0; SDL_Delay(10)) {
    for (SDL_Event event; SDL_PollEvent(&event) != 0;) {
      if (!banner.handle(event) && event.type == SDL_QUIT) status = 0;
    }
    time += 0.016;
    if (!surface.isModal()) timeOfBall += 0.016;
    drawScene(renderer, time, timeOfBall);
    if (!banner.draw()) std::puts(SDL_GetError());
    if (surface.isShowing() && !surface.needsFrame() && described != surface.accessibleRevision()) {
      described = surface.accessibleRevision();
      if (picture) savePicture(renderer, picture);
      describe(surface, picture != nullptr);
    }
    SDL_RenderPresent(renderer);
  }
  return status;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 2) return std::fprintf(stderr, "usage: game URL [STORE [PICTURE]]\n"), 2;
  SDL_Init(SDL_INIT_VIDEO);
  SDL_Window* const window = SDL_CreateWindow("Game", 0, 0, 390, 844, 0);
  SDL_Renderer* const renderer = SDL_CreateRenderer(window, -1, 0);
  if (!renderer) return std::fprintf(stderr, "%s\n", SDL_GetError()), 1;
  const int status = play(window, renderer, arguments[1], arguments[2], count > 3 ? arguments[3] : nullptr);
  SDL_DestroyRenderer(renderer);
  SDL_DestroyWindow(window);
  SDL_Quit();
  return status;
}
