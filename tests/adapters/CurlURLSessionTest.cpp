// Tests of the libcurl session beyond the conformance suite: the bytes sent, redirects and connections.
// NetworkFaultsTest covers bad networks.

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <thread>

#include <sys/resource.h>

#include "tests/adapters/CurlTest.h"

namespace TalvoConsentSDK {
namespace {

using ::testing::Eq;

TEST(CurlURLSession, SendsExactlyWhatItIsGiven) {
  LoopbackServer server([](auto&, auto& connection) { connection.reply(200); });
  CurlURLSession session;
  std::string large((1U << 20U) + 1, '\0');
  for (std::size_t at = 0; at < large.size(); ++at) large[at] = static_cast<char>(at * 7 >> 3U);
  const struct {
    const char* method;
    std::optional<std::string> body;
    HTTPHeaders headers;
  } cases[] = {
      {"GET", std::nullopt, {{"X-Client-Name", "mobile"}}},
      {"HEAD", std::nullopt, {}},
      {"POST", std::string("\0a\r\n\xff", 5), {{"content-TYPE", "text/plain"}, {"X-Empty", ""}}},
      {"POST", "", {}},
      {"POST", std::nullopt, {}},
      {"PUT", "{}", {{"Content-Type", "application/json"}, {"X-Text", "a;b, \"c\" \xc3\xa9"}}},
      {"PUT", large, {}},
  };
  for (const auto& [method, body, headers] : cases) {
    auto request = makeRequest(method, server.url("/a/../b/./%2e%2E/c%20d?q=%2F&x=../y"));
    request.body = body;
    request.headers = headers;
    const auto outcome = await(session, request);
    ASSERT_TRUE(outcome) << failure(outcome);
    const Received received = server.requests().back();
    EXPECT_EQ(received.method, method);
    EXPECT_EQ(received.target, "/a/../b/./%2e%2E/c%20d?q=%2F&x=../y");
    EXPECT_TRUE(received.body == body.value_or(""));
    EXPECT_EQ(received.headers.count("Content-Length"), method[0] == 'P');
    EXPECT_EQ(received.headers.count("Content-Type"), headers.count("Content-Type"));
    EXPECT_EQ(received.headers.count("Expect"), 0U);
    for (const auto& [name, value] : headers) EXPECT_EQ(received.headers.at(name), value);
  }
}

TEST(CurlURLSession, RefusesWhatCannotBeSentBeforeAnyTraffic) {
  const LoopbackServer server(replyGood);
  CurlURLSession session;
  for (const auto& [url, method, header, value, body, end, text] : tableOf<7>("network/unsendable.txt")) {
    auto request = makeRequest(unescaped(method), url == "HOST" ? server.url("/") : url);
    request.headers[unescaped(header)] = unescaped(value);
    if (!body.empty()) request.body = body;
    EXPECT_THAT(described(await(session, request)), AllOf(StartsWith(end + " "), HasSubstr(text))) << method;
  }
  EXPECT_EQ(server.connections(), 0);
}

// A proxy receives requests to other hosts, but must never receive requests to the loopback host.
TEST(CurlURLSession, SendsPlainHTTPToTheLoopbackHostOnly) {
  LoopbackServer proxy([](auto& request, auto& connection) { connection.reply(200, request.target); });
  LoopbackServer server([](auto& request, auto& connection) {
    const bool redirects = request.target == "/away";
    connection.reply(redirects ? 302 : 200, "direct", redirects ? "Location: http://other.example/\r\n" : "");
  });
  setenv("http_proxy", proxy.url("").c_str(), 1);
  CurlURLSession session;
  for (const std::string host : {"127.0.0.1", "127.1.2.3", "localhost", "LocalHost", "[::1]"}) {
    const auto outcome = await(session, makeRequest("GET", server.url("/", host)));
    // Connecting may fail, because the server listens on one address only.
    EXPECT_THAT(described(outcome), AnyOf(Eq("200 direct"), StartsWith("error 7 "))) << host;
  }
  auto refused = tableOf<1>("network/refused.txt");
  refused.push_back({server.url("/away")});
  for (const auto& [url] : refused) {
    const auto outcome = await(session, makeRequest("GET", url));
    EXPECT_THAT(described(outcome), AllOf(StartsWith("error 1 "), HasSubstr("Plain http is refused"))) << url;
  }
  EXPECT_EQ(proxy.connections(), 0);

  CurlOptions options;
  options.allowsPlainHTTP = true;
  options.maxReply = 25;
  CurlURLSession permissive(options);
  const auto get = [&](const char* url) { return described(await(permissive, makeRequest("GET", url))); };
  EXPECT_THAT(get("http://consent.example/xyz"), StartsWith("error 63 "));
  EXPECT_EQ(get("http://consent.example/x"), "200 http://consent.example/x");
}

TEST(CurlURLSession, ReportsTheFinalReplysHeadersAndURL) {
  std::map<std::string, std::string> scripts;
  const auto play = [&](const Received& request, Connection& connection) {
    connection.play(scripts.at(split(request.target, '/').at(1)));
  };
  const LoopbackServer http(play);
  const LoopbackServer http2(play, SecureCurlURLSession::identity(), 0, LoopbackServer::http2);
  SecureCurlURLSession session;
  const auto table = tableOf<5>("network/headers.txt");
  for (const auto& [name, server, script, headers, end] : table) scripts[name] = script;
  for (const auto& [name, server, script, headers, end] : table) {
    SCOPED_TRACE(name);
    const std::string url = (server == "http" ? http.url("/") : http2.url("/", "localhost"));
    const auto outcome = await(session, makeRequest("GET", url + name + "/%7e?q=./x"));
    ASSERT_TRUE(outcome) << failure(outcome);
    Texts found;
    for (const auto& [field, value] : outcome->headers) found.push_back(field + "=" + value);
    EXPECT_EQ(joined(found), headers);
    EXPECT_EQ(outcome->url->text(), url + end + "/%7e?q=./x");
  }
}

TEST(CurlURLSession, RepeatsAGetOverClosedConnections) {
  LoopbackServer server([connection = 0](const Received& request, Connection& answer) mutable {
    if (request.connection == connection) return answer.close();  // each connection takes one request
    connection = request.connection;
    answer.reply(200);
  });
  CurlURLSession session;
  for (int count = 1; count <= 12; ++count) {
    EXPECT_TRUE(await(session, makeRequest("GET", server.url("/a/../b/%2e%2E"))));
    EXPECT_EQ(server.connections(), count);
    EXPECT_EQ(server.requests().back().target, "/a/../b/%2e%2E");
  }
}

TEST(CurlURLSession, SharesAnHTTP2ConnectionWhileRepliesArrive) {
  LoopbackServer server([](auto&, auto& connection) { connection.reply(200, std::string(9999, 'x')); },
                        SecureCurlURLSession::identity(), 0, LoopbackServer::http2);
  int left = 500;
  std::function<void()> runAnother;
  Outcomes outcomes;
  SecureCurlURLSession session;
  const auto request = makeRequest("GET", server.url("/", "localhost"));
  EXPECT_TRUE(await(session, request));
  runAnother = [&] {
    if (left-- > 0) session.run(request, outcomes.completion(runAnother));
  };
  for (int count = 0; count < 20; ++count) session.run(request, outcomes.completion(runAnother));
  for (const auto& [outcome, thread] : outcomes.wait(520)) EXPECT_TRUE(outcome);
  EXPECT_EQ(server.connections(), 1);
}

TEST(CurlURLSession, WritesNoTLSSecretsEvenIfTheEnvironmentAsks) {
  const auto* const identity = SecureCurlURLSession::identity();
  const std::string file = identity->certificate().string() + ".keys";
  setenv("SSLKEYLOGFILE", file.c_str(), 1);
  LoopbackServer server([](auto&, auto& connection) { connection.reply(200); }, identity);
  SecureCurlURLSession session;
  EXPECT_TRUE(await(session, makeRequest("GET", server.url("/", "localhost"))));
  EXPECT_TRUE(std::ifstream(file)) << "libcurl did not open the key log";
  EXPECT_EQ(contentOf(file), "");
}

TEST(CurlURLSession, RunsManyRequestsAtOnce) {
  constexpr int count = 200;
  std::atomic<int> waiting = 0;
  LoopbackServer server([&](const Received& request, Connection& connection) {
    ++waiting;  // no request is answered before all have arrived
    for (int now = waiting; now < count; now = waiting) waiting.wait(now);
    waiting.notify_all();
    connection.reply(200, request.body);
  });
  CurlURLSession session;
  std::vector<Outcomes> outcomes(count);
  for (int number = 0; number < count; ++number) {
    auto request = makeRequest("POST", server.url("/"));
    request.body = std::to_string(number);
    session.run(request, outcomes[static_cast<std::size_t>(number)].completion());
  }
  for (int number = 0; number < count; ++number) {
    const auto outcome = outcomes[static_cast<std::size_t>(number)].wait(1).front().first;
    EXPECT_EQ(described(outcome), "200 " + std::to_string(number));
  }
}

TEST(CurlURLSession, MayBeDestroyedByACompletion) {
  const LoopbackServer server([](const Received& request, Connection& connection) {
    if (request.target != "/stalled") connection.reply(200);
  });
  Outcomes stalled, last;
  auto session = std::make_shared<CurlURLSession>();
  session->run(makeRequest("GET", server.url("/stalled")), stalled.completion());
  URLSession& reference = *session;
  reference.run(makeRequest("GET", server.url("/")),
                last.completion([session = std::move(session)]() mutable { session.reset(); }));
  EXPECT_EQ(described(last.wait(1).front().first), "200");
  EXPECT_THAT(described(stalled.wait(1).front().first), StartsWith("error 42 "));
}

TEST(CurlURLSession, CountsBytesAndTimeBeyond32Bits) {
  LoopbackServer server([](const Received& request, Connection& connection) {
    const std::string length = request.target.substr(1);
    connection.play(R"("HTTP/1.1 200 OK\nContent-Length: )" + length + R"(\n\n" "x"*)" +
                    (length.size() < 10 ? length : "1") + " close");
  });
  for (const auto& [method, length, maxReply, end] : tableOf<4>("network/lengths.txt")) {
    CurlOptions options;
    options.maxReply = static_cast<std::size_t>(std::min<std::uintmax_t>(std::stoull(maxReply), SIZE_MAX));
    CurlURLSession session(options);
    auto request = makeRequest(method, server.url("/" + length));
    request.timeout = std::chrono::milliseconds::max();
    EXPECT_THAT(described(await(session, request)), StartsWith(end)) << length;
  }
}

TEST(CurlURLSession, ReportsWhyItCannotBeMade) {
  CurlOptions missing;
  missing.certificates = "/nowhere/ca.pem";
  EXPECT_THROW(CurlURLSession{missing}, PlatformError);  // this also initialises libcurl
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit none{0, before.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);
  EXPECT_THROW(CurlURLSession(), PlatformError);
  setrlimit(RLIMIT_NOFILE, &before);
}

}  // namespace
}  // namespace TalvoConsentSDK
