// The sample host: an app window that uses the SDK, for people to try and for scripts to drive.

#include <QCoreApplication>
#include <QStringList>
#include <QTimer>
#include <memory>

#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/view/Views.h"

#include "adapters/posix/CachedSession.h"
#include "adapters/texts/TranslatedTexts.h"
#include "adapters/threads/BackgroundThread.h"

#include "apps/host/Activity.h"
#include "apps/host/HostDisplay.h"
#if defined(TALVO_HAS_DRAW)
#include "apps/host/DrawDisplay.h"
#endif
#include "apps/host/HostOptions.h"
#include "apps/host/HostScreen.h"
#include "apps/host/Output.h"
#include "apps/host/PrivacyEntry.h"
#include "apps/host/QtDisplay.h"
#include "apps/host/Script.h"

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using namespace TalvoConsentSDK::view;
using namespace TalvoConsentHost;

namespace {

std::unique_ptr<HostDisplay> makeDisplay(const HostOptions& options, int& argc, char* argv[]) {
#if defined(TALVO_HAS_DRAW)
  if (options.toolkit == Toolkit::draw) return std::make_unique<DrawDisplay>(options);
#endif
  return std::make_unique<QtDisplay>(options, argc, argv);
}

/// Updates the screen's content when the SDK stores a consent or reports an event.
class HostModel {
 public:
  HostModel(std::shared_ptr<CookiesSDK> sdk, std::shared_ptr<Executor> mainActor, std::string apiUrl)
      : sdk_(sdk),
        apiUrl_(std::move(apiUrl)),
        log_{std::move(sdk), std::move(mainActor), State(HostContent())} {
    constexpr int busyInterval = 300;  // milliseconds between the steps of the indicator
    busyTimer_.setInterval(busyInterval);
    busyTimer_.callOnTimeout(
        [content = log_.content] { content.update([](HostContent& shown) { ++*shown.busyStep; }); });
    for (const auto& [event, raw] : RawValues<ConsentEvent>::table) {
      sdk_->addEventListener(
          event, std::make_shared<ConsentEventClosureCallback>(noting("Event " + std::string(raw)), [] {}));
    }
    log_.refresh();
  }

  const State<HostContent>& content() const { return log_.content; }

  std::vector<HostOperation> operations() {
    const auto submit = [this](const BasicConsent& consent) {
      sdk_->submitConsent(consent, [log = log_](const Result<ConsentResponse>& result) {
        log.note(result ? "Submitted as " + result->id : std::string("Failed: ") + result.error().what());
      });
    };
    return {
        {"Privacy settings", [this] { showBanner(); }, true},
        {"Accept all", [submit] { submit(BasicConsent::acceptAll()); }},
        {"Reject all", [submit] { submit(BasicConsent::rejectAll()); }},
        {"Identify demo-user",
         [this] {
           sdk_->identify("demo-user");
           log_.refresh();
         }},
        {"Remove identity",
         [this] {
           sdk_->removeIdentity();
           log_.refresh();
         }},
        {"Erase everything",
         [this] {
           sdk_->eraseConsent();
           log_.refresh();
         }},
        {"English", [this] { sdk_->setLanguage("en"); }},
        {"Deutsch", [this] { sdk_->setLanguage("de"); }},
        {"العربية", [this] { sdk_->setLanguage("ar"); }},
        {"Submit topics", [this] { submitTopics(); }},
        {"Stop listening", [this] { sdk_->removeAllEventListeners(); }},
    };
  }

 private:
  // Threads of the SDK may call back after the model has been destroyed, so callbacks hold a copy of these
  // members.
  struct Log {
    std::shared_ptr<CookiesSDK> sdk;
    std::shared_ptr<Executor> mainActor;
    State<HostContent> content;

    // Thread-safe.
    void note(const std::string& line) const {
      mainActor->post([log = *this, line] {
        log.content.update([&](HostContent& shown) { shown.log.insert(shown.log.begin(), line); });
        log.refresh();
      });
    }

    void refresh() const {
      const auto consent = sdk->getConsent();
      const auto json = consent ? JSONEncoder().encode(*consent) : std::string("Nothing yet");
      content.update([&](HostContent& shown) { shown.stored = json ? *json : "Unreadable"; });
    }
  };

  std::function<void()> noting(std::string line) const {
    return [log = log_, line = std::move(line)] { log.note(line); };
  }

  void showBanner() {
    const auto failed = [log = log_](const Error& error) {
      log.note(std::string("Host callback onError: ") + error.what());
    };
    entry_->tapped(*sdk_, {.onAcceptAll = noting("Host callback onAcceptAll"),
                           .onRejectAll = noting("Host callback onRejectAll"),
                           .onSaved = noting("Host callback onSaved"),
                           .onError = failed,
                           .onManagePreferences = noting("Host callback onManagePreferences")});
  }

  void showBusy(bool isBusy) {
    log_.content.update(
        [&](HostContent& shown) { shown.busyStep = isBusy ? std::optional(0U) : std::nullopt; });
    const bool hasTimers = QCoreApplication::instance() != nullptr;  // not on draw lists
    const bool moves = isBusy && hasTimers && !Platform::current().application->reducesMotion();
    moves ? busyTimer_.start() : busyTimer_.stop();
  }

  void submitTopics() {
    TalvoConsent::getInstance("", "demo-point", std::nullopt, apiUrl_)
        ->submitConsent(
            "person@mail.example", {{1, true}, {2, false}}, [log = log_](const Result<JSONObject>& reply) {
              log.note(reply ? "Topics submitted" : std::string("Topics failed: ") + reply.error().what());
            });
  }

  const std::shared_ptr<CookiesSDK> sdk_;
  const std::string apiUrl_;
  const Log log_;
  QTimer busyTimer_;
  const std::shared_ptr<PrivacyEntry> entry_ =
      std::make_shared<PrivacyEntry>([this](bool isBusy) { showBusy(isBusy); });
};

}  // namespace

int main(int argc, char* argv[]) {
  threadName();
  QStringList arguments;
  for (int i = 0; i < argc; ++i) arguments << QString::fromLocal8Bit(argv[i]);
  QCoreApplication::setApplicationName(QStringLiteral("talvo-host"));
  const HostOptions options = parseOptions(arguments);
  const std::unique_ptr<HostDisplay> display = makeDisplay(options, argc, argv);

  Platform platform = display->makePlatform(options);
  Activity activity;
  // With a cache whose work is counted, too, so that a script can wait until everything is kept.
  platform.urlSession = cachedSession(platform.urlSession, options.store, options.maxCacheBytes,
                                      activity.counting(std::make_shared<BackgroundThread>()));
  activity.watch(platform);
  display->addWindows(platform);
  platform.localization = std::make_shared<TranslatedTexts>();
  if (options.script) platform.printer = std::make_shared<ObjectPrinter>();
  Platform::install(platform);
  if (options.isEmpty) {
    display->show(verticalStack({}, {}));
    display->waitUntilShown();
  }

  const auto sdk = CookiesSDK::createInstance(options.apiUrl, options.site);
  sdk->setLanguage(options.language);
  HostModel model(sdk, platform.mainActor, options.apiUrl);
  if (!options.isEmpty) display->show(hostScreen(model.content(), model.operations()));

  const auto script = std::make_shared<Script>(sdk, options.apiUrl, activity, *display);
  if (options.script) script->start(*options.script);
  return display->run();
}
