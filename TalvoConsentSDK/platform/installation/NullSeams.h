#pragma once

// Substitutes for seams that a host has left out or not installed yet.

#include "TalvoConsentSDK/platform/Platform.h"

namespace TalvoConsentSDK {

/// A platform of null objects. Once `bind` has been called, its session, store and executors pass everything
/// on to those of the given platform. The members of `platform()` are safe from any thread; `bind` is called
/// once.
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
