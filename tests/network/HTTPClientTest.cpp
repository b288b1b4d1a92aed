#include <cmath>
#include <future>
#include <stdexcept>
#include <thread>

#include "TalvoConsentSDK/models/ConsentResponse.h"
#include "TalvoConsentSDK/models/FullConsent.h"
#include "TalvoConsentSDK/network/APIClient.h"
#include "TalvoConsentSDK/network/HTTPClient.h"
#include "TalvoConsentSDK/network/URLSessionHTTPClient.h"
#include "TalvoConsentSDK/platform/Spawn.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {
namespace {

const std::string address = "https://service.example/x";

class HTTPClientTest : public ::testing::Test {
 protected:
  HTTPClientTest() { platform.install(); }

  // The outcome of a request: "" or the error's text.
  template <class Reply>
  std::string end(Task<Reply> request) {
    std::string text = "no end";
    spawn<Reply>(nullptr, std::move(request), [&](const Result<Reply>& result) {
      text = failure(result);
      EXPECT_TRUE(result || result.error().template as<HTTPClientError>());
    });
    platform.settle();
    return text;
  }

  std::string end(const JSONObject& body) {
    std::string text = "no end";
    client.postJSON(url, body, {}, [&](const Result<JSONObject>& reply) {
      text = failure(reply);
      if (const auto* error = reply ? nullptr : reply.error().as<PlatformError>()) {
        text += " (" + error->domain() + " " + std::to_string(error->code()) + ")";
      }
    });
    platform.settle();
    return text;
  }

  MemoryPlatform platform;
  URLSessionHTTPClient client{platform.session};
  URL url = *URL::parse(address);
  FullConsent record;
};

TEST_F(HTTPClientTest, MapsEveryOutcomeToItsResult) {
  const auto expectEnd = [](const std::string& actual, const std::string& expected) {
    EXPECT_THAT(actual, StartsWith(expected));
    EXPECT_TRUE(actual == expected || expected.ends_with("valid JSON")) << actual;
  };
  const auto expectEnds = [&](const Result<URLResponse>& outcome, const std::string& typed,
                              const std::string& untyped) {
    url = *URL::parse(address + std::to_string(platform.session->requests().size()));
    for (const char* method : {"GET", "POST", "PUT"}) platform.session->answer(method, url.text(), outcome);
    expectEnd(end(client.get<ConsentResponse>(url, {})), typed);
    expectEnd(end(client.post<ConsentResponse>(url, record, {})), typed);
    expectEnd(end(client.put<ConsentResponse>(url, record, {})), typed);
    expectEnd(end({}), untyped);
  };
  expectEnds(PlatformError("net", 1, "offline"), "Network error: offline", "Network error: offline");
  for (const auto& [status, body, typed, untyped] : tableOf<4>("network/replies.txt")) {
    expectEnds(replyOf(status, body), unescaped(typed), unescaped(untyped));
  }
  EXPECT_THAT(platform.printer->take(), IsEmpty());
}

TEST_F(HTTPClientTest, SendsWhatItWasGiven) {
  for (const char* method : {"GET", "POST", "PUT"})
    platform.session->answer(method, address, 200, R"({"id":"1"})");
  record.siteId = "s";
  const RequestOptions options{std::make_shared<Cancellation>(), std::chrono::seconds(5), false};
  end(client.get<ConsentResponse>(url, {{"A", "b"}}, options));
  end(client.post<ConsentResponse>(url, record, {{"A", "b"}}));
  end(client.put<ConsentResponse>(url, record, {{"content-type", "text/plain"}}));
  end({{"a", 1}});
  Texts sent;
  for (const URLRequest& request : platform.session->requests()) {
    sent.push_back(request.method + " " + request.body.value_or("-"));
    for (const auto& [name, value] : request.headers) sent.back() += " " + name + "=" + value;
    EXPECT_EQ(request.timeout, std::chrono::seconds(60));
    EXPECT_EQ(request.cancellation, sent.size() == 1 ? options.cancellation : nullptr);
    EXPECT_EQ(request.totalTimeout, sent.size() == 1 ? options.totalTimeout : std::nullopt);
    EXPECT_EQ(request.isPersonal, sent.size() != 1);
  }
  EXPECT_THAT(sent, ElementsAre("GET - A=b", R"(POST {"siteId":"s"} A=b Content-Type=application/json)",
                                R"(PUT {"siteId":"s"} Content-Type=text/plain)",
                                R"(POST {"a":1} Content-Type=application/json)"));
}

TEST_F(HTTPClientTest, SendsNothingIfEncodingFails) {
  record.userId = "\xFF";
  const std::string unwritable = "Network error: Invalid value: The text is not valid UTF-8";
  EXPECT_EQ(end(client.post<ConsentResponse>(url, record, {})), unwritable);
  EXPECT_EQ(end(client.put<ConsentResponse>(url, record, {})), unwritable);
  EXPECT_EQ(end({{"n", std::nan("")}}), "Failed to serialize JSON payload (HTTPClient -1)");
  EXPECT_THAT(platform.session->requests(), IsEmpty());
}

TEST_F(HTTPClientTest, RequestsOnlyTheNamedUser) {
  const APIClient api("https://service.example/", "s",
                      std::shared_ptr<HTTPClient>(&client, [](HTTPClient*) {}));
  std::size_t sent = 0;
  for (const auto& [text, isNamed] : tableOf<2>("network/users.txt")) {
    const std::string user = unescaped(text);
    const std::string path = "public/cookie-consent/s/identified/" + user + "?consentId=c/d?e";
    platform.session->answer("GET", "https://service.example/" + path, 200, "null");
    EXPECT_EQ(end(api.fetchIdentifiedConsent(user, "c/d?e")), isNamed == "yes" ? "" : "Invalid URL") << user;
    EXPECT_EQ(platform.session->requests().size(), isNamed == "yes" ? ++sent : sent);
    EXPECT_TRUE(sent == 0 || platform.session->requests().back().isPersonal);
  }
}

TEST_F(HTTPClientTest, CompletesOnTheSessionsThread) {
  platform.session->answer("POST", address, 200, R"({"id":"1"})");
  client.postJSON(url, {}, {}, [&](const Result<JSONObject>&) {
    EXPECT_TRUE(platform.sessionThread->isCurrent());
    throw std::runtime_error("host's");
  });
  platform.settle();
  EXPECT_THAT(platform.printer->take(), ElementsAre("⚠️ A callback threw: host's"));

  URLSessionHTTPClient inlined(Platform().urlSession);  // its session completes inside the call
  EXPECT_NO_THROW(inlined.postJSON(url, {}, {}, [](const Result<JSONObject>&) { throw 1; }));
}

// A host's session that violates its contract.
struct HostileSession : URLSession {
  std::function<void(const Completion&)> work;
  void run(URLRequest, Completion completion) override { work(completion); }
};

TEST_F(HTTPClientTest, EndsOnceWhateverTheSessionDoes) {
  const auto session = std::make_shared<HostileSession>();
  URLSessionHTTPClient over(session);
  const auto good = replyOf("200", R"({"id":"1"})");
  using Completion = URLSession::Completion;
  const std::pair<std::string, std::function<void(const Completion&)>> table[] = {
      {"Network error: out of order", [](const Completion&) { throw std::runtime_error("out of order"); }},
      {"", [&](const Completion& report) { report(good), throw 1; }},
      {"", [&](const Completion& report) { report(good), report(PlatformError("net", 1, "offline")); }},
      {"", [&](const Completion& report) {
         std::vector<std::future<void>> all;
         for (int n = 0; n < 3; ++n) all.push_back(std::async(std::launch::async, report, good));
       }}};
  for (const auto& [expected, work] : table) {
    session->work = work;
    EXPECT_EQ(end(over.get<ConsentResponse>(url, {})), expected);
    std::atomic<int> ends = 0;
    over.postJSON(url, {}, {}, [&](const Result<JSONObject>& result) {
      ++ends;
      EXPECT_EQ(failure(result), expected);
    });
    EXPECT_EQ(ends, 1);
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
