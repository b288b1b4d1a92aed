// The local consent service, as the program that clients meet: started, asked over HTTP, and stopped.

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TalvoConsentSDK/models/FullConsent.h"
#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/models/JSONValue.h"
#include "TalvoConsentSDK/models/Services.h"

#include "tests/apps/ConsentServiceProcess.h"

namespace TalvoConsentSDK::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;

constexpr const char* json = "application/json";

JSONObject object(const std::string& text) {
  const auto value = JSONDecoder().decode<JSONValue>(text);
  return value && value->object() ? *value->object() : JSONObject();
}

// A path that no other test uses; what is there in the end is removed.
class TemporaryFile : public std::string {
 public:
  explicit TemporaryFile(const std::string& name)
      : std::string(::testing::TempDir() + "talvo-service-" + std::to_string(getpid()) + name) {}
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() { std::filesystem::remove(c_str()); }
};

std::string consent(const std::string& more) {
  return R"({"status":"partial","categories":{"marketing":["A","B"],"statistics":false},"typeConsent":"explicit")" +
         more + "}";
}

TEST(ConsentService, ServesDocumentsInTheLanguageAsked) {
  const ConsentServiceProcess service;
  const auto client = service.client();
  struct {
    const char* path;
    const char* part;
  } const cases[] = {
      {"/", R"(["demo","implicit","large","minimal"])"},
      {"/public/cookies/implicit/configurations", R"("implicitConsent": true)"},
      {"/public/banner-customization/demo?lng=en", "Accept all"},
      {"/public/banner-customization/demo?lng=de", "Alle zulassen"},
      {"/public/banner-customization/demo?lng=de-AT", "Alle zulassen"},
      {"/public/banner-customization/demo?lng=ar", "قبول الكل"},
      {"/public/banner-customization/demo?lng=xx", "Accept all"},
      {"/public/banner-customization/demo", "Accept all"},
      {"/public/cookies/demo?lng=de", "Absturzberichte"},
      {"/public/cookies/demo?lng=xx", "Crash reports"},
      {"/public/cookies/implicit?lng=de", "Trailcount"},
      {"/public/cookies/minimal?lng=en", "{}"},
  };
  for (const auto& each : cases) {
    const auto reply = client->Get(each.path);
    ASSERT_TRUE(reply) << each.path;
    EXPECT_EQ(reply->status, 200) << each.path;
    EXPECT_EQ(reply->get_header_value("Content-Type"), "application/json; charset=utf-8");
    EXPECT_THAT(reply->body, HasSubstr(each.part)) << each.path;
  }

  const auto large = JSONDecoder().decode<Services>(client->Get("/public/cookies/large")->body);
  std::size_t vendors = 0;
  for (const char* category : {"necessary", "preferences", "statistics", "marketing"}) {
    vendors += large.value().groupedByVendor(category).size();
  }
  EXPECT_EQ(vendors, 1000U);

  const auto banner = client->Get("/public/banner-customization/demo?lng=en");
  EXPECT_THAT(banner->body, HasSubstr('"' + service.url() + "/sites/demo/logo.png\""));
  const auto logo = client->Get("/sites/demo/logo.png");
  EXPECT_EQ(logo->get_header_value("Content-Type"), "image/png");
  EXPECT_EQ(logo->body.substr(1, 3), "PNG");
}

TEST(ConsentService, KeepsConsentsAcrossARestart) {
  const TemporaryFile store(".db");
  const std::string path = "/public/cookie-consent/demo";
  std::string first;
  {
    ConsentServiceProcess service({"--store", store});
    const auto client = service.client();
    const auto post = [&](const std::string& site, const std::string& more) {
      return *object(client->Post("/public/cookie-consent/" + site, consent(more), json)->body)
                  .at("id")
                  .string();
    };
    first = post("demo", R"(,"userId":"ann@x.example")");
    const std::string second = post("demo", R"(,"userId":"ann@x.example")");
    post("implicit", R"(,"userId":"ann@x.example")");
    EXPECT_NE(first, second);
    const auto put = [&](const std::string& more) {
      return *object(client->Put(path, consent(more), json)->body).at("id").string();
    };
    EXPECT_EQ(put(R"(,"userId":"ann@x.example","siteId":"demo","id":")" + first + '"'), first);
    EXPECT_NE(put(R"(,"id":"unknown")"), "unknown");
    EXPECT_NE(put(""), first);
    EXPECT_EQ(service.stop(), 0);
  }
  ConsentServiceProcess service({"--store", store});
  const auto client = service.client();
  const auto known = client->Get(path + "/identified/ann%40x.example?consentId=other");
  const auto record = JSONDecoder().decode<std::optional<FullConsent>>(known->body);
  ASSERT_TRUE(record && *record) << known->body;
  EXPECT_EQ((*record)->id, first) << "the consent that changed last";
  EXPECT_EQ((*record)->siteId, "demo");
  EXPECT_EQ((*record)->status, "partial");
  EXPECT_EQ((*record)->categories->at("marketing").items(), (std::vector<std::string>{"A", "B"}));
  const auto unknown = client->Get(path + "/identified/bob?consentId=" + first);
  EXPECT_EQ(unknown->status, 200);
  EXPECT_EQ(unknown->body, "null");
  service.stop();  // before its store is removed
}

TEST(ConsentService, ServesManyClientsAtOnce) {
  const TemporaryFile log(".log");
  const ConsentServiceProcess service({"--log", log, "--fail", "?broken=reset"});
  std::vector<std::thread> clients;
  for (int index = 0; index < 12; ++index) {
    clients.emplace_back([&service, user = "user" + std::to_string(index)] {
      for (int round = 0; round < 10; ++round) {
        const auto client = service.client();
        EXPECT_TRUE(
            client->Post("/public/cookie-consent/demo", consent(R"(,"userId":")" + user + '"'), json));
        EXPECT_FALSE(client->Get("/public/cookies/demo?broken"));
        const auto reply = client->Get("/public/cookie-consent/demo/identified/" + user);
        ASSERT_TRUE(reply);
        EXPECT_EQ(object(reply->body)["userId"], JSONValue(user));
      }
    });
  }
  for (std::thread& each : clients) each.join();
}

TEST(ConsentService, RefusesWhatItCannotServe) {
  const ConsentServiceProcess service;
  const auto client = service.client();
  const std::string topics =
      R"({"collectionPointId":"p","requesterId":"a@b.example","requesterType":"EMAIL",)";
  struct {
    const char* method;
    std::string path;
    std::string body;
    int status;
    const char* reason;
  } const cases[] = {
      {"GET", "/public/cookies/nowhere?lng=en", "", 404, "unknown site: nowhere"},
      {"GET", "/public/cookies/nowhere/configurations", "", 404, "unknown site"},
      {"GET", "/public/banner-customization/..?lng=en", "", 404, "unknown site"},
      {"GET", "/public/cookie-consent/nowhere/identified/a", "", 404, "unknown site"},
      {"POST", "/public/cookie-consent/nowhere", consent(""), 404, "unknown site"},
      {"GET", "/sites/demo/..%2Fminimal%2Fconfiguration.json", "", 404, "no such endpoint"},
      {"GET", "/sites/demo/nothing.png", "", 404, "no such file"},
      {"PUT", "/public/consent", "{}", 404, "no such endpoint"},
      {"GET", "/" + std::string(5000, 'a'), "", 414, "refused"},
      {"POST", "/public/cookie-consent/demo", "", 400, "JSON"},
      {"POST", "/public/cookie-consent/demo", R"({"status":"accepted","typeConsent":"explicit"})", 400,
       "categories"},
      {"POST", "/public/cookie-consent/demo", R"({"status":"yes","categories":{},"typeConsent":"explicit"})",
       400, "status"},
      {"PUT", "/public/cookie-consent/demo", consent(R"(,"siteId":"minimal")"), 400, "siteId"},
      {"PUT", "/public/cookie-consent/demo", consent(R"(,"userId":7)"), 400, "userId"},
      {"POST", "/public/consent", "[]", 400, "expected an object"},
      {"POST", "/public/consent", topics + R"("topicSelectionDtos":[{"topicId":1,"selected":"yes"}]})", 400,
       "topicSelectionDtos[0].selected"},
      {"POST", "/public/consent", topics + R"("topicSelectionDtos":[],"more":1})", 400, "unknown keys"},
  };
  for (const auto& each : cases) {
    httplib::Request request;
    request.method = each.method;
    request.path = each.path;
    request.body = each.body;
    request.set_header("Content-Type", json);
    const auto reply = client->send(request);
    ASSERT_TRUE(reply) << each.path;
    EXPECT_EQ(reply->status, each.status) << each.path << each.body;
    const JSONObject reason = object(reply->body);
    ASSERT_TRUE(reason.contains("error")) << reply->body;
    EXPECT_THAT(*reason.at("error").string(), HasSubstr(each.reason));
  }
}

TEST(ConsentService, LogsEveryRequestBeforeItsReply) {
  const TemporaryFile log(".log");
  const ConsentServiceProcess service({"--log", log, "--fail", "minimal=reset"});
  const auto client = service.client();
  const std::string choices =
      R"({"collectionPointId":"p","requesterId":"a@b.example","requesterType":"EMAIL","token":"t",)"
      R"("topicSelectionDtos":[{"topicId":7,"selected":true},{"topicId":8,"selected":false}]})";
  const auto receipt = client->Post("/public/consent", {{"X-Client-Name", "me"}}, choices, json);
  EXPECT_EQ(object(receipt->body).at("topics"), JSONValue(2));
  EXPECT_EQ(object(receipt->body).at("collectionPointId"), JSONValue("p"));
  EXPECT_TRUE(object(receipt->body).at("receiptId").string());
  client->Post("/public/consent?a=%20", "\xFF{", json);
  EXPECT_FALSE(client->Get("/public/cookies/minimal?lng=en"));

  std::vector<JSONObject> lines;
  std::ifstream file(log);
  for (std::string line; std::getline(file, line);) lines.push_back(object(line));
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_THAT(*lines[0].at("time").string(), MatchesRegex("....-..-..T..:..:..\\....Z"));
  EXPECT_EQ(lines[0].at("method"), JSONValue("POST"));
  EXPECT_EQ(lines[0].at("headers"), JSONValue(JSONObject{{"x-client-name", "me"}, {"content-type", json}}));
  EXPECT_EQ(lines[0].at("body"), JSONValue(object(choices)));
  EXPECT_EQ(lines[0].at("status"), JSONValue(200));
  EXPECT_EQ(lines[1].at("path"), JSONValue("/public/consent?a=%20"));
  EXPECT_EQ(lines[1].at("body"), JSONValue("\\xff{"));
  EXPECT_EQ(lines[1].at("status"), JSONValue(400));
  EXPECT_EQ(lines[2].at("fault"), JSONValue("reset"));
  EXPECT_TRUE(lines[2].at("status").isNull());
}

TEST(ConsentService, SpoilsRepliesAsTold) {
  std::vector<std::string> options;
  for (const char* fault :
       {"lng=de=418", "POST /public/cookie-consent=503", "fault=a=reset", "fault=b=stall",
        "fault=c=truncated", "fault=d=empty", "fault=e=null", "fault=f=array", "fault=g=notutf8",
        "fault=h=html500", "fault=i=404:notutf8", "fault=j=299", "fault=k=204"}) {
    options.insert(options.end(), {"--fail", fault});
  }
  const ConsentServiceProcess service(options);
  const auto client = service.client();
  const auto get = [&](const std::string& query) { return client->Get("/public/cookies/demo?" + query); };
  const std::string whole = get("lng=en")->body;

  for (const char* unanswered : {"fault=a", "fault=b", "fault=c"})
    EXPECT_FALSE(get(unanswered)) << unanswered;
  struct {
    const char* query;
    int status;
    std::string body;
  } const cases[] = {
      {"fault=d", 200, ""},   {"fault=e", 200, "null"},
      {"fault=f", 200, "[]"}, {"fault=j", 299, whole},
      {"fault=k", 204, ""},   {"lng=de", 418, R"({"error":"this failure was asked for"})"},
  };
  for (const auto& each : cases) {
    const auto reply = get(each.query);
    ASSERT_TRUE(reply) << each.query;
    EXPECT_EQ(reply->status, each.status) << each.query;
    EXPECT_EQ(reply->body, each.body) << each.query;
  }
  EXPECT_EQ(get("fault=h")->status, 500);
  EXPECT_THAT(get("fault=h")->body, HasSubstr("<html>"));
  EXPECT_EQ(get("fault=g")->status, 200);
  EXPECT_EQ(get("fault=i")->status, 404);
  EXPECT_FALSE(JSONEncoder().encode(JSONValue(get("fault=i")->body))) << "valid UTF-8";
  EXPECT_EQ(client->Post("/public/cookie-consent/demo", consent(R"(,"userId":"ann")"), json)->status, 503);
  EXPECT_EQ(client->Get("/public/cookie-consent/demo/identified/ann")->body, "null") << "a fault took effect";
}

TEST(ConsentService, ServesHTTPS) {
  const TemporaryFile key(".key");
  const TemporaryFile certificate(".pem");
  const std::string make =
      "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj /CN=localhost "
      "-keyout " +
      key + " -out " + certificate + " 2>&1";
  ASSERT_EQ(std::system(make.c_str()), 0);
  const ConsentServiceProcess service({"--tls", certificate, key});
  EXPECT_THAT(service.firstLine(), MatchesRegex("listening on https://127\\.0\\.0\\.1:[0-9]+"));
  const auto reply = service.client()->Get("/public/banner-customization/demo");
  ASSERT_TRUE(reply);
  EXPECT_THAT(reply->body, HasSubstr(service.url() + "/sites/"));
}

TEST(ConsentService, EndsCleanlyWithConnectionsOpenAndRequestsUnanswered) {
  const auto start = std::chrono::steady_clock::now();
  ConsentServiceProcess service({"--fail", "slow=stall", "--delay", "50"});
  EXPECT_THAT(service.firstLine(), MatchesRegex("listening on http://127\\.0\\.0\\.1:[0-9]+"));
  const auto idle = service.client();
  idle->set_keep_alive(true);
  EXPECT_TRUE(idle->Get("/"));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
  std::thread waiting([&] { EXPECT_FALSE(service.client()->Get("/slow")); });
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(service.stop(), 0);
  waiting.join();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(4))
      << "idle connections last five";
}

TEST(ConsentService, ExplainsWhyItDoesNotStart) {
  const ConsentServiceProcess running;
  const std::string port = running.url().substr(running.url().rfind(':') + 1);
  struct {
    std::vector<std::string> options;
    int status;
  } const cases[] = {
      {{"--port", "eighty"}, 2},
      {{"--port"}, 2},
      {{"--tls", "only"}, 2},
      {{"--fail", "=reset"}, 2},
      {{"--fail", "a=99"}, 2},
      {{"--fail", "a=odd"}, 2},
      {{"--what"}, 2},
      {{"--port", port}, 1},
      {{"--sites", "/nowhere"}, 1},
      {{"--help"}, 0},
      {{"--store", "/nowhere/store"}, 1},
  };
  for (const auto& each : cases) {
    ConsentServiceProcess service(each.options);
    const bool runs = service.firstLine().starts_with("listening");
    EXPECT_EQ(runs ? -1 : service.wait(), each.status) << each.options.back();
  }
}

}  // namespace
}  // namespace TalvoConsentSDK::testing
