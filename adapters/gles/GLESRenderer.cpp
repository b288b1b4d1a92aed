#include "adapters/gles/GLESRenderer.h"

#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

#include <GLES2/gl2.h>

#include "adapters/gles/RenderingState.h"

namespace TalvoConsentSDK {

namespace {

constexpr const char* vertexShader = R"(
attribute vec2 position; attribute vec2 place; attribute vec4 color;
uniform vec2 size; varying vec2 at; varying vec4 tint;
void main() {
  gl_Position = vec4(position.x / size.x * 2.0 - 1.0, 1.0 - position.y / size.y * 2.0, 0.0, 1.0);
  at = place; tint = color;
})";

// Places in large textures need more digits than `mediump` may have.
constexpr const char* fragmentShader = R"(
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
#else
precision mediump float;
#endif
uniform sampler2D image; uniform float isAlpha; varying vec2 at; varying vec4 tint;
void main() { vec4 texel = texture2D(image, at); gl_FragColor = tint * vec4(max(texel.rgb, isAlpha), texel.a); }
)";

}  // namespace

GLESRenderer::~GLESRenderer() {
  for (const auto& [id, texture] : textures_) glDeleteTextures(1, &texture.name);
  if (vertices_) glDeleteBuffers(1, &vertices_);
  if (program_) glDeleteProgram(program_);
}

void GLESRenderer::forgetContext() {
  textures_.clear();
  program_ = vertices_ = 0;
}

// Makes the program and the buffer. Returns false if the context cannot make them.
bool GLESRenderer::prepare() {
  if (program_) return true;
  const GLuint program = glCreateProgram();
  for (const auto& [kind, text] :
       {std::pair(GL_VERTEX_SHADER, vertexShader), {GL_FRAGMENT_SHADER, fragmentShader}}) {
    const GLuint shader = glCreateShader(static_cast<GLenum>(kind));
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    glAttachShader(program, shader);
    glDeleteShader(shader);  // lives as long as the program
  }
  GLuint index = 0;
  for (const char* const name : {"position", "place", "color"}) glBindAttribLocation(program, index++, name);
  glLinkProgram(program);
  GLint isLinked = 0;
  glGetProgramiv(program, GL_LINK_STATUS, &isLinked);
  if (!isLinked) return glDeleteProgram(program), false;
  program_ = program;
  glGenBuffers(1, &vertices_);
  revision_ = 0;
  return true;
}

void GLESRenderer::apply(const TextureUpload& upload) {
  const bool isAlpha = upload.format == TextureFormat::alpha8;
  const GLenum format = isAlpha ? GL_ALPHA : GL_RGBA;
  Texture& texture = textures_[upload.texture];
  const bool isNew = texture.name == 0;
  if (isNew) glGenTextures(1, &texture.name);
  glBindTexture(GL_TEXTURE_2D, texture.name);
  if (isNew) {
    texture.isAlpha = isAlpha ? 1 : 0;
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(format), upload.textureWidth, upload.textureHeight, 0,
                 format, GL_UNSIGNED_BYTE, nullptr);
  }
  // OpenGL ES 2 reads only rows without gaps.
  const PixelRect& area = upload.area;
  const std::size_t row = static_cast<std::size_t>(area.width) * (isAlpha ? 1 : 4);
  const auto rows = static_cast<std::size_t>(area.height);
  std::vector<std::uint8_t> bytes(row * rows);
  for (std::size_t y = 0; y < rows; ++y)
    std::memcpy(&bytes[y * row], upload.bytes + y * upload.bytesPerRow, row);
  glTexSubImage2D(GL_TEXTURE_2D, 0, area.x, area.y, area.width, area.height, format, GL_UNSIGNED_BYTE,
                  bytes.data());
}

bool GLESRenderer::draw(const DrawList& list, std::int32_t width, std::int32_t height) {
  if (list.commands.empty() && list.uploads.empty() && list.released.empty()) return true;
  const RenderingState state;
  for (const TextureUpload& upload : list.uploads) apply(upload);
  if (!prepare()) return false;
  glUseProgram(program_);
  glUniform2f(glGetUniformLocation(program_, "size"), static_cast<float>(width), static_cast<float>(height));
  const GLint isAlpha = glGetUniformLocation(program_, "isAlpha");
  glBindBuffer(GL_ARRAY_BUFFER, vertices_);
  if (std::exchange(revision_, list.revision) != list.revision) {
    // OpenGL ES 2 has no indices above 65,535, so each triangle gets its own corners.
    std::vector<DrawVertex> corners;
    corners.reserve(list.indices.size());
    for (const std::uint32_t index : list.indices) corners.push_back(list.vertices[index]);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(corners.size() * sizeof(DrawVertex)),
                 corners.data(), GL_DYNAMIC_DRAW);
  }
  const auto attribute = [](GLuint index, GLint count, GLenum type, std::size_t offset) {
    glEnableVertexAttribArray(index);
    glVertexAttribPointer(index, count, type, GL_TRUE, sizeof(DrawVertex),
                          reinterpret_cast<const void*>(offset));  // NOLINT(performance-no-int-to-ptr)
  };
  attribute(0, 2, GL_FLOAT, offsetof(DrawVertex, x));
  attribute(1, 2, GL_FLOAT, offsetof(DrawVertex, u));
  attribute(2, 4, GL_UNSIGNED_BYTE, offsetof(DrawVertex, color));
  glViewport(0, 0, width, height);
  for (const DrawCommand& command : list.commands) {
    const Texture& texture = textures_[command.texture];
    const PixelRect& clip = command.clip;
    glBindTexture(GL_TEXTURE_2D, texture.name);
    glUniform1f(isAlpha, texture.isAlpha);
    glScissor(clip.x, height - clip.y - clip.height, clip.width, clip.height);  // counted from the bottom
    glDrawArrays(GL_TRIANGLES, static_cast<GLint>(command.firstIndex),
                 static_cast<GLsizei>(command.indexCount));
  }
  for (const GLuint index : {0U, 1U, 2U}) glDisableVertexAttribArray(index);
  for (const TextureId id : list.released) {
    if (const auto texture = textures_.extract(id)) glDeleteTextures(1, &texture.mapped().name);
  }
  return true;
}

}  // namespace TalvoConsentSDK
