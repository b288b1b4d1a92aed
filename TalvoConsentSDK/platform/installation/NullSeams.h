#pragma once

// What stands in for seams that a host has left out, or not installed yet.

#include "TalvoConsentSDK/platform/Platform.h"

namespace TalvoConsentSDK {

/// The null objects of a `Platform` until `bind` is called: then the session, the store and the executors are
/// those of the given one. The members of `platform()` are safe from any thread; `bind` is called once.
class UnboundPlatform {
 public:
  UnboundPlatform();

  const Platform& platform() const { return platform_; }
  void bind(const Platform& platform);

 private:
  struct Binding;

  const std::shared_ptr<Binding> binding_;
  Platform platform_;
};

}  // namespace TalvoConsentSDK
