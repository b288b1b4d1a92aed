#include "TalvoConsentSDK/platform/Platform.h"

#include <mutex>

namespace TalvoConsentSDK {

namespace {

PlatformError absent(const char* seam) {
  return {"TalvoConsentSDK", -2, std::string("No ") + seam + " is installed; call Platform::install first"};
}

class AbsentURLSession : public URLSession {
 public:
  void run(URLRequest, Completion completion) override { completion(absent("URL session")); }
};

class AbsentUserDefaults : public UserDefaults {
 public:
  Result<std::optional<Data>> data(std::string_view) override { return failure(); }
  Result<std::optional<std::string>> string(std::string_view) override { return failure(); }
  Result<void> set(std::string_view, Data) override { return failure(); }
  Result<void> set(std::string_view, std::string) override { return failure(); }
  Result<bool> replace(std::string_view, const std::optional<Data>&, Data) override { return failure(); }
  Result<void> remove(std::string_view) override { return failure(); }
  Result<void> synchronize() override { return failure(); }

 private:
  static PlatformError failure() { return absent("user-defaults store"); }
};

class InlineExecutor : public Executor {
 public:
  void post(std::function<void()> job) override { callHost(job); }
};

// Never destroyed: threads may still print or read it while the process exits.
struct Installed {
  std::mutex lock;
  Platform platform;

  static Installed& instance() {
    static Installed& installed = *new Installed;
    return installed;
  }
};

}  // namespace

Platform::Platform()
    : urlSession(std::make_shared<AbsentURLSession>()),
      userDefaults(std::make_shared<AbsentUserDefaults>()),
      mainActor(std::make_shared<InlineExecutor>()),
      background(mainActor),
      application(std::make_shared<Application>()),
      localization(std::make_shared<Localization>()),
      printer(std::make_shared<StandardOutput>()) {}

void Platform::install(Platform platform) {
  Installed& installed = Installed::instance();
  const std::scoped_lock guard(installed.lock);
  std::swap(installed.platform, platform);
}

Platform Platform::current() {
  Installed& installed = Installed::instance();
  const std::scoped_lock guard(installed.lock);
  return installed.platform;
}

}  // namespace TalvoConsentSDK
