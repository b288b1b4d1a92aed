#pragma once

// The host of a surface, as it describes itself in C.

#include <memory>

#include "TalvoConsentSDK/base/Geometry.h"

#include "adapters/draw/SurfaceOptions.h"

#include "bindings/c/surface/talvo_surface_options.h"

namespace TalvoConsentSDK::c {

/// Returns the number. Throws an InvalidArgument if it is not from `least` to `most`.
double inRange(double number, double least, double most, const char* name);

/// Throw an InvalidArgument if a field cannot be used.
SurfaceSize surfaceSize(std::int32_t width, std::int32_t height, double scale);
SurfaceSettings surfaceSettings(const talvo_surface_settings* settings);

/// The callbacks of a surface, which are called until the surface is destroyed. Main thread only.
class SurfaceHost {
 public:
  /// Until `open`, no callback is called.
  void open(const talvo_surface_options& options);

  /// Ends the calls. `release` is called now, or after a callback that is running.
  void close() { callbacks_ = nullptr; }
  bool isOpen() const { return callbacks_ != nullptr; }

  void needFrame() const;

  /// Throws an InvalidArgument if a field cannot be used. The callbacks keep `host` alive.
  static SurfaceOptions surfaceOptions(const talvo_surface_options& options,
                                       const std::shared_ptr<SurfaceHost>& host);

 private:
  struct Callbacks {
    talvo_surface_options functions;
    std::shared_ptr<void> userData;
  };

  // Calls the host's function and returns its answer. If the surface has been destroyed, or if the function
  // throws, returns `otherwise`.
  template <class Answer, class Question>
  Answer ask(Answer otherwise, const Question& question) const;

  std::shared_ptr<const Callbacks> callbacks_;
};

/// Returns a copy of the host's options. Throws an InvalidArgument if they are null or too small.
talvo_surface_options copiedOptions(const talvo_surface_options* options);

}  // namespace TalvoConsentSDK::c
