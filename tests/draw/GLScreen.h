#pragma once

// An OpenGL ES 3 context with a framebuffer in memory, without a display, and a renderer in it. It can do all
// that a context of version 2 can, and has more state that a host may set.

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES3/gl3.h>

#include "adapters/gles/GLESRenderer.h"

#include "tests/draw/SavedPicture.h"

namespace TalvoConsentSDK {

class GLScreen {
 public:
  GLScreen(int width, int height) {
    EXPECT_TRUE(eglInitialize(display_, nullptr, nullptr));
    resize(width, height);
  }
  ~GLScreen() {
    makeCurrent();
    renderer.reset();
    end();
  }

  void resize(int width, int height) {
    width_ = width;
    height_ = height;
    EGLConfig config = nullptr;
    EGLint count = 0;
    const EGLint wanted[] = {
        EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, EGL_OPENGL_ES3_BIT, EGL_GREEN_SIZE, 8,
        EGL_NONE};
    const EGLint version[] = {EGL_CONTEXT_CLIENT_VERSION, 3, EGL_NONE};
    const EGLint size[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
    EXPECT_TRUE(eglChooseConfig(display_, wanted, &config, 1, &count));
    if (!context_) context_ = eglCreateContext(display_, config, EGL_NO_CONTEXT, version);
    if (surface_) eglDestroySurface(display_, surface_);
    surface_ = eglCreatePbufferSurface(display_, config, size);
    makeCurrent();
  }

  /// Makes a new context, which has none of the old one's objects.
  void loseContext() {
    end();
    context_ = surface_ = nullptr;
    resize(width_, height_);
  }

  void makeCurrent() { EXPECT_TRUE(eglMakeCurrent(display_, surface_, surface_, context_)); }

  /// From now on draws into a framebuffer with four samples a pixel.
  void multisample() {
    makeCurrent();
    const auto framebuffer = [this](GLuint& name, int samples) {
      GLuint colors = 0;
      glGenRenderbuffers(1, &colors);
      glBindRenderbuffer(GL_RENDERBUFFER, colors);
      glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, GL_RGBA8, width_, height_);
      glGenFramebuffers(1, &name);
      glBindFramebuffer(GL_FRAMEBUFFER, name);
      glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, colors);
    };
    framebuffer(resolved_, 0);
    framebuffer(drawn_, 4);
  }

  Bytes draw(const DrawList& list) {
    makeCurrent();
    glBindFramebuffer(GL_FRAMEBUFFER, drawn_);
    GLboolean mask[4] = {};
    glGetBooleanv(GL_COLOR_WRITEMASK, mask);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glClearColor(0.8F, 0.82F, 0.84F, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glColorMask(mask[0], mask[1], mask[2], mask[3]);
    EXPECT_TRUE(renderer->draw(list, width_, height_));
    if (resolved_ != drawn_) {
      glBindFramebuffer(GL_DRAW_FRAMEBUFFER, resolved_);
      glBlitFramebuffer(0, 0, width_, height_, 0, 0, width_, height_, GL_COLOR_BUFFER_BIT, GL_NEAREST);
      glBindFramebuffer(GL_FRAMEBUFFER, resolved_);
    }
    const int row = width_ * 4;
    Bytes pixels(static_cast<std::size_t>(row * height_));
    glReadPixels(0, 0, width_, height_, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    Bytes bytes(pixels.size() / 4 * 3);
    for (int y = 0; y < height_; ++y) {
      for (int i = 0; i < width_ * 3; ++i) {
        bytes[static_cast<std::size_t>(y * width_ * 3 + i)] =
            pixels[static_cast<std::size_t>((height_ - 1 - y) * row + i / 3 * 4 + i % 3)];
      }
    }
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    return bytes;
  }

  std::unique_ptr<GLESRenderer> renderer = std::make_unique<GLESRenderer>();

 private:
  void end() {
    eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroySurface(display_, surface_);
    eglDestroyContext(display_, context_);
  }

  const EGLDisplay display_ =
      eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
  EGLContext context_ = nullptr;
  EGLSurface surface_ = nullptr;
  GLuint drawn_ = 0;     // framebuffers; 0 is that of the surface
  GLuint resolved_ = 0;  // with one sample a pixel
  int width_ = 0;
  int height_ = 0;
};

}  // namespace TalvoConsentSDK
