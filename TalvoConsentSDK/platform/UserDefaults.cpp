#include "TalvoConsentSDK/platform/UserDefaults.h"

namespace TalvoConsentSDK {
namespace platform {

Result<void> UserDefaults::commit(const std::vector<StoreChange>& changes) {
  for (const StoreChange& change : changes) {
    Result<void> made;
    if (const auto* data = std::get_if<Data>(&change.value)) {
      made = set(change.key, *data);
    } else if (const auto* text = std::get_if<std::string>(&change.value)) {
      made = set(change.key, *text);
    } else {
      made = remove(change.key);
    }
    if (!made) return made;
  }
  return {};
}

}  // namespace platform
}  // namespace TalvoConsentSDK
