// The QML type in a host that has its own platform and client.

#include <QCoreApplication>
#include <future>

#include "bindings/qml/ConsentSdk.h"
#include "bindings/qml/QmlConsentGate.h"
#include "tests/core/ClientTest.h"
#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {
namespace {

class QmlTest : public ClientTest {
 protected:
  QmlTest() {
    for (const char* method : {"POST", "PUT"}) answer(method, "cookie-consent/s", 200, R"({"id":"n"})");
  }

  struct Item : ConsentSdk {
    Item() {
      setProperty("apiUrl", "https://service.example/");
      setProperty("siteId", "s");
      connect(this, &ConsentSdk::consentChanged, [this] { consents.push_back(toText(consent())); });
    }
    static std::string toText(const QVariant& consent) {
      return consent.toMap().isEmpty() ? "none" : consent.toMap().firstKey().toStdString();
    }
    Texts consents;  // the name of the first member of each consent
  };
};

TEST_F(QmlTest, KeepsTheHostsSettingsAndReportsEveryChange) {
  for (const char* path : {"banner-customization/s?lng=de", "cookies/s?lng=de"}) answer("GET", path, 500, "");
  answer("GET", "cookies/s/configurations", 200, R"({"implicitConsent":true})");
  answer("GET", "cookie-consent/s/identified/u", 200, R"({"id":"k"})");
  auto first = std::make_unique<Item>();
  first->setLanguage("de");
  first->componentComplete();
  EXPECT_EQ(Platform::current().printer, platform.printer);
  platform.settle();
  EXPECT_THAT(first->consents, ElementsAre("none", "marketing")) << "implicit consent";
  newRequests();
  auto second = std::make_unique<Item>();
  second->componentComplete();
  platform.settle();
  EXPECT_THAT(newRequests(), IsEmpty()) << "the language has not changed";
  second->identify("u");
  platform.settle();
  EXPECT_EQ(first->consents.back(), "id");
  EXPECT_EQ(second->consents.back(), "id");
  first.reset();
  second.reset();
  CookiesSDK::getInstance()->submitConsent(BasicConsent::rejectAll(), [](const auto&) {});
  while (platform.background->runAll() + platform.sessionThread->runAll() > 0) {
  }
  EXPECT_EQ(stored("basicConsent"), written(BasicConsent::rejectAll()));
  EXPECT_EQ(platform.mainActor->runAll(), 0u) << "no listeners are left";
}

TEST_F(QmlTest, GatesACategoryOrAVendor) {
  answer("GET", "cookies/s/configurations", 200, "{}");
  Item sdk;
  QStringList reports;
  sdk.connect(&sdk, &ConsentSdk::failed, [&](const QString& failure) { reports << failure; });
  std::vector<std::unique_ptr<QmlConsentGate>> gates;
  for (const auto& [category, vendor] :
       {std::pair("statistics", ""), {"marketing", "A"}, {"doNotSell", ""}}) {
    const auto& gate = gates.emplace_back(std::make_unique<QmlConsentGate>());
    gate->setProperty("sdk", QVariant::fromValue<ConsentSdk*>(&sdk));
    gate->setProperty("category", category);
    gate->setProperty("vendor", vendor);
    const QString name = category;
    gate->connect(gate.get(), &QmlConsentGate::started, [&reports, name] { reports << "+" + name; });
    gate->connect(gate.get(), &QmlConsentGate::stopped, [&reports, name] { reports << "-" + name; });
    gate->componentComplete();  // earlier than the sdk's
  }
  sdk.componentComplete();
  platform.settle();
  EXPECT_EQ(std::exchange(reports, {}), QStringList("A gate has no category \"doNotSell\""));
  sdk.submitConsent({{"statistics", true}, {"marketing", QStringList("A")}});
  platform.settle();
  EXPECT_EQ(std::exchange(reports, {}), QStringList({"+statistics", "+marketing"}));
  EXPECT_TRUE(gates[0]->allowed() && sdk.isAllowed("marketing", "A") && !sdk.isAllowed("marketing"));
  sdk.submitConsent({{"statistic", true}});
  EXPECT_FALSE(sdk.isAllowed("ads"));
  ASSERT_EQ(reports.size(), 2);
  EXPECT_TRUE(reports.takeFirst().contains("statistic: There is no such category"));
  EXPECT_EQ(reports.takeFirst(), "A gate has no category \"ads\"");
  gates[1].reset();
  EXPECT_TRUE(sdk.eraseConsent());
  platform.settle();
  EXPECT_EQ(reports, QStringList("-statistics"));
}

TEST_F(QmlTest, TellsWhenTheBannerIsOnScreen) {
  answer("GET", "banner-customization/s?lng=en", 200, bannerDocument(customization("closeButton")));
  answer("GET", "cookies/s?lng=en", 200, "{}");
  answer("GET", "cookies/s/configurations", 200, "{}");
  Item sdk;
  QStringList signalled;
  sdk.connect(&sdk, &ConsentSdk::bannerShown, [&] { signalled << "shown"; });
  sdk.connect(&sdk, &ConsentSdk::bannerEnded, [&](const QString& outcome) { signalled << outcome; });
  sdk.componentComplete();
  sdk.showBanner();
  platform.settle();
  EXPECT_EQ(signalled, QStringList("shown"));
  tap(*platform.scene->windows().at(0)->controller, "button Close");
  platform.settle();
  EXPECT_EQ(signalled, QStringList({"shown", "closed"}));
}

TEST_F(QmlTest, LimitsHowLongABannerMayTake) {
  for (const char* path : {"banner-customization/s?lng=en", "cookies/s?lng=en", "cookies/s/configurations"})
    answer("GET", path, 500, "");
  Item sdk;
  sdk.componentComplete();
  sdk.showBanner();
  platform.settle();
  EXPECT_EQ(platform.session->requests().back().totalTimeout, std::nullopt);
  sdk.showBanner(1500);
  platform.settle();
  EXPECT_EQ(platform.session->requests().back().totalTimeout, std::chrono::milliseconds(1500));
}

TEST(QmlTextsTest, TranslatesTheBannersTexts) {
  const std::string store = ::testing::TempDir() + "qml-texts.sqlite";
  ConsentSdk sdk;
  sdk.setProperty("apiUrl", "not a URL");  // so that no request is sent
  sdk.setProperty("store", QString::fromStdString(store));
  sdk.setProperty("translatesTexts", true);
  sdk.setProperty("ownTexts", QVariantMap{{"Close", "Weg damit"}});
  sdk.componentComplete();
  const auto texts = Platform::current().localization;
  texts->setLanguage("de");
  EXPECT_EQ(texts->text("Close"), "Weg damit");
  EXPECT_EQ(texts->text("Back"), "Zurück");

  // Ends the client's creation, which runs on both threads in turn: jobs dropped at exit would count as
  // leaks.
  for (int turn = 0; turn < 3; ++turn) {
    QCoreApplication::processEvents();
    std::promise<void> isIdle;
    Platform::current().background->post([&] { isIdle.set_value(); });
    isIdle.get_future().wait();
  }
}

// This happens if a host's store or printer runs an event loop that loads the QML.
TEST_F(QmlTest, FailsWhileTheClientIsBeingCreated) {
  Item item;
  QStringList failures;
  item.connect(&item, &ConsentSdk::failed, [&](const QString& failure) { failures << failure; });
  platform.userDefaults->before = [&](auto) { failures.isEmpty() ? item.componentComplete() : void(); };
  const auto client = created();
  item.showBanner();
  ASSERT_EQ(failures.size(), 2);
  EXPECT_TRUE(client && failures.front().contains("still being created"));
}

}  // namespace
}  // namespace TalvoConsentSDK
