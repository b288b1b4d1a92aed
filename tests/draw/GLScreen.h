#pragma once

// An OpenGL ES 2 context with a framebuffer in memory, without a display, and a renderer in it.

#include <cstdint>
#include <memory>
#include <vector>

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES2/gl2.h>

#include "adapters/gles/GLESRenderer.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

class GLScreen {
 public:
  GLScreen(int width, int height)
      : display_(eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr)) {
    EXPECT_TRUE(eglInitialize(display_, nullptr, nullptr));
    const EGLint wanted[] = {EGL_SURFACE_TYPE,
                             EGL_PBUFFER_BIT,
                             EGL_RENDERABLE_TYPE,
                             EGL_OPENGL_ES2_BIT,
                             EGL_RED_SIZE,
                             8,
                             EGL_GREEN_SIZE,
                             8,
                             EGL_BLUE_SIZE,
                             8,
                             EGL_NONE};
    EGLint count = 0;
    EXPECT_TRUE(eglChooseConfig(display_, wanted, &config_, 1, &count));
    resize(width, height);
  }
  ~GLScreen() {
    makeCurrent();
    renderer.reset();
    endContext();
  }

  /// Makes a new context, which has none of the old one's objects.
  void loseContext() {
    endContext();
    context_ = nullptr;
    resize(width_, height_);
  }

  void resize(int width, int height) {
    width_ = width;
    height_ = height;
    const EGLint version[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};
    const EGLint size[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
    if (!context_) context_ = eglCreateContext(display_, config_, EGL_NO_CONTEXT, version);
    if (surface_) eglDestroySurface(display_, surface_);
    surface_ = eglCreatePbufferSurface(display_, config_, size);
    makeCurrent();
  }

  void makeCurrent() { EXPECT_TRUE(eglMakeCurrent(display_, surface_, surface_, context_)); }

  /// Returns the red, green and blue of each pixel, from the top.
  std::vector<std::uint8_t> draw(const DrawList& list) {
    makeCurrent();
    glClearColor(0.8F, 0.82F, 0.84F, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    EXPECT_TRUE(renderer->draw(list, width_, height_));
    const auto row = static_cast<std::size_t>(width_) * 4;
    std::vector<std::uint8_t> pixels(row * static_cast<std::size_t>(height_));
    glReadPixels(0, 0, width_, height_, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    std::vector<std::uint8_t> bytes;
    for (std::size_t y = static_cast<std::size_t>(height_); y-- > 0;) {
      for (std::size_t x = 0; x < row; ++x) {
        if (x % 4 != 3) bytes.push_back(pixels[y * row + x]);
      }
    }
    return bytes;
  }

  std::unique_ptr<GLESRenderer> renderer = std::make_unique<GLESRenderer>();

 private:
  void endContext() {
    eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroySurface(display_, surface_);
    eglDestroyContext(display_, context_);
    surface_ = nullptr;
  }

  EGLDisplay display_;
  EGLConfig config_ = nullptr;
  EGLContext context_ = nullptr;
  EGLSurface surface_ = nullptr;
  int width_ = 0;
  int height_ = 0;
};

}  // namespace TalvoConsentSDK
