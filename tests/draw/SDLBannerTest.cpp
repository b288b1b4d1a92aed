// The banner in a window of SDL: events, wake-ups and drawing.

#include <thread>

#include <SDL.h>

#include "adapters/sdl/SDLInput.h"
#include "adapters/sdl/SDLPlatform.h"

#include "tests/draw/SavedPicture.h"
#include "tests/draw/ShownSurface.h"

namespace TalvoConsentSDK {

namespace {

struct SDLWindow {
  SDLWindow() {
    EXPECT_EQ(SDL_CreateWindowAndRenderer(780, 1688, SDL_WINDOW_RESIZABLE, &window, &renderer), 0);
  }
  ~SDLWindow() {
    SDL_DestroyRenderer(renderer);
    SDL_DestroyWindow(window);
    SDL_Quit();
  }

  SDL_Event mouse(Uint32 type, const Point& place) const {
    SDL_Event event{};
    const auto x = static_cast<int>(place.x);
    const auto y = static_cast<int>(place.y);
    if (type == SDL_MOUSEMOTION) {
      event.motion = {type, 0, SDL_GetWindowID(window), 0, 0, x, y, 0, 0};
    } else {
      event.button = {type, 0, SDL_GetWindowID(window), 0, SDL_BUTTON_LEFT, 0, 1, 0, x, y};
    }
    return event;
  }
  SDL_Event finger(Uint32 type, const Point& place) const {
    SDL_Event event{};
    event.tfinger = {type,
                     0,
                     1,
                     3,
                     static_cast<float>(place.x / 780),
                     static_cast<float>(place.y / 1688),
                     0,
                     0,
                     1,
                     SDL_GetWindowID(window)};
    return event;
  }
  SDL_Event key(Uint32 type, SDL_Keycode code, Uint16 modifiers = 0) const {
    SDL_Event event{};
    event.key = {type, 0, SDL_GetWindowID(window), 0, 0, 0, 0, {SDL_SCANCODE_UNKNOWN, code, modifiers, 0}};
    return event;
  }

  SDL_Window* window = nullptr;
  SDL_Renderer* renderer = nullptr;
};

SDL_Event stick(Sint16 value) {
  SDL_Event event{};
  event.caxis = {SDL_CONTROLLERAXISMOTION, 0, 0, SDL_CONTROLLER_AXIS_LEFTY, 0, 0, 0, value, 0};
  return event;
}

SDL_Event acceptButton(Uint32 type) {
  SDL_Event event{};
  event.cbutton = {type, 0, 0, SDL_CONTROLLER_BUTTON_A, 0, 0, 0};
  return event;
}

using Events = std::vector<SDL_Event>;

// Each kind of input presses the button that is at `place` and has the focus.
const struct Way {
  const char* name;
  Events (*events)(const SDLWindow& window, Point place);
} ways[] = {
    {"mouse",
     [](const SDLWindow& w, Point place) {
       return Events{w.mouse(SDL_MOUSEMOTION, place), w.mouse(SDL_MOUSEBUTTONDOWN, place),
                     w.mouse(SDL_MOUSEBUTTONUP, place)};
     }},
    {"finger",
     [](const SDLWindow& w, Point place) {
       return Events{w.finger(SDL_FINGERDOWN, place), w.finger(SDL_FINGERMOTION, place),
                     w.finger(SDL_FINGERUP, place)};
     }},
    {"finger_and_mouse_in_a_logical_size",  // as SDL reports the first finger
     [](const SDLWindow& w, Point place) {
       SDL_RenderSetLogicalSize(w.renderer, 390, 844);
       const Point half{place.x / 2, place.y / 2};
       return Events{w.mouse(SDL_MOUSEBUTTONDOWN, half), w.finger(SDL_FINGERDOWN, place),
                     w.mouse(SDL_MOUSEBUTTONUP, half), w.finger(SDL_FINGERUP, place)};
     }},
    {"finger_in_a_logical_size",
     [](const SDLWindow& w, Point place) {
       SDL_RenderSetLogicalSize(w.renderer, 390, 844);
       return Events{w.finger(SDL_FINGERDOWN, place), w.finger(SDL_FINGERUP, place)};
     }},
    {"keys",
     [](const SDLWindow& w, Point) {
       return Events{w.key(SDL_KEYDOWN, SDLK_TAB),
                     w.key(SDL_KEYUP, SDLK_TAB),
                     w.key(SDL_KEYDOWN, SDLK_TAB, KMOD_LSHIFT),
                     w.key(SDL_KEYUP, SDLK_TAB, KMOD_LSHIFT),
                     w.key(SDL_KEYDOWN, SDLK_RETURN),
                     w.key(SDL_KEYUP, SDLK_RETURN)};
     }},
    {"controller",
     [](const SDLWindow&, Point) {
       return Events{stick(-32768),
                     stick(0),
                     stick(32767),
                     stick(0),
                     acceptButton(SDL_CONTROLLERBUTTONDOWN),
                     acceptButton(SDL_CONTROLLERBUTTONUP)};
     }},
};

class SDLInputTest : public TestWithParam<Way> {};
INSTANTIATE_TEST_SUITE_P(All, SDLInputTest, ValuesIn(ways), byName);

TEST_P(SDLInputTest, OperatesTheBanner) {
  const SDLWindow window;
  ShownSurface shown;
  shown.settle();
  const auto* const wanted = shown.find(Role::button, "Manage preferences");
  ASSERT_TRUE(wanted);
  const Point place = wanted->frame.center();
  EXPECT_TRUE(shown.surface.perform(wanted->id, SurfaceAction::focus));
  SDLInput input(shown.surface, window.window);
  const Events events = GetParam().events(window, place);
  for (const SDL_Event& each : events) EXPECT_TRUE(input.handle(each)) << each.type;
  EXPECT_FALSE(shown.find(Role::button, "Manage preferences")) << "the preferences are open";

  shown.presenter->dismiss();
  shown.settle();
  for (const SDL_Event& each : events) EXPECT_FALSE(input.handle(each)) << each.type;
}

TEST(SDLInputTest, ScrollsWithTheWheelAndLeavesOtherWindowsAlone) {
  const SDLWindow window;
  ShownSurface shown({.settings = {.textScale = 3}});
  shown.settle();
  SDLInput input(shown.surface, window.window);
  const auto place = [&] { return shown.surface.accessibleElements()[2].frame.center(); };
  SDL_Event wheel{};
  wheel.wheel = {SDL_MOUSEWHEEL, 0, SDL_GetWindowID(window.window), 0, 0, -1, 0, 0, -1, 0, 0};
  const Point before = place();
  EXPECT_TRUE(input.handle(window.mouse(SDL_MOUSEMOTION, {390, 900})));
  EXPECT_TRUE(input.handle(wheel));
  shown.settle();
  EXPECT_LT(place().y, before.y);
  wheel.wheel.windowID += 1;
  EXPECT_FALSE(input.handle(wheel));
}

class SDLBannerTest : public ::testing::Test {
 public:
  SDLBannerTest() {
    Platform platform;
    platform.urlSession = fakes.session;
    platform.mainActor = banner->mainQueue();
    banner->surface().addTo(platform);
    Platform::install(platform);
    showSite(*presenter, "en");
  }
  ~SDLBannerTest() override { banner.reset(); }

  // Red, green and blue of a frame, which the banner covers in part.
  Bytes picture() const {
    int width = 0;
    int height = 0;
    SDL_GetRendererOutputSize(window.renderer, &width, &height);
    SDL_SetRenderDrawColor(window.renderer, 0, 0, 255, 255);
    SDL_RenderClear(window.renderer);
    EXPECT_TRUE(banner->draw()) << SDL_GetError();
    Bytes bytes(static_cast<std::size_t>(width * height * 3));
    SDL_RenderReadPixels(window.renderer, nullptr, SDL_PIXELFORMAT_RGB24, bytes.data(), width * 3);
    return bytes;
  }

  SDLWindow window;
  MemoryPlatform fakes;
  std::unique_ptr<SDLBanner> banner =
      std::make_unique<SDLBanner>(window.window, window.renderer,
                                  SurfaceOptions{.size = {.scale = 2}, .settings = {.reducesMotion = true}});
  std::shared_ptr<ConsentBannerPresenter> presenter = std::make_shared<ConsentBannerPresenter>();
};

TEST_F(SDLBannerTest, DrawsEverythingAgainAfterAResetAndAResize) {
  SDL_Event reset{};
  reset.type = SDL_RENDER_DEVICE_RESET;
  for (const int width : {780, 600, 1000}) {
    SDL_SetWindowSize(window.window, width, 1688);
    SDL_PumpEvents();
    const auto before = picture();
    savePicture("sdl_banner_" + std::to_string(width), width, 1688, before);
    std::size_t covered = 0;  // the frame behind the card has no green
    for (std::size_t i = 1; i < before.size(); i += 3) covered += before[i] > 10 ? 1 : 0;
    EXPECT_GT(static_cast<double>(covered) * 3 / static_cast<double>(before.size()), 0.3);
    banner->handle(reset);
    EXPECT_TRUE(picture() == before);
  }
}

TEST_F(SDLBannerTest, WakesAHostThatWaits) {
  SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
  std::optional<std::thread::id> ranOn;
  const auto queue = banner->mainQueue();
  std::thread([&] { queue->post([&] { ranOn = std::this_thread::get_id(); }); }).join();
  for (SDL_Event event; !ranOn && SDL_WaitEventTimeout(&event, 0);) banner->handle(event);
  EXPECT_EQ(ranOn, std::this_thread::get_id());

  banner.reset();
  queue->post([] {});
  EXPECT_FALSE(SDL_HasEvents(SDL_USEREVENT, SDL_LASTEVENT)) << "SDL may have ended";
}

TEST_F(SDLBannerTest, CountsAHiddenWindowAsInTheBackground) {
  const auto state = [] {
    return Platform::current().application->connectedScenes().front()->activationState();
  };
  EXPECT_EQ(state(), ActivationState::foregroundActive);
  SDL_HideWindow(window.window);
  EXPECT_EQ(state(), ActivationState::background);
}

}  // namespace
}  // namespace TalvoConsentSDK
