#pragma once

// What the renderer sets in an OpenGL ES context.

#include <cstddef>
#include <string_view>
#include <utility>

#include <GLES2/gl2.h>

namespace TalvoConsentSDK {

/// Sets what drawing a list needs in the current context. At the end of the scope, the context is again as
/// the host has set it.
class RenderingState {
 public:
  RenderingState() {
    for (auto& [name, isEnabled] : enabled_) isEnabled = glIsEnabled(name);
    for (auto& [name, value] : integers_) glGetIntegerv(name, &value);
    glActiveTexture(GL_TEXTURE0);
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture_);
    glGetIntegerv(GL_VIEWPORT, viewport_);
    glGetIntegerv(GL_SCISSOR_BOX, scissor_);
    glGetBooleanv(GL_COLOR_WRITEMASK, mask_);
    for (const auto& [name, isEnabled] : enabled_) {
      (name == GL_BLEND || name == GL_SCISSOR_TEST ? glEnable : glDisable)(name);
    }
    glBlendEquation(GL_FUNC_ADD);
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    for (auto& [name, count] : rows_) {
      if (!hasRows_) break;
      glGetIntegerv(name, &count);
      glPixelStorei(name, 0);
    }
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  }
  RenderingState(const RenderingState&) = delete;
  RenderingState& operator=(const RenderingState&) = delete;
  ~RenderingState() {
    for (const auto& [name, isEnabled] : enabled_) (isEnabled ? glEnable : glDisable)(name);
    const auto value = [this](std::size_t i) { return static_cast<GLuint>(integers_[i].second); };
    glUseProgram(value(0));
    glBindBuffer(GL_ARRAY_BUFFER, value(1));
    glPixelStorei(GL_UNPACK_ALIGNMENT, integers_[2].second);
    for (const auto& [name, count] : rows_) {
      if (hasRows_) glPixelStorei(name, count);
    }
    glBlendFuncSeparate(value(3), value(4), value(5), value(6));
    glBlendEquationSeparate(value(7), value(8));
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(texture_));
    glActiveTexture(value(9));
    glViewport(viewport_[0], viewport_[1], viewport_[2], viewport_[3]);
    glScissor(scissor_[0], scissor_[1], scissor_[2], scissor_[3]);
    glColorMask(mask_[0], mask_[1], mask_[2], mask_[3]);
  }

 private:
  static bool hasRows() {
    const auto* const version = reinterpret_cast<const char*>(glGetString(GL_VERSION));
    return version && std::string_view(version).find("OpenGL ES 2") == std::string_view::npos;
  }

  std::pair<GLenum, GLboolean> enabled_[8] = {
      {GL_BLEND, 0},        {GL_SCISSOR_TEST, 0}, {GL_CULL_FACE, 0},       {GL_DEPTH_TEST, 0},
      {GL_STENCIL_TEST, 0}, {GL_DITHER, 0},       {GL_SAMPLE_COVERAGE, 0}, {GL_SAMPLE_ALPHA_TO_COVERAGE, 0}};
  std::pair<GLenum, GLint> integers_[10] = {{GL_CURRENT_PROGRAM, 0},      {GL_ARRAY_BUFFER_BINDING, 0},
                                            {GL_UNPACK_ALIGNMENT, 0},     {GL_BLEND_SRC_RGB, 0},
                                            {GL_BLEND_DST_RGB, 0},        {GL_BLEND_SRC_ALPHA, 0},
                                            {GL_BLEND_DST_ALPHA, 0},      {GL_BLEND_EQUATION_RGB, 0},
                                            {GL_BLEND_EQUATION_ALPHA, 0}, {GL_ACTIVE_TEXTURE, 0}};
  // Version 3's row length, skipped rows and skipped pixels of uploads, which version 2's header does not
  // name.
  std::pair<GLenum, GLint> rows_[3] = {{0x0CF2, 0}, {0x0CF3, 0}, {0x0CF4, 0}};
  const bool hasRows_ = hasRows();
  GLint texture_ = 0;
  GLint viewport_[4] = {};
  GLint scissor_[4] = {};
  GLboolean mask_[4] = {};
};

}  // namespace TalvoConsentSDK
