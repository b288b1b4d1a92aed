#pragma once

// A surface as the functions of the C interface see it.

#include <memory>
#include <vector>

#include "TalvoConsentSDK/platform/Application.h"

#include "adapters/draw/ConsentSurface.h"

#include "bindings/c/Boundary.h"
#include "bindings/c/surface/SurfaceHost.h"
#include "bindings/c/surface/talvo_surface.h"
#include "bindings/c/surface/talvo_surface_elements.h"

namespace TalvoConsentSDK::c {

/// Main thread only.
class Surface {
 public:
  /// Throws an InvalidArgument if a field cannot be used.
  explicit Surface(const talvo_surface_options& options);

  /// Takes the surface from the platform and from the host.
  void close();

  ConsentSurface& consentSurface() { return surface_; }

  /// Each answer is valid until the next call of the same function.
  const talvo_draw_list* frame();
  const std::vector<const talvo_element*>& elements();

 private:
  const std::shared_ptr<SurfaceHost> host_;
  ConsentSurface surface_;
  std::shared_ptr<platform::Application> application_;
  talvo_draw_list list_{};
  std::vector<SurfaceElement> texts_;  // what the elements point to
  std::vector<talvo_element> elements_;
  std::vector<const talvo_element*> pointers_;
};

}  // namespace TalvoConsentSDK::c

/// The handle. Each call holds a copy of the pointer, because a callback may destroy the surface.
struct talvo_surface {
  std::shared_ptr<TalvoConsentSDK::c::Surface> pointer;
};

namespace TalvoConsentSDK::c {

/// Calls `body` with the surface, and returns its answer.
template <class Answer = int, class Body>
Answer answered(talvo_surface* surface, const Body& body) {
  Answer answer{};
  guarded([&] {
    const std::shared_ptr<Surface> held = required(surface, "surface").pointer;
    answer = static_cast<Answer>(body(held->consentSurface()));
  });
  return answer;
}

/// Calls `body` with the surface.
template <class Body>
talvo_status done(talvo_surface* surface, const Body& body) {
  return guarded([&] {
    const std::shared_ptr<Surface> held = required(surface, "surface").pointer;
    body(*held);
  });
}

}  // namespace TalvoConsentSDK::c
