#include "TalvoConsentSDK/platform/installation/NullSeams.h"

#include <atomic>
#include <string>
#include <utility>

namespace TalvoConsentSDK {

using namespace platform;

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

// A process without a user interface.
class AbsentApplication : public Application {
 public:
  std::vector<std::shared_ptr<Scene>> connectedScenes() override { return {}; }
  OperatingSystemVersion operatingSystemVersion() const override { return {17, 0}; }
  void open(const URL&) override {}
  std::optional<LayoutDirection> layoutDirection() const override { return std::nullopt; }
  bool reducesMotion() const override { return false; }
};

}  // namespace

Platform::Platform()
    : urlSession(std::make_shared<AbsentURLSession>()),
      userDefaults(std::make_shared<AbsentUserDefaults>()),
      mainActor(std::make_shared<InlineExecutor>()),
      background(mainActor),
      application(std::make_shared<AbsentApplication>()),
      localization(std::make_shared<Localization>()),
      printer(std::make_shared<StandardOutput>()) {}

// The null objects, and the platform that takes their place once it is bound. Each is set only once.
struct UnboundPlatform::Binding {
  Binding() { nullObjects.fillIn(); }

  Platform nullObjects;
  Platform bound;
  std::atomic<bool> isBound = false;

  const Platform& target() const { return isBound ? bound : nullObjects; }
};

namespace {

template <class Binding>
class UnboundURLSession : public URLSession {
 public:
  explicit UnboundURLSession(std::shared_ptr<Binding> binding) : binding_(std::move(binding)) {}

  void run(URLRequest request, Completion completion) override {
    binding_->target().urlSession->run(std::move(request), std::move(completion));
  }

 private:
  const std::shared_ptr<Binding> binding_;
};

template <class Binding>
class UnboundUserDefaults : public UserDefaults {
 public:
  explicit UnboundUserDefaults(std::shared_ptr<Binding> binding) : binding_(std::move(binding)) {}

  Result<std::optional<Data>> data(std::string_view key) override { return store().data(key); }
  Result<std::optional<std::string>> string(std::string_view key) override { return store().string(key); }
  Result<void> set(std::string_view key, Data value) override { return store().set(key, std::move(value)); }
  Result<void> set(std::string_view key, std::string value) override {
    return store().set(key, std::move(value));
  }
  Result<bool> replace(std::string_view key, const std::optional<Data>& expected, Data value) override {
    return store().replace(key, expected, std::move(value));
  }
  Result<void> remove(std::string_view key) override { return store().remove(key); }
  Result<void> commit(const std::vector<StoreChange>& changes) override { return store().commit(changes); }
  Result<void> synchronize() override { return store().synchronize(); }

 private:
  UserDefaults& store() const { return *binding_->target().userDefaults; }

  const std::shared_ptr<Binding> binding_;
};

template <class Binding>
class UnboundExecutor : public Executor {
 public:
  UnboundExecutor(std::shared_ptr<Binding> binding, std::shared_ptr<Executor> Platform::* member)
      : binding_(std::move(binding)), member_(member) {}

  void post(std::function<void()> job) override { (binding_->target().*member_)->post(std::move(job)); }

 private:
  const std::shared_ptr<Binding> binding_;
  std::shared_ptr<Executor> Platform::* const member_;
};

}  // namespace

UnboundPlatform::UnboundPlatform() : binding_(std::make_shared<Binding>()), platform_(binding_->nullObjects) {
  platform_.urlSession = std::make_shared<UnboundURLSession<Binding>>(binding_);
  platform_.userDefaults = std::make_shared<UnboundUserDefaults<Binding>>(binding_);
  for (const auto member : {&Platform::mainActor, &Platform::background, &Platform::callbacks}) {
    platform_.*member = std::make_shared<UnboundExecutor<Binding>>(binding_, member);
  }
}

void UnboundPlatform::bind(const Platform& platform) {
  binding_->bound = platform;
  binding_->isBound = true;
}

}  // namespace TalvoConsentSDK
