#include "bindings/c/surface/Surface.h"

#include <cstddef>
#include <utility>

#include "TalvoConsentSDK/platform/Platform.h"

namespace TalvoConsentSDK::c {

// The structures of the draw list are passed on as they are.
static_assert(sizeof(talvo_draw_vertex) == sizeof(DrawVertex));
static_assert(offsetof(talvo_draw_vertex, color) == offsetof(DrawVertex, color));
static_assert(sizeof(talvo_draw_command) == sizeof(DrawCommand));
static_assert(offsetof(talvo_draw_command, index_count) == offsetof(DrawCommand, indexCount));
static_assert(sizeof(talvo_texture_upload) == sizeof(TextureUpload));
static_assert(offsetof(talvo_texture_upload, area) == offsetof(TextureUpload, area));
static_assert(offsetof(talvo_texture_upload, bytes_per_row) == offsetof(TextureUpload, bytesPerRow));
static_assert(static_cast<int>(TextureFormat::rgba8) == TALVO_RGBA8);

static_assert(static_cast<int>(view::Role::dialog) == TALVO_ROLE_DIALOG);

Surface::Surface(const talvo_surface_options& options)
    : host_(std::make_shared<SurfaceHost>()), surface_(SurfaceHost::surfaceOptions(options, host_)) {
  Platform platform = Platform::current();
  surface_.addTo(platform);
  application_ = platform.application;
  Platform::install(std::move(platform));
  host_->open(options);
  host_->needFrame();
}

void Surface::close() {
  host_->close();
  Platform platform = Platform::current();
  if (platform.application != application_) return;
  platform.application = nullptr;
  Platform::install(std::move(platform));
}

const talvo_draw_list* Surface::frame() {
  const DrawList& list = surface_.frame();
  list_ = {.revision = list.revision,
           .vertices = reinterpret_cast<const talvo_draw_vertex*>(list.vertices.data()),
           .vertex_count = list.vertices.size(),
           .indices = list.indices.data(),
           .index_count = list.indices.size(),
           .commands = reinterpret_cast<const talvo_draw_command*>(list.commands.data()),
           .command_count = list.commands.size(),
           .uploads = reinterpret_cast<const talvo_texture_upload*>(list.uploads.data()),
           .upload_count = list.uploads.size(),
           .released = list.released.data(),
           .released_count = list.released.size()};
  return host_->isOpen() ? &list_ : nullptr;  // a callback may have destroyed the surface
}

const std::vector<const talvo_element*>& Surface::elements() {
  pointers_.clear();
  elements_.clear();
  texts_ = surface_.accessibleElements();
  for (const SurfaceElement& each : texts_) {
    elements_.push_back({.id = each.id,
                         .role = static_cast<talvo_role>(each.role),
                         .actions = each.actions,
                         .name = each.name.c_str(),
                         .value = each.value.c_str(),
                         .description = each.description.c_str(),
                         .language = each.language.c_str(),
                         .x = each.frame.x,
                         .y = each.frame.y,
                         .width = each.frame.width,
                         .height = each.frame.height,
                         .is_enabled = each.isEnabled,
                         .is_focused = each.isFocused,
                         .is_modal = each.isModal});
  }
  for (const talvo_element& each : elements_) pointers_.push_back(&each);
  return pointers_;
}

}  // namespace TalvoConsentSDK::c
