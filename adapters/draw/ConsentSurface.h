#pragma once

// Shows the banner in a host's own frame, as draw lists, without a toolkit and without a window.

#include <cstdint>
#include <memory>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Platform.h"

#include "adapters/draw/DrawList.h"
#include "adapters/draw/SurfaceElement.h"
#include "adapters/draw/SurfaceInput.h"
#include "adapters/draw/SurfaceOptions.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// The area in which a host shows the banner. Main thread only. Positions are in pixels from the top left. If
/// it is destroyed, a banner on it counts as closed.
///
///     ConsentSurface surface({.size = {1170, 2532, 3}});
///     Platform platform = makePosixPlatform(mainQueue);
///     surface.addTo(platform);
///     Platform::install(platform);
///
/// Then, for each frame, drain the main queue and draw what `frame` returns above everything else.
class ConsentSurface {
 public:
  explicit ConsentSurface(SurfaceOptions options);
  ConsentSurface(const ConsentSurface&) = delete;
  ConsentSurface& operator=(const ConsentSurface&) = delete;
  ~ConsentSurface();

  /// Makes this surface the application of `platform`. Call it once the session and the executors of
  /// `platform` are set: the logo is loaded with those that it has at the time of the call. Without a
  /// session, one line is printed. Once the surface is gone, no banner is shown.
  void addTo(Platform& platform);

  void resize(const SurfaceSize& size);
  void setSettings(SurfaceSettings settings);

  /// Whether a banner is on the surface, also while it fades.
  bool isShowing() const;

  /// Whether the banner is modal: it then takes all input, and the host should pause what is below.
  bool isModal();

  /// Whether the list that `frame` would return may differ from the last one. If not, there is nothing to
  /// draw again. Cheap.
  bool needsFrame() const;

  /// Returns what to draw now; without a banner, a list without commands. If nothing has changed, returns the
  /// last list again, without uploads. Valid until the next call of `frame`.
  const DrawList& frame();

  /// Call it if the renderer has lost its textures. The next list then uploads them under new ids.
  void forgetTextures();

  // Input. Each function returns whether the banner took the input; if not, it is for the host. A touch, a
  // mouse button or a stick that began outside the banner stays with the host until it ends. A key that the
  // host received does not operate the banner while it is held, and the host receives its release. Positions
  // are finite.
  bool touchBegan(std::int64_t finger, double x, double y);
  bool touchMoved(std::int64_t finger, double x, double y);
  bool touchEnded(std::int64_t finger, double x, double y);
  bool touchCancelled(std::int64_t finger);
  bool mouseMoved(double x, double y);
  bool mousePressed(MouseButton button, double x, double y);
  bool mouseReleased(MouseButton button, double x, double y);

  /// Scrolls down by `pixels`, as trackpads report it, or by notches of a wheel; up if they are negative.
  bool scrolled(double x, double y, double pixels);
  bool wheelTurned(double x, double y, double notches);

  /// For a key that is held down, call `keyPressed` for each repetition. The host receives the releases of
  /// all keys that are `SurfaceKey::other`, because they cannot be told apart.
  bool keyPressed(SurfaceKey key);
  bool keyReleased(SurfaceKey key);

  /// The position of a stick, each direction from -1 to 1, y downwards. Call it when the position changes.
  bool stickMoved(ControllerStick stick, double x, double y);

  /// Everything that the user can read or operate. Valid until the next call of any function.
  const std::vector<SurfaceElement>& accessibleElements();

  /// Grows whenever the accessible elements may have changed.
  std::uint64_t accessibleRevision();

  /// Returns false if there is no such element, or if it does not have this action.
  bool perform(std::uint64_t element, SurfaceAction action);

 private:
  class Implementation;
  const std::unique_ptr<Implementation> implementation_;
};

}  // namespace TalvoConsentSDK
