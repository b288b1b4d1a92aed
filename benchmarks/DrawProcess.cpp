// A program with a window of SDL's, without a toolkit, which shows a banner on a surface, or none. Prints the
// processor time up to the first list and what the lists cost, then waits for a line or the end of its input.
// As hosts do that have a renderer of their own, it gives the surface fonts, so that the system's are not
// searched.
//
//   draw_process [URL SITE STORE]

#include <chrono>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>

#include <SDL.h>
#include <unistd.h>

#include "TalvoConsentSDK/TalvoConsentSDK.h"

#include "adapters/draw/ConsentSurface.h"
#include "adapters/posix/PosixPlatform.h"

using namespace TalvoConsentSDK;

namespace {

double processorMilliseconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

[[noreturn]] void waitAndEnd() {
  std::fflush(stdout);
  std::getchar();
  _exit(0);
}

}  // namespace

int main(int argc, char* argv[]) {
  SDL_Init(SDL_INIT_VIDEO);
  SDL_Window* const window = SDL_CreateWindow("benchmark", 0, 0, 780, 1688, 0);
  SDL_Renderer* const renderer = SDL_CreateRenderer(window, -1, SDL_RENDERER_SOFTWARE);
  SDL_RenderClear(renderer);
  SDL_RenderPresent(renderer);
  if (argc < 4) {
    std::printf("{\"processor_ms\": %.2f}\n", processorMilliseconds());
    waitAndEnd();
  }
  const auto queue = std::make_shared<MainQueue>();
  Platform platform = makePosixPlatform(queue, argv[3]);
  SurfaceOptions options{.size = {780, 1688, 2}};
  for (const std::string weight : {"Regular", "Medium", "SemiBold", "Bold"})
    options.fonts.push_back({"/usr/share/fonts/opentype/inter/Inter-" + weight + ".otf"});
  ConsentSurface surface(std::move(options));
  surface.addTo(platform);
  Platform::install(platform);
  const auto sdk = CookiesSDK::createInstance(argv[1], argv[2]);
  sdk->showBanner({}, {}, {}, [](const Error& error) { std::fprintf(stderr, "%s\n", error.what()); });

  double firstList = 0;
  std::size_t commands = 0;
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
  while (std::chrono::steady_clock::now() < end && (firstList == 0 || surface.needsFrame())) {
    queue->wait(std::chrono::milliseconds(16));
    queue->drain();
    commands = surface.frame().commands.size();
    if (firstList == 0 && commands > 0) firstList = processorMilliseconds();
  }
  const std::uint64_t revision = surface.frame().revision;
  std::size_t uploads = 0;
  for (int i = 0; i < 100; ++i) uploads += surface.frame().uploads.size();
  std::printf("{\"processor_ms\": %.2f, \"draw_calls\": %zu, \"still_uploads\": %zu, \"still_lists\": %d}\n",
              firstList, commands, uploads, static_cast<int>(surface.frame().revision - revision));
  waitAndEnd();
}
