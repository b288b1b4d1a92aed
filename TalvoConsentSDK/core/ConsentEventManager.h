#pragma once

// The registry of a client's listeners. It delivers; it does not know what the events mean.

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
  /// Adds a listener behind the event's others. The same listener added twice is called twice; null is
  /// ignored.
  void addListener(ConsentEvent event, std::shared_ptr<ConsentEventCallback> callback);

  /// Drops one listener of one event, as often as it was added.
  void removeListener(ConsentEvent event, const std::shared_ptr<ConsentEventCallback>& callback);

  /// Drops all listeners of one event.
  void removeListeners(ConsentEvent event);

  void removeAllListeners();

  /// Calls `onSuccess` of the listeners that the event has now, on the calling thread. What one throws is
  /// printed and keeps none of the others from being called.
  void trigger(ConsentEvent event);

  /// Triggers each event in turn; a listener of an earlier event can still remove those of a later one.
  void trigger(const std::vector<ConsentEvent>& events);

 private:
  using Listeners = std::vector<std::shared_ptr<ConsentEventCallback>>;

  Listeners listeners(ConsentEvent event) const;

  std::map<ConsentEvent, Listeners> eventListeners_;
  mutable std::mutex lock_;
};

}  // namespace TalvoConsentSDK
