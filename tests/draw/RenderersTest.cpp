// The renderers draw the same picture, and leave the host's settings as they are.

#include <SDL.h>

#include "adapters/sdl/SDLRenderer.h"

#include "tests/draw/GLScreen.h"
#include "tests/draw/SavedPicture.h"
#include "tests/draw/ShownSurface.h"

namespace TalvoConsentSDK {

namespace {

constexpr int width = 780;
constexpr int height = 1688;

using Bytes = std::vector<std::uint8_t>;

// The share of the bytes that differ by more than 2.
double difference(const Bytes& a, const Bytes& b) {
  if (a.size() != b.size()) return 1;
  std::size_t count = 0;
  for (std::size_t i = 0; i < a.size(); ++i) count += std::abs(a[i] - b[i]) > 2 ? 1 : 0;
  return static_cast<double>(count) / static_cast<double>(a.size());
}

Bytes bytesOf(const Rasterizer& screen) {
  Bytes bytes;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (const float each : screen.at(x, y))
        bytes.push_back(static_cast<std::uint8_t>(std::lround(each * 255)));
    }
  }
  return bytes;
}

void press(ShownSurface& shown, const std::string& name) {
  const SurfaceElement* const button = shown.find(Role::button, name);
  ASSERT_TRUE(button);
  EXPECT_TRUE(shown.surface.perform(button->id, SurfaceAction::activate));
}

// SDL's software renderer on a picture in memory.
class SDLScreen {
 public:
  SDLScreen()
      : surface_(SDL_CreateRGBSurfaceWithFormat(0, width, height, 32, SDL_PIXELFORMAT_ARGB8888)),
        output(SDL_CreateSoftwareRenderer(surface_)),
        renderer_(std::make_unique<SDLRenderer>(output)) {}
  ~SDLScreen() {
    renderer_.reset();
    SDL_DestroyRenderer(output);
    SDL_FreeSurface(surface_);
  }

  Bytes draw(const DrawList& list) {
    SDL_SetRenderDrawColor(output, 204, 209, 214, 255);
    SDL_RenderClear(output);
    EXPECT_TRUE(renderer_->draw(list)) << SDL_GetError();
    SDL_RenderFlush(output);
    Bytes bytes(std::size_t{width} * height * 3);
    SDL_ConvertPixels(width, height, SDL_PIXELFORMAT_ARGB8888, surface_->pixels, surface_->pitch,
                      SDL_PIXELFORMAT_RGB24, bytes.data(), width * 3);
    return bytes;
  }

 private:
  SDL_Surface* const surface_;

 public:
  SDL_Renderer* const output;

 private:
  std::unique_ptr<SDLRenderer> renderer_;
};

// The pictures are in the tests' temporary folder, so that they can be looked at.
const struct Screen {
  const char* name;
  std::string language = "en";
  std::string tapped = "";
  SurfaceSettings settings = {};
  double toleranceOfSDL = 0.001;
} screens[] = {
    {"main"},
    {"main_ar", "ar"},
    {"preferences", "en", "Manage preferences"},
    {"preferences_ar", "ar", "إدارة التفضيلات"},
    // SDL's software renderer rounds down in every step, which adds up where a list fades out.
    {"large_de", "de", "Einstellungen verwalten", {.textScale = 2}, 0.003},
    {"contrast", "en", "Manage preferences", {.highContrast = true}},
};

class RenderersTest : public TestWithParam<Screen> {};
INSTANTIATE_TEST_SUITE_P(All, RenderersTest, ValuesIn(screens), byName);

TEST_P(RenderersTest, DrawTheSamePicture) {
  const auto& [name, language, tapped, settings, toleranceOfSDL] = GetParam();
  ShownSurface shown({.settings = settings}, language);
  GLScreen gl(width, height);
  SDLScreen sdl;
  Bytes byGL;
  Bytes bySDL;
  // Each list changes a part of the textures.
  const auto settle = [&] {
    do {
      shown.frame();
      byGL = gl.draw(shown.list);
      bySDL = sdl.draw(shown.list);
    } while (shown.surface.needsFrame());
  };
  settle();
  if (!tapped.empty()) press(shown, tapped);
  settle();
  savePicture("gles_"s + name, width, height, byGL);
  savePicture("sdl_"s + name, width, height, bySDL);
  shown.screen.draw(shown.list);
  EXPECT_LE(difference(byGL, bytesOf(shown.screen)), 0.001);
  EXPECT_LE(difference(byGL, bySDL), toleranceOfSDL);
}

TEST(GLESRendererTest, DrawsEverythingAgainInANewContext) {
  ShownSurface shown;
  GLScreen gl(width, height);
  shown.settle();
  shown.surface.forgetTextures();
  const Bytes before = gl.draw(shown.surface.frame());
  gl.loseContext();
  gl.renderer->forgetContext();
  shown.surface.forgetTextures();
  EXPECT_EQ(difference(gl.draw(shown.surface.frame()), before), 0);
}

TEST(GLESRendererTest, DrawsEverythingAfterAResizeInMidAnimation) {
  ShownSurface shown;
  GLScreen gl(width, height);
  for (int i = 0; i < 6; ++i) {
    shown.frame();
    gl.draw(shown.list);
  }
  shown.surface.resize({height, width, 2});
  EXPECT_TRUE(shown.surface.needsFrame());
  gl.resize(height, width);
  const Bytes resized = gl.draw(shown.surface.frame());
  shown.surface.forgetTextures();
  GLScreen fresh(height, width);
  savePicture("gles_resized", height, width, resized);
  EXPECT_EQ(difference(resized, fresh.draw(shown.surface.frame())), 0);
}

TEST(GLESRendererTest, DrawsTwoSurfaces) {
  const SurfaceOptions still{.settings = {.reducesMotion = true}};  // SDL rounds differently in a fade
  ShownSurface first(still);
  ShownSurface second(still, "ar");
  GLScreen firstScreen(width, height);
  GLScreen secondScreen(width, height);
  SDLScreen firstExpected;
  SDLScreen secondExpected;
  for (int i = 0; i < 5; ++i) {
    if (i == 3) press(second, "إدارة التفضيلات");
    first.frame();
    second.frame();
    EXPECT_LE(difference(firstScreen.draw(first.list), firstExpected.draw(first.list)), 0.001);
    EXPECT_LE(difference(secondScreen.draw(second.list), secondExpected.draw(second.list)), 0.001);
  }
}

TEST(GLESRendererTest, LeavesTheContextAsItWas) {
  ShownSurface shown;
  GLScreen gl(width, height);
  shown.settle();
  const Bytes expected = [&] {
    shown.surface.forgetTextures();
    return gl.draw(shown.surface.frame());
  }();
  GLuint names[2] = {};
  glGenBuffers(1, &names[0]);
  glGenTextures(1, &names[1]);
  glBindBuffer(GL_ARRAY_BUFFER, names[0]);
  glBindTexture(GL_TEXTURE_2D, names[1]);
  glActiveTexture(GL_TEXTURE3);
  glViewport(1, 2, 3, 4);
  glScissor(5, 6, 7, 8);
  glBlendEquationSeparate(GL_FUNC_SUBTRACT, GL_FUNC_REVERSE_SUBTRACT);
  glBlendFuncSeparate(GL_ONE, GL_ZERO, GL_DST_ALPHA, GL_SRC_COLOR);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
  for (const int name : {GL_CULL_FACE, GL_DEPTH_TEST, GL_STENCIL_TEST}) glEnable(static_cast<GLenum>(name));
  const auto state = [] {
    std::vector<GLint> values;
    for (const int name :
         {GL_CURRENT_PROGRAM, GL_ARRAY_BUFFER_BINDING, GL_TEXTURE_BINDING_2D, GL_ACTIVE_TEXTURE,
          GL_UNPACK_ALIGNMENT, GL_VIEWPORT, GL_SCISSOR_BOX, GL_BLEND_EQUATION_RGB, GL_BLEND_EQUATION_ALPHA,
          GL_BLEND_SRC_RGB, GL_BLEND_DST_RGB, GL_BLEND_SRC_ALPHA, GL_BLEND_DST_ALPHA, GL_BLEND,
          GL_SCISSOR_TEST, GL_CULL_FACE, GL_DEPTH_TEST, GL_STENCIL_TEST, GL_DITHER}) {
      GLint value[4] = {};
      glGetIntegerv(static_cast<GLenum>(name), value);
      values.insert(values.end(), value, value + 4);
    }
    return values;
  };
  const std::vector<GLint> before = state();
  EXPECT_EQ(difference(gl.draw(shown.surface.frame()), expected), 0);
  EXPECT_EQ(state(), before);
}

TEST(SDLRendererTest, LeavesTheRendererAsItWas) {
  ShownSurface shown;
  SDLScreen sdl;
  shown.settle();
  shown.surface.forgetTextures();
  const Bytes expected = sdl.draw(shown.surface.frame());
  const SDL_Rect viewport{10, 20, 300, 400};
  const SDL_Rect clip{1, 2, 30, 40};
  for (const int logicalWidth : {0, width / 2}) {
    SDL_RenderSetLogicalSize(sdl.output, logicalWidth, logicalWidth * 2);
    SDL_RenderSetScale(sdl.output, 1.5, 1.25);
    SDL_RenderSetViewport(sdl.output, &viewport);
    SDL_RenderSetClipRect(sdl.output, &clip);
    EXPECT_EQ(difference(sdl.draw(shown.surface.frame()), expected), 0);
    SDL_Rect rect;
    SDL_RenderGetViewport(sdl.output, &rect);
    EXPECT_TRUE(SDL_RectEquals(&rect, &viewport));
    SDL_RenderGetClipRect(sdl.output, &rect);
    EXPECT_TRUE(SDL_RectEquals(&rect, &clip));
    float x = 0;
    float y = 0;
    SDL_RenderGetScale(sdl.output, &x, &y);
    EXPECT_EQ(std::pair(x, y), std::pair(1.5F, 1.25F));
    int size = -1;
    SDL_RenderGetLogicalSize(sdl.output, &size, nullptr);
    EXPECT_EQ(size, logicalWidth);
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
