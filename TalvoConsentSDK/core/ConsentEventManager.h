#pragma once

// The registry of a client's listeners. It delivers events without knowing what they mean.

#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "TalvoConsentSDK/core/ConsentEventCallback.h"
#include "TalvoConsentSDK/models/ConsentEvent.h"

namespace TalvoConsentSDK {

/// Listeners by event, in the order they were added. Safe to call from any thread; listeners run outside the
/// lock, so they may add and remove listeners themselves.
class ConsentEventManager {
 public:
  /// Adds a listener after those that the event already has. A listener added twice is called twice; null is
  /// ignored.
  void addListener(ConsentEvent event, std::shared_ptr<ConsentEventCallback> callback);

  /// Removes a listener from one event, however often it was added.
  void removeListener(ConsentEvent event, const std::shared_ptr<ConsentEventCallback>& callback);

  void removeListeners(ConsentEvent event);

  void removeAllListeners();

  /// Calls `onSuccess` on each listener that the event has at this moment, on the calling thread. If a
  /// listener throws, one line is printed and the other listeners are still called.
  void trigger(ConsentEvent event);

  /// Triggers each event in turn. A listener called for an earlier event can still remove listeners of a
  /// later one.
  void trigger(const std::vector<ConsentEvent>& events);

 private:
  using Listeners = std::vector<std::shared_ptr<ConsentEventCallback>>;

  Listeners listeners(ConsentEvent event) const;

  std::map<ConsentEvent, Listeners> eventListeners_;
  mutable std::mutex lock_;
};

}  // namespace TalvoConsentSDK
