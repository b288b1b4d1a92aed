// The banner in a window of SDL: events, wake-ups and drawing.

#include <map>
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
    id = SDL_GetWindowID(window);
  }
  ~SDLWindow() {
    SDL_DestroyRenderer(renderer);
    SDL_DestroyWindow(window);
    SDL_Quit();
  }

  SDL_Window* window = nullptr;
  SDL_Renderer* renderer = nullptr;
  Uint32 id = 0;
};

const std::map<std::string, Uint32> types{{"key", SDL_KEYDOWN},
                                          {"key-up", SDL_KEYUP},
                                          {"motion", SDL_MOUSEMOTION},
                                          {"mouse", SDL_MOUSEBUTTONDOWN},
                                          {"mouse-up", SDL_MOUSEBUTTONUP},
                                          {"wheel", SDL_MOUSEWHEEL},
                                          {"finger", SDL_FINGERDOWN},
                                          {"drag", SDL_FINGERMOTION},
                                          {"finger-up", SDL_FINGERUP},
                                          {"stick", SDL_CONTROLLERAXISMOTION},
                                          {"pad", SDL_CONTROLLERBUTTONDOWN},
                                          {"pad-up", SDL_CONTROLLERBUTTONUP}};

// The event of a step such as "wheel -1", at a place that is a share of the window.
SDL_Event made(const std::string& step, Uint32 window, const Point& share, const Point& mouse) {
  const Texts parts = words(step + " 0 0");
  const Uint32 type = types.at(parts[0]);
  const bool isKey = type == SDL_KEYDOWN || type == SDL_KEYUP;
  const int code = isKey ? SDL_GetKeyFromName(parts[1].c_str()) : std::stoi(parts[1]);
  const auto modifiers = static_cast<Uint16>(parts[2] == "shift" ? KMOD_LSHIFT : KMOD_NONE);
  const int x = static_cast<int>(share.x * mouse.x);
  const int y = static_cast<int>(share.y * mouse.y);
  SDL_Event event{};
  switch (type) {
    case SDL_KEYDOWN:
    case SDL_KEYUP:
      event.key = {0, 0, window, 0, 0, 0, 0, {SDL_SCANCODE_UNKNOWN, code, modifiers, 0}};
      break;
    case SDL_MOUSEMOTION:
      event.motion = {0, 0, window, 0, 0, x, y, 0, 0};
      break;
    case SDL_MOUSEWHEEL:
      event.wheel = {0, 0, window, 0, 0, code, 0, 0, static_cast<float>(code), 0, 0};
      break;
    case SDL_CONTROLLERAXISMOTION:
      event.caxis = {0, 0, 0, SDL_CONTROLLER_AXIS_LEFTY, 0, 0, 0, static_cast<Sint16>(code), 0};
      break;
    case SDL_CONTROLLERBUTTONDOWN:
    case SDL_CONTROLLERBUTTONUP:
      event.cbutton = {0, 0, 0, SDL_CONTROLLER_BUTTON_A, 0, 0, 0};
      break;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
      event.button = {0, 0, window, 0, SDL_BUTTON_LEFT, 0, 1, 0, x, y};
      break;
    default:
      event.tfinger = {0, 0, 1, 3, static_cast<float>(share.x), static_cast<float>(share.y), 0, 0, 1, window};
  }
  event.type = type;
  return event;
}

class SDLInputTest : public TestWithParam<std::array<std::string, 3>> {};
INSTANTIATE_TEST_SUITE_P(All, SDLInputTest, ValuesIn(tableOf<3>("draw/inputs.txt")), byFirstCell);

TEST_P(SDLInputTest, OperatesTheBanner) {
  const auto& [name, logical, steps] = GetParam();
  const int logicalWidth = std::stoi(logical);
  const SDLWindow window;
  SDL_RenderSetLogicalSize(window.renderer, logicalWidth, 844);
  const Point units = logicalWidth > 0 ? Point{390, 844} : Point{780, 1688};  // of the mouse
  ShownSurface shown;
  shown.settle();
  const auto* const wanted = shown.find(Role::button, "Manage preferences");
  ASSERT_TRUE(wanted);
  const Point share{wanted->frame.center().x / 780, wanted->frame.center().y / 1688};
  EXPECT_TRUE(shown.surface.perform(wanted->id, SurfaceAction::focus));
  SDLInput input(shown.surface, window.window);
  for (const std::string& each : split(steps, ';'))
    EXPECT_TRUE(input.handle(made(each, window.id, share, units))) << each;
  EXPECT_FALSE(shown.find(Role::button, "Manage preferences")) << "the preferences are open";

  shown.presenter->dismiss();
  shown.settle();
  for (const std::string& each : split(steps, ';'))
    EXPECT_FALSE(input.handle(made(each, window.id, share, units))) << each;
}

TEST(SDLInputTest, ScrollsWithTheWheelAndLeavesOtherWindowsAlone) {
  const SDLWindow window;
  ShownSurface shown({.settings = {.textScale = 3}});
  shown.settle();
  SDLInput input(shown.surface, window.window);
  const auto top = [&] { return shown.surface.accessibleElements()[2].frame.y; };
  const double before = top();
  const auto handle = [&](const std::string& each, Uint32 id) {
    return input.handle(made(each, id, {0.5, 0.5}, {780, 1688}));
  };
  EXPECT_TRUE(handle("motion", window.id));
  EXPECT_TRUE(handle("wheel -1", window.id));
  shown.settle();
  EXPECT_LT(top(), before);
  EXPECT_FALSE(handle("wheel -1", window.id + 1));
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
