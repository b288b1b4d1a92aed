#include "TalvoConsentSDK/core/ConsentEventManager.h"

#include <utility>

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

using namespace platform;

void ConsentEventManager::addListener(ConsentEvent event, std::shared_ptr<ConsentEventCallback> callback) {
  if (!callback) return;
  const std::scoped_lock guard(lock_);
  eventListeners_[event].push_back(std::move(callback));
}

// Removed listeners are released outside the lock, because their destructors are host code.
void ConsentEventManager::removeListener(ConsentEvent event,
                                         const std::shared_ptr<ConsentEventCallback>& callback) {
  const std::scoped_lock guard(lock_);
  const auto entry = eventListeners_.find(event);
  if (entry != eventListeners_.end()) std::erase(entry->second, callback);  // the caller keeps it alive
}

void ConsentEventManager::removeListeners(ConsentEvent event) {
  decltype(eventListeners_)::node_type removed;
  const std::scoped_lock guard(lock_);
  removed = eventListeners_.extract(event);
}

void ConsentEventManager::removeAllListeners() {
  decltype(eventListeners_) removed;
  const std::scoped_lock guard(lock_);
  eventListeners_.swap(removed);
}

void ConsentEventManager::trigger(ConsentEvent event) {
  for (const auto& listener : listeners(event)) {
    callHost([&] { listener->onSuccess(); });
  }
}

void ConsentEventManager::trigger(const std::vector<ConsentEvent>& events) {
  for (const ConsentEvent event : events) trigger(event);
}

ConsentEventManager::Listeners ConsentEventManager::listeners(ConsentEvent event) const {
  const std::scoped_lock guard(lock_);
  const auto entry = eventListeners_.find(event);
  return entry == eventListeners_.end() ? Listeners() : entry->second;
}

}  // namespace TalvoConsentSDK
