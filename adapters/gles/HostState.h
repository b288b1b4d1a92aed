#pragma once

// Leaves an OpenGL ES 2 context as the host has set it.

#include <cstddef>
#include <utility>

#include <GLES2/gl2.h>

namespace TalvoConsentSDK {

/// What the host has set in the current context. Restored at the end of the scope.
class HostState {
 public:
  HostState() {
    for (auto& [name, isEnabled] : enabled_) isEnabled = glIsEnabled(name);
    for (auto& [name, value] : integers_) glGetIntegerv(name, &value);
    glActiveTexture(GL_TEXTURE0);
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture_);
    glGetIntegerv(GL_VIEWPORT, viewport_);
    glGetIntegerv(GL_SCISSOR_BOX, scissor_);
  }
  HostState(const HostState&) = delete;
  HostState& operator=(const HostState&) = delete;
  ~HostState() {
    for (const auto& [name, isEnabled] : enabled_) (isEnabled ? glEnable : glDisable)(name);
    const auto value = [this](std::size_t i) { return static_cast<GLuint>(integers_[i].second); };
    glUseProgram(value(0));
    glBindBuffer(GL_ARRAY_BUFFER, value(1));
    glPixelStorei(GL_UNPACK_ALIGNMENT, integers_[2].second);
    glBlendFuncSeparate(value(3), value(4), value(5), value(6));
    glBlendEquationSeparate(value(7), value(8));
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(texture_));
    glActiveTexture(value(9));
    glViewport(viewport_[0], viewport_[1], viewport_[2], viewport_[3]);
    glScissor(scissor_[0], scissor_[1], scissor_[2], scissor_[3]);
  }

 private:
  std::pair<GLenum, GLboolean> enabled_[6] = {{GL_BLEND, 0},      {GL_SCISSOR_TEST, 0}, {GL_CULL_FACE, 0},
                                              {GL_DEPTH_TEST, 0}, {GL_STENCIL_TEST, 0}, {GL_DITHER, 0}};
  std::pair<GLenum, GLint> integers_[10] = {{GL_CURRENT_PROGRAM, 0},      {GL_ARRAY_BUFFER_BINDING, 0},
                                            {GL_UNPACK_ALIGNMENT, 0},     {GL_BLEND_SRC_RGB, 0},
                                            {GL_BLEND_DST_RGB, 0},        {GL_BLEND_SRC_ALPHA, 0},
                                            {GL_BLEND_DST_ALPHA, 0},      {GL_BLEND_EQUATION_RGB, 0},
                                            {GL_BLEND_EQUATION_ALPHA, 0}, {GL_ACTIVE_TEXTURE, 0}};
  GLint texture_ = 0;
  GLint viewport_[4] = {};
  GLint scissor_[4] = {};
};

}  // namespace TalvoConsentSDK
