#include "TalvoConsentSDK/platform/Platform.h"

#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/base/NeverDestroyed.h"
#include "TalvoConsentSDK/platform/installation/Installation.h"
#include "TalvoConsentSDK/platform/installation/NullSeams.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

// Never destroyed: other threads may still read it, or print, while the process exits.
struct Installed {
  std::mutex lock;
  UnboundPlatform unbound;
  std::optional<Platform> platform;
  std::vector<std::function<void()>> waiting;  // work to do once the first platform is installed

  static Installed& instance() {
    static Installed& installed = neverDestroyed<Installed>();
    return installed;
  }
};

template <class Seam>
void replaceNull(std::shared_ptr<Seam>& seam, const std::shared_ptr<Seam>& instead) {
  if (!seam) seam = instead;
}

}  // namespace

void Platform::fillIn() {
  const Platform nullObjects;
  replaceNull(urlSession, nullObjects.urlSession);
  replaceNull(userDefaults, nullObjects.userDefaults);
  replaceNull(mainActor, nullObjects.mainActor);
  replaceNull(background, nullObjects.background);
  replaceNull(callbacks, background);
  replaceNull(application, nullObjects.application);
  replaceNull(localization, nullObjects.localization);
  replaceNull(printer, nullObjects.printer);
}

void Platform::install(Platform platform) {
  platform.fillIn();
  Installed& installed = Installed::instance();
  std::optional<Platform> replaced(std::move(platform));  // released outside the lock: runs host code
  std::vector<std::function<void()>> waiting;
  {
    const std::scoped_lock guard(installed.lock);
    if (!installed.platform) installed.unbound.bind(*replaced);
    std::swap(installed.platform, replaced);
    std::swap(installed.waiting, waiting);
  }
  for (const auto& work : waiting) callHost(work);
}

bool Platform::isInstalled() {
  Installed& installed = Installed::instance();
  const std::scoped_lock guard(installed.lock);
  return installed.platform.has_value();
}

Platform Platform::current() {
  Installed& installed = Installed::instance();
  const std::scoped_lock guard(installed.lock);
  return installed.platform ? *installed.platform : installed.unbound.platform();
}

void detail::onceInstalled(std::function<void()> work) {
  Installed& installed = Installed::instance();
  {
    const std::scoped_lock guard(installed.lock);
    if (!installed.platform) return installed.waiting.push_back(std::move(work));
  }
  work();
}

}  // namespace TalvoConsentSDK
