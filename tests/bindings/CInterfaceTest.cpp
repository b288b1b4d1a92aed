// The C interface with a server on the loopback address: results, threads of callbacks, and refused
// arguments.

#include <atomic>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bindings/c/talvo_consent.h"
#include "testing/LoopbackServer.h"
#include "tests/support/TemporaryFolder.h"

namespace TalvoConsentSDK {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::StartsWith;

struct Heard {
  std::atomic<int> replies = 0, releases = 0;
  std::string json, description, domain;
  talvo_status status = TALVO_OK;
  int httpStatus = 0;
  std::vector<int> events;
  std::thread::id thread;

  static void reply(const talvo_error* error, const char* json, void* heard) {
    Heard& self = *static_cast<Heard*>(heard);
    self.json = json ? json : "";
    self.status = error ? error->status : TALVO_OK;
    self.httpStatus = error ? error->http_status : 0;
    self.description = error ? error->description : "";
    self.thread = std::this_thread::get_id();
    ++self.replies;
  }
  static void event(talvo_event event, void* heard) { static_cast<Heard*>(heard)->events.push_back(event); }
  static void note(void* heard) { ++static_cast<Heard*>(heard)->replies; }
  static void release(void* heard) {
    ++static_cast<Heard*>(heard)->releases;
    throw std::runtime_error("as C++ behind the interface may");
  }

  void await(int count) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (replies < count && std::chrono::steady_clock::now() < end) {
      talvo_wait(10);
      talvo_drain();
    }
    ASSERT_EQ(replies, count);
  }
};

// In a folder that is removed when the process exits, because until then the store is open.
fs::path storeFile() {
  static const TemporaryFolder folder;
  return folder.path / "store.sqlite";
}

TEST(CInterface, IsInstalledOnce) {
  EXPECT_EQ(talvo_drain(), 0U);
  EXPECT_THAT(talvo_last_error(), HasSubstr("talvo_install"));
  EXPECT_EQ(talvo_set_cache_size(0), TALVO_OK);
  ASSERT_EQ(talvo_install(storeFile().c_str(), nullptr, nullptr), TALVO_OK) << talvo_last_error();
  EXPECT_EQ(talvo_install(storeFile().c_str(), nullptr, nullptr), TALVO_INVALID_ARGUMENT);
  EXPECT_EQ(talvo_set_cache_size(1), TALVO_INVALID_ARGUMENT);
  EXPECT_EQ(talvo_set_time_limits(1, 1), TALVO_INVALID_ARGUMENT);
  EXPECT_EQ(talvo_cookies_create(nullptr, "site"), nullptr);
  EXPECT_THAT(talvo_last_error(), StartsWith("api_url"));
  EXPECT_NE(talvo_cookies_create("http://127.0.0.1:1", "site"), nullptr);
  EXPECT_STREQ(talvo_last_error(), "");
}

TEST(CInterface, LimitsTheTimeOfRequests) {
  LoopbackServer server([](const auto&, auto& connection) {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    connection.reply(200, "{}");
  });
  Heard heard;
  ASSERT_EQ(talvo_set_time_limits(0, 20), TALVO_OK);
  ASSERT_EQ(talvo_install(storeFile().c_str(), nullptr, nullptr), TALVO_OK) << talvo_last_error();
  talvo_cookies_submit_consent(talvo_cookies_create(server.url("").c_str(), "site"), "{}", Heard::reply,
                               &heard);
  heard.await(1);
  EXPECT_EQ(heard.status, TALVO_NETWORK_ERROR);
}

// An installed platform, and a client with three listeners.
class CInterfaceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(talvo_set_cache_size(0), TALVO_OK);
    ASSERT_EQ(talvo_install(storeFile().c_str(), nullptr, nullptr), TALVO_OK) << talvo_last_error();
    sdk = talvo_cookies_create(server.url("").c_str(), "site");
    ASSERT_NE(sdk, nullptr);
    for (const talvo_event event :
         {TALVO_MARKETING_ACCEPTED, TALVO_CONSENT_SENT, TALVO_IDENTIFICATION_COMPLETE}) {
      ASSERT_EQ(talvo_cookies_add_listener(sdk, event, Heard::event, &heard, Heard::release), TALVO_OK);
    }
  }
  void TearDown() override {
    talvo_cookies_remove_all_listeners(sdk);
    EXPECT_FALSE(fs::exists(storeFile() += ".cache")) << "the cache is off";
  }

  std::atomic<talvo_status> fault = TALVO_OK;  // of the service
  LoopbackServer server{[this](const auto& request, auto& connection) {
    if (fault == TALVO_NETWORK_ERROR) return connection.close();
    if (fault == TALVO_HTTP_ERROR) return connection.reply(503, "closed for today");
    connection.reply(200, request.method == "GET" ? "{}" : R"({"id":"c1"})");
  }};
  talvo_cookies* sdk = nullptr;
  Heard heard;
};

TEST_F(CInterfaceTest, RefusesBadArguments) {
  const talvo_banner_callbacks withoutSize{};
  const struct {
    talvo_status status;
    std::string what;
  } refusals[] = {
      {talvo_cookies_add_listener(sdk, 99, Heard::event, &heard, Heard::release), "There is no event 99"},
      {talvo_cookies_add_listener(sdk, 0, nullptr, &heard, Heard::release), "callback is null"},
      {talvo_cookies_submit_consent(sdk, "{", Heard::reply, &heard), ""},
      {talvo_cookies_submit_consent(sdk, R"({"marketing":1})", Heard::reply, &heard), "marketing"},
      {talvo_cookies_submit_consent(sdk, R"({"statistic":true})", Heard::reply, &heard), "statistic"},
      {talvo_cookies_identify(nullptr, "user"), "client is null"},
      {talvo_gate_is_allowed(sdk, "doNotSell", nullptr, &heard.httpStatus), "category"},
      {talvo_gate_is_allowed(sdk, "statistics", nullptr, nullptr), "allowed is null"},
      {talvo_cookies_get_consent(sdk, nullptr), "json is null"},
      {talvo_cookies_show_banner(sdk, nullptr), "callbacks is null"},
      {talvo_cookies_show_banner(sdk, &withoutSize), "callbacks has a size that is too small"},
      {talvo_topics_submit(nullptr, "a@mail.example", nullptr, 0, nullptr, nullptr), "client is null"},
  };
  for (const auto& [status, what] : refusals) EXPECT_EQ(status, TALVO_INVALID_ARGUMENT) << what;
  talvo_cookies_submit_consent(sdk, "{\n x", nullptr, nullptr);
  EXPECT_THAT(talvo_last_error(), HasSubstr("line 2, column 2"));
  EXPECT_EQ(talvo_gate_on(sdk, "ads", nullptr, Heard::note, nullptr, &heard, Heard::release), nullptr);
  EXPECT_THAT(talvo_last_error(), HasSubstr("A gate has no category \"ads\""));
  EXPECT_EQ(talvo_cookies_observe_consent(sdk, nullptr, &heard, Heard::release), nullptr);
  EXPECT_EQ(heard.releases, 0);
}

TEST_F(CInterfaceTest, GatesObservesAndErases) {
  EXPECT_STREQ(talvo_version(), TALVO_VERSION);
  const auto observe = [](const char* json, void* observer) {
    static_cast<Heard*>(observer)->json = json ? json : "none";
  };
  talvo_subscription* const observation = talvo_cookies_observe_consent(sdk, observe, &heard, nullptr);
  talvo_subscription* const gate =
      talvo_gate_on(sdk, "marketing", "v", Heard::note, Heard::note, &heard, Heard::release);
  ASSERT_TRUE(observation && gate) << talvo_last_error();
  ASSERT_EQ(talvo_cookies_submit_consent(sdk, R"({"marketing":["v"]})", nullptr, nullptr), TALVO_OK);
  heard.await(1);
  EXPECT_EQ(heard.json, R"({"marketing":["v"]})");
  for (const auto& [vendor, expected] : {std::pair("v", 1), {"w", 0}, {nullptr, 0}}) {
    int allowed = 9;
    EXPECT_EQ(talvo_gate_is_allowed(sdk, "marketing", vendor, &allowed), TALVO_OK);
    EXPECT_EQ(allowed, expected);
  }
  EXPECT_EQ(talvo_cookies_erase_consent(sdk), TALVO_OK);
  heard.await(2);
  EXPECT_EQ(heard.json, "none");
  talvo_subscription_end(gate);
  talvo_subscription_end(observation);
  talvo_subscription_end(nullptr);
  EXPECT_EQ(heard.releases, 1);
}

TEST_F(CInterfaceTest, SubmitsStoresAndRaisesEvents) {
  char* json = nullptr;
  ASSERT_EQ(talvo_cookies_get_consent(sdk, &json), TALVO_OK);
  EXPECT_EQ(json, nullptr);
  ASSERT_EQ(talvo_cookies_submit_consent(sdk, R"({"marketing":["v"]})", Heard::reply, &heard), TALVO_OK);
  heard.await(1);
  EXPECT_EQ(heard.json, R"({"id":"c1"})");
  EXPECT_NE(heard.thread, std::this_thread::get_id());
  EXPECT_THAT(heard.events, ElementsAre(TALVO_MARKETING_ACCEPTED, TALVO_CONSENT_SENT));
  ASSERT_EQ(talvo_cookies_get_consent(sdk, &json), TALVO_OK);
  EXPECT_STREQ(json, R"({"marketing":["v"]})");
  talvo_free(json);

  for (const talvo_status failure : {TALVO_NETWORK_ERROR, TALVO_HTTP_ERROR}) {
    fault = failure;
    const int before = heard.replies;
    ASSERT_EQ(talvo_cookies_submit_consent(sdk, "{}", Heard::reply, &heard), TALVO_OK);
    heard.await(before + 1);
    EXPECT_EQ(heard.status, failure);
  }
  EXPECT_EQ(heard.httpStatus, 503);
  EXPECT_EQ(heard.description, "HTTP error 503: closed for today");
}

TEST_F(CInterfaceTest, SubmitsTopics) {
  talvo_topics* const topics = talvo_topics_get("t", "point", nullptr, server.url("").c_str());
  const talvo_topic choices[] = {{1, 1}, {2, 0}};
  ASSERT_EQ(talvo_topics_submit(topics, "a@mail.example", choices, 2, Heard::reply, &heard), TALVO_OK);
  heard.await(1);
  EXPECT_EQ(heard.json, R"({"id":"c1"})");
  EXPECT_THAT(server.requests(), Contains(Field(&LoopbackServer::Request::body,
                                                HasSubstr(R"({"selected":false,"topicId":2})"))));
}

TEST_F(CInterfaceTest, ReleasesUserDataAfterTheLastCall) {
  EXPECT_EQ(heard.releases, 0);
  talvo_cookies_remove_listeners(sdk, TALVO_CONSENT_SENT);
  EXPECT_EQ(heard.releases, 1);
  talvo_cookies_remove_all_listeners(sdk);
  EXPECT_EQ(heard.releases, 3);

  // The service has no banner.
  talvo_banner_callbacks banner{};
  banner.size = sizeof banner;
  banner.on_error = [](const talvo_error*, void* other) { Heard::note(other); };
  banner.user_data = &heard;
  banner.release = [](void* other) {
    Heard::note(other);
    talvo_cookies_identify(nullptr, "user");
  };
  ASSERT_EQ(talvo_cookies_show_banner(sdk, &banner), TALVO_OK);
  heard.await(2);
  EXPECT_STREQ(talvo_last_error(), "") << "talvo_drain did not fail";
}

}  // namespace
}  // namespace TalvoConsentSDK
