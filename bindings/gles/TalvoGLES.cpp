#include <cstddef>
#include <new>

#include "adapters/gles/GLESRenderer.h"

#include "bindings/gles/talvo_gles.h"

using namespace TalvoConsentSDK;

struct talvo_gles {
  GLESRenderer renderer;
};

namespace {

// The structures of a list have the same fields in both languages.
static_assert(sizeof(talvo_draw_vertex) == sizeof(DrawVertex) &&
              offsetof(talvo_draw_vertex, color) == offsetof(DrawVertex, color));
static_assert(sizeof(talvo_draw_command) == sizeof(DrawCommand) &&
              offsetof(talvo_draw_command, index_count) == offsetof(DrawCommand, indexCount));
static_assert(sizeof(talvo_texture_upload) == sizeof(TextureUpload) &&
              offsetof(talvo_texture_upload, bytes) == offsetof(TextureUpload, bytes));

template <class To, class From>
std::span<const To> span(const From* first, std::size_t count) {
  return {reinterpret_cast<const To*>(first), count};
}

}  // namespace

talvo_gles* talvo_gles_create() {
  return new (std::nothrow) talvo_gles;
}

void talvo_gles_destroy(talvo_gles* renderer) {
  delete renderer;
}

int talvo_gles_draw(talvo_gles* renderer, const talvo_draw_list* list, std::int32_t width,
                    std::int32_t height) {
  if (!renderer || !list) return 0;
  DrawList given;
  given.revision = list->revision;
  given.vertices = span<DrawVertex>(list->vertices, list->vertex_count);
  given.indices = span<std::uint32_t>(list->indices, list->index_count);
  given.commands = span<DrawCommand>(list->commands, list->command_count);
  given.uploads = span<TextureUpload>(list->uploads, list->upload_count);
  given.released = span<TextureId>(list->released, list->released_count);
  try {
    return renderer->renderer.draw(given, width, height) ? 1 : 0;
  } catch (...) {  // no exception reaches C
    return 0;
  }
}

void talvo_gles_forget_context(talvo_gles* renderer) {
  if (renderer) renderer->renderer.forgetContext();
}
