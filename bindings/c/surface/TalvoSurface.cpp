// The C interface of surfaces: their lives, their frames and their accessible elements.

#include <memory>
#include <vector>

#include "TalvoConsentSDK/platform/Platform.h"

#include "bindings/c/surface/Surface.h"

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::c;

static_assert(static_cast<int>(SurfaceAction::reveal) == TALVO_ACTION_REVEAL);

talvo_surface* talvo_surface_create(const talvo_surface_options* options) {
  talvo_surface* surface = nullptr;
  guarded([&] {
    const talvo_surface_options copy = copiedOptions(options);
    if (!Platform::isInstalled()) throw Error(InvalidArgument("no platform is installed"));
    surface = new talvo_surface{std::make_shared<Surface>(copy)};
  });
  return surface;
}

void talvo_surface_destroy(talvo_surface* surface) {
  guarded([&] {
    if (!surface) return;
    const std::unique_ptr<talvo_surface> handle(surface);
    handle->pointer->close();
  });
}

talvo_status talvo_surface_resize(talvo_surface* surface, int32_t width, int32_t height, double scale) {
  return done(surface,
              [&](Surface& held) { held.consentSurface().resize(surfaceSize(width, height, scale)); });
}

talvo_status talvo_surface_set_settings(talvo_surface* surface, const talvo_surface_settings* settings) {
  return done(surface, [&](Surface& held) { held.consentSurface().setSettings(surfaceSettings(settings)); });
}

int talvo_surface_is_showing(talvo_surface* surface) {
  return answered(surface, [](ConsentSurface& shown) { return shown.isShowing(); });
}

int talvo_surface_is_modal(talvo_surface* surface) {
  return answered(surface, [](ConsentSurface& shown) { return shown.isModal(); });
}

int talvo_surface_needs_frame(talvo_surface* surface) {
  return answered(surface, [](ConsentSurface& shown) { return shown.needsFrame(); });
}

const talvo_draw_list* talvo_surface_frame(talvo_surface* surface) {
  const talvo_draw_list* list = nullptr;
  done(surface, [&](Surface& held) { list = held.frame(); });
  return list;
}

talvo_status talvo_surface_forget_textures(talvo_surface* surface) {
  return done(surface, [](Surface& held) { held.consentSurface().forgetTextures(); });
}

talvo_status talvo_surface_elements(talvo_surface* surface, const talvo_element* const** elements,
                                    size_t* count) {
  return done(surface, [&](Surface& held) {
    required(elements, "elements") = nullptr;
    required(count, "count") = 0;
    const std::vector<const talvo_element*>& found = held.elements();
    *elements = found.data();
    *count = found.size();
  });
}

uint64_t talvo_surface_elements_revision(talvo_surface* surface) {
  return answered<uint64_t>(surface, [](ConsentSurface& shown) { return shown.accessibleRevision(); });
}

int talvo_surface_perform(talvo_surface* surface, uint64_t element, talvo_action action) {
  return answered(surface, [&](ConsentSurface& shown) {
    return shown.perform(element, static_cast<SurfaceAction>(action));
  });
}
