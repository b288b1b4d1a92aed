// The sample host: an app window that uses the SDK, for people to try and for scripts to drive.

#include <QGuiApplication>
#include <QStandardPaths>
#include <QSurfaceFormat>
#include <cstdlib>
#include <memory>

#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/view/Views.h"

#include "adapters/curl/CurlURLSession.h"
#include "adapters/posix/CachedSession.h"
#include "adapters/qt/QtMainActor.h"
#include "adapters/qt/QtPlatform.h"
#include "adapters/qt/ViewWindow.h"
#include "adapters/texts/TranslatedTexts.h"

#include "apps/host/Activity.h"
#include "apps/host/EventLoop.h"
#include "apps/host/HostOptions.h"
#include "apps/host/HostScreen.h"
#include "apps/host/Output.h"
#include "apps/host/Script.h"
#include "apps/host/Timing.h"

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using namespace TalvoConsentSDK::view;
using namespace TalvoConsentHost;

namespace {

QtOptions qtOptions(const HostOptions& options) {
  QtOptions qt;
  qt.text.scale = options.textScale;
  qt.layoutDirection = options.layoutDirection;
  if (options.highContrast) qt.highContrast = true;
  qt.reducesMotion = options.reducesMotion;
  qt.maxCacheBytes = options.maxCacheBytes;
  qt.safeArea = [insets = options.safeArea](const QWindow&) { return insets; };
  if (options.script) qt.openURL = [](const URL& url) { printObject({{"opened", url.text()}}); };
  return qt;
}

std::filesystem::path storeFile(const HostOptions& options) {
  if (!options.store.empty()) return options.store;
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
  return std::filesystem::path(folder.toStdString()) / "consent.sqlite";
}

/// Updates the screen's content when the SDK stores a consent or reports an event.
class HostModel {
 public:
  HostModel(std::shared_ptr<CookiesSDK> sdk, std::shared_ptr<Executor> mainActor, std::string apiUrl)
      : sdk_(sdk),
        apiUrl_(std::move(apiUrl)),
        log_{std::move(sdk), std::move(mainActor), State(HostContent())} {
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
        {"Privacy settings", [this] { showBanner(); }},
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
    sdk_->showBanner(noting("Host callback onAcceptAll"), noting("Host callback onRejectAll"),
                     noting("Host callback onManagePreferences"), [log = log_](const Error& error) {
                       log.note(std::string("Host callback onError: ") + error.what());
                     });
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
};

}  // namespace

int main(int argc, char* argv[]) {
  threadName();
  QStringList arguments;
  for (int i = 0; i < argc; ++i) arguments << QString::fromLocal8Bit(argv[i]);
  QCoreApplication::setApplicationName(QStringLiteral("talvo-host"));
  const HostOptions options = parseOptions(arguments);
  if (options.pixelRatio > 0) qputenv("QT_SCALE_FACTOR", QByteArray::number(options.pixelRatio));
  const QGuiApplication application(argc, argv);

  const QtOptions qt = qtOptions(options);
  Platform platform = makeQtPlatform(storeFile(options), qt);
  if (!options.certificates.empty()) {
    CurlOptions curl;
    curl.certificates = options.certificates;
    platform.urlSession =
        cachedSession(std::make_shared<CurlURLSession>(curl), storeFile(options), options.maxCacheBytes);
  }
  Activity activity;
  activity.watch(platform);
  addQtWindows(platform, qt);
  platform.localization = std::make_shared<TranslatedTexts>();
  if (options.script) platform.printer = std::make_shared<ObjectPrinter>();
  Platform::install(platform);
  Timing::watchBanners();

  ViewWindow window(qt.text);
  window.setTitle(QStringLiteral("Aurora Daily"));
  window.resize(options.size);
  ViewEnvironment environment;
  environment.textMeasurer = std::make_shared<QtTextMeasurer>(qt.text);
  environment.safeArea = options.safeArea;
  const auto show = [&](const AnyView& screen) {
    const LayoutDirection direction = options.layoutDirection.value_or(LayoutDirection::leftToRight);
    window.setController(std::make_shared<HostingController>(screen, direction), environment);
    if (!options.isHidden) window.show();
  };
  if (options.isEmpty) {
    show(verticalStack({}, {}));
    waitUntil([&] { return window.isExposed() && !window.isBusy(); });
  }

  const auto sdk = CookiesSDK::createInstance(options.apiUrl, options.site);
  sdk->setLanguage(options.language);
  HostModel model(sdk, platform.mainActor, options.apiUrl);
  if (!options.isEmpty) show(hostScreen(model.content(), model.operations()));

  const auto script = std::make_shared<Script>(sdk, options.apiUrl, activity, window);
  if (options.script) script->start(*options.script);
  return QGuiApplication::exec();
}
