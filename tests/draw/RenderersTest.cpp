// The renderers draw the same picture, and leave the host's settings as they are.

#include <SDL.h>

#include "adapters/sdl/SDLRenderer.h"

#include "tests/draw/GLScreen.h"
#include "tests/draw/ShownSurface.h"

namespace TalvoConsentSDK {

namespace {

constexpr int width = 780;
constexpr int height = 1688;

// The share of the bytes that differ by more than 2.
double difference(const Bytes& a, const Bytes& b) {
  if (a.size() != b.size()) return 1;
  int count = 0;
  for (std::size_t i = 0; i < a.size(); ++i) count += std::abs(a[i] - b[i]) > 2 ? 1 : 0;
  return count / static_cast<double>(a.size());
}

// SDL's software renderer on a picture in memory.
struct SDLScreen {
  ~SDLScreen() {
    renderer.reset();
    SDL_DestroyRenderer(output);
    SDL_FreeSurface(surface);
  }

  Bytes draw(const DrawList& list) const {
    SDL_SetRenderDrawColor(output, 204, 209, 214, 255);
    SDL_RenderClear(output);
    EXPECT_TRUE(renderer->draw(list)) << SDL_GetError();
    Bytes bytes(std::size_t{width} * height * 3);
    SDL_RenderFlush(output);
    SDL_ConvertPixels(width, height, SDL_PIXELFORMAT_ARGB8888, surface->pixels, surface->pitch,
                      SDL_PIXELFORMAT_RGB24, bytes.data(), width * 3);
    return bytes;
  }

  SDL_Surface* const surface = SDL_CreateRGBSurfaceWithFormat(0, width, height, 32, SDL_PIXELFORMAT_ARGB8888);
  SDL_Renderer* const output = SDL_CreateSoftwareRenderer(surface);
  std::unique_ptr<SDLRenderer> renderer = std::make_unique<SDLRenderer>(output);
};

void press(ShownSurface& shown, const std::string& name) {
  const SurfaceElement* const button = shown.find(Role::button, name);
  ASSERT_TRUE(button);
  EXPECT_TRUE(shown.surface.perform(button->id, SurfaceAction::activate));
}

// The pictures are in the tests' temporary folder.
class RenderersTest : public TestWithParam<std::array<std::string, 5>> {};
INSTANTIATE_TEST_SUITE_P(All, RenderersTest, ValuesIn(tableOf<5>("draw/screens.txt")),
                         [](const auto& each) { return each.param[0]; });

TEST_P(RenderersTest, DrawTheSamePicture) {
  const auto& [name, language, pressed, scale, contrast] = GetParam();
  const SurfaceSettings settings{.textScale = std::stod(scale), .highContrast = contrast == "high"};
  ShownSurface shown({.settings = settings}, language);
  GLScreen gl(width, height);
  const SDLScreen sdl;
  Bytes byGL;
  Bytes bySDL;
  for (const bool isPressed : {false, true}) {
    if (isPressed && !pressed.empty()) press(shown, pressed);
    do {  // each list changes a part of the textures
      shown.frame();
      byGL = gl.draw(shown.list);
      bySDL = sdl.draw(shown.list);
    } while (shown.surface.needsFrame());
  }
  savePicture("gles_" + name, width, height, byGL);
  savePicture("sdl_" + name, width, height, bySDL);
  shown.screen.draw(shown.list);
  Bytes exact;
  for (int i = 0; i < width * height; ++i) {
    for (const float each : shown.screen.at(i % width, i / width)) {
      exact.push_back(static_cast<std::uint8_t>(std::lround(each * 255)));
    }
  }
  EXPECT_LE(difference(byGL, exact), 0.001);
  EXPECT_LE(difference(byGL, bySDL), 0.001);
}

TEST(GLESRendererTest, DrawsEverythingAfterAResizeAndInANewContext) {
  ShownSurface shown;
  GLScreen gl(width, height);
  for (int i = 0; i < 6; ++i) {  // the banner fades in
    shown.frame();
    gl.draw(shown.list);
  }
  shown.surface.resize({height, width, 2});
  gl.resize(height, width);
  const Bytes resized = gl.draw(shown.surface.frame());
  savePicture("gles_resized", height, width, resized);
  GLScreen fresh(height, width);
  shown.surface.forgetTextures();
  EXPECT_EQ(difference(fresh.draw(shown.surface.frame()), resized), 0);
  gl.loseContext();
  gl.renderer->forgetContext();
  shown.surface.forgetTextures();
  EXPECT_EQ(difference(gl.draw(shown.surface.frame()), resized), 0);
}

TEST(GLESRendererTest, DrawsTwoSurfaces) {
  const SurfaceOptions still{.settings = {.reducesMotion = true}};  // SDL rounds differently in a fade
  ShownSurface first(still);
  ShownSurface second(still, "ar");
  GLScreen firstScreen(width, height);
  GLScreen secondScreen(width, height);
  const SDLScreen firstExpected;
  const SDLScreen secondExpected;
  for (int i = 0; i < 5; ++i) {
    if (i == 3) press(second, "إدارة التفضيلات");
    first.frame();
    second.frame();
    EXPECT_LE(difference(firstScreen.draw(first.list), firstExpected.draw(first.list)), 0.001);
    EXPECT_LE(difference(secondScreen.draw(second.list), secondExpected.draw(second.list)), 0.001);
  }
}

TEST(GLESRendererTest, LeavesTheContextAsItWas) {
  ShownSurface shown({.settings = {.reducesMotion = true}});
  GLScreen gl(width, height);
  gl.multisample();
  Bytes expected;
  for (int i = 0; i < 3; ++i) {  // the logo comes later
    shown.frame();
    expected = gl.draw(shown.list);
  }
  glActiveTexture(GL_TEXTURE3);
  glViewport(1, 2, 3, 4);
  glScissor(5, 6, 7, 8);
  glBlendEquationSeparate(GL_FUNC_SUBTRACT, GL_FUNC_REVERSE_SUBTRACT);
  glBlendFuncSeparate(GL_ONE, GL_ZERO, GL_DST_ALPHA, GL_SRC_COLOR);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 4096);
  glPixelStorei(GL_UNPACK_SKIP_ROWS, 3);
  glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_FALSE);
  shown.surface.forgetTextures();  // so that there are uploads
  shown.frame();
  gl.renderer->forgetContext();
  for (const int each :
       {GL_CULL_FACE, GL_DEPTH_TEST, GL_STENCIL_TEST, GL_SAMPLE_COVERAGE, GL_SAMPLE_ALPHA_TO_COVERAGE})
    glEnable(static_cast<GLenum>(each));
  glSampleCoverage(0.5F, GL_FALSE);
  const auto state = [] {
    std::vector<std::array<GLint, 4>> values;
    for (const int each : {GL_CURRENT_PROGRAM,
                           GL_ARRAY_BUFFER_BINDING,
                           GL_TEXTURE_BINDING_2D,
                           GL_ACTIVE_TEXTURE,
                           GL_UNPACK_ALIGNMENT,
                           GL_UNPACK_ROW_LENGTH,
                           GL_UNPACK_SKIP_ROWS,
                           GL_VIEWPORT,
                           GL_SCISSOR_BOX,
                           GL_BLEND_EQUATION_RGB,
                           GL_BLEND_EQUATION_ALPHA,
                           GL_BLEND_SRC_RGB,
                           GL_BLEND_DST_RGB,
                           GL_BLEND_SRC_ALPHA,
                           GL_BLEND_DST_ALPHA,
                           GL_BLEND,
                           GL_SCISSOR_TEST,
                           GL_CULL_FACE,
                           GL_DEPTH_TEST,
                           GL_STENCIL_TEST,
                           GL_DITHER,
                           GL_SAMPLE_COVERAGE,
                           GL_SAMPLE_ALPHA_TO_COVERAGE,
                           GL_COLOR_WRITEMASK}) {
      glGetIntegerv(static_cast<GLenum>(each), values.emplace_back().data());
    }
    return values;
  };
  const auto before = state();
  EXPECT_EQ(difference(gl.draw(shown.list), expected), 0);
  EXPECT_EQ(state(), before);
}

TEST(SDLRendererTest, LeavesTheRendererAsItWas) {
  ShownSurface shown({.settings = {.reducesMotion = true}});
  const SDLScreen sdl;
  shown.frame();
  const Bytes expected = sdl.draw(shown.list);
  const auto state = [&] {
    SDL_Rect viewport{};
    SDL_Rect clip{};
    int logicalWidth = 0;
    float scale = 0;
    SDL_RenderGetViewport(sdl.output, &viewport);
    SDL_RenderGetClipRect(sdl.output, &clip);
    SDL_RenderGetLogicalSize(sdl.output, &logicalWidth, nullptr);
    SDL_RenderGetScale(sdl.output, nullptr, &scale);
    // What SDL reports is rounded, so the place where the host draws counts, too.
    SDL_SetRenderDrawColor(sdl.output, 0, 0, 0, 255);
    SDL_RenderClear(sdl.output);
    SDL_SetRenderDrawColor(sdl.output, 255, 0, 0, 255);
    SDL_RenderFillRect(sdl.output, nullptr);
    SDL_RenderFlush(sdl.output);
    const auto* const pixels = static_cast<const std::uint32_t*>(sdl.surface->pixels);
    const auto count = std::count(pixels, pixels + width * height, 0xFFFF0000);
    return std::tuple(viewport.x, viewport.h, clip.x, clip.h, logicalWidth, scale, count);
  };
  const SDL_Rect rect{11, 21, 301, 401};
  const std::function<void()> settings[] = {
      [&] { SDL_RenderSetScale(sdl.output, 1.5, 1.25), SDL_RenderSetViewport(sdl.output, &rect); },
      [&] { SDL_RenderSetClipRect(sdl.output, &rect); },
      [&] { SDL_RenderSetScale(sdl.output, 1, 1), SDL_RenderSetViewport(sdl.output, &rect); },
      [&] { SDL_RenderSetClipRect(sdl.output, &rect), SDL_RenderSetScale(sdl.output, 1.75, 1.2F); },
      [&] { SDL_RenderSetViewport(sdl.output, nullptr), SDL_RenderSetClipRect(sdl.output, nullptr); },
      [&] { SDL_RenderSetLogicalSize(sdl.output, 321, 240); },
      [&] { SDL_RenderSetViewport(sdl.output, &rect); },
      [&] { SDL_RenderSetLogicalSize(sdl.output, width / 2, width); },
  };
  for (const auto& change : settings) {
    change();
    const auto before = state();
    EXPECT_EQ(difference(sdl.draw(shown.surface.frame()), expected), 0);
    EXPECT_EQ(state(), before);
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
