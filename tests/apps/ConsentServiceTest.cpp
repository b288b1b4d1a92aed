// The local consent service, as the program that clients meet: started, asked over HTTP, and stopped.

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "TalvoConsentSDK/models/FullConsent.h"

#include "tests/apps/ConsentServiceProcess.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK::testing {
namespace {

using ::testing::MatchesRegex;
using ::testing::Values;

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

// Each file in tests/apps/exchanges holds options, and requests (method, path, body) with what is answered:
// the status and, unless nothing follows, a part of the body, in which URL stands for the service's own.
class Exchanges : public TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(All, Exchanges, Values("documents", "refusals", "faults"),
                         [](const auto& each) { return each.param; });

TEST_P(Exchanges, GoAsWritten) {
  std::ifstream file(TALVO_TEST_DATA "/apps/exchanges/" + GetParam() + ".txt");
  std::vector<std::string> options;
  std::string line;
  while (std::getline(file, line) && (line[0] == '#' || line.starts_with("options: "))) {
    if (line[0] != '#') std::ranges::copy(words(line.substr(9)), std::back_inserter(options));
  }
  const ConsentServiceProcess service(options);
  int count = 0;
  do {
    httplib::Request request;
    std::istringstream(line) >> request.method >> request.path;
    request.body = line.substr(std::min(line.size(), request.method.size() + request.path.size() + 2));
    request.set_header("Content-Type", json);
    const auto reply = service.client()->send(request);
    SCOPED_TRACE(line);
    std::getline(file, line);
    EXPECT_EQ(reply ? std::to_string(reply->status) : "none", line.substr(0, line.find(' ')));
    std::string part = line.substr(std::min(line.size(), line.find(' ')));
    part.erase(0, 1);
    if (const auto at = part.find("URL"); at != std::string::npos) part.replace(at, 3, service.url());
    if (reply && part.empty()) {
      EXPECT_EQ(reply->body, "");
    }
    if (reply) {
      EXPECT_THAT(reply->body, HasSubstr(part));
    }
    ++count;
  } while (std::getline(file, line));
  EXPECT_GT(count, 10);
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

}  // namespace
}  // namespace TalvoConsentSDK::testing
