// Which connections the libcurl session opens, shares and leaves; requests that are cancelled or run out of
// time.

#include <atomic>
#include <chrono>
#include <thread>

#include "testing/LoopbackServer.h"
#include "testing/URLSessionConformance.h"
#include "tests/adapters/SecureCurlURLSession.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

using namespace std::chrono_literals;
using Connection = LoopbackServer::Connection;
using Received = LoopbackServer::Request;

// "200", "cancelled", or "error CODE TEXT".
std::string described(const Result<URLResponse>& outcome) {
  if (outcome) return std::to_string(outcome->statusCode.value_or(0));
  const auto* error = outcome.error().as<PlatformError>();
  if (!error) return outcome.error().what();
  if (error->domain() == cancelledError().domain() && error->code() == cancelledError().code())
    return "cancelled";
  return "error " + std::to_string(error->code()) + " " + error->what();
}

std::string described(const Outcomes& outcomes) {
  const auto all = outcomes.wait(1);
  return all.size() == 1 ? described(all.front().first) : "reported " + std::to_string(all.size()) + " times";
}

void waitUntil(const std::function<bool()>& condition) {
  for (const auto end = std::chrono::steady_clock::now() + 30s; !condition();
       std::this_thread::sleep_for(1ms))
    ASSERT_LT(std::chrono::steady_clock::now(), end);
}

struct Protocol {
  const char* name;
  const TestCertificate* identity;
  const char* greeting;

  LoopbackServer serve(LoopbackServer::Handler handler) const {
    return LoopbackServer(std::move(handler), identity, 0, greeting);
  }
};
const Protocol plainHTTP{"http", nullptr, ""};
const Protocol secureHTTP1{"HTTP/1.1 over TLS", SecureCurlURLSession::identity(), ""};
const Protocol secureHTTP2{"HTTP/2 over TLS", SecureCurlURLSession::identity(), LoopbackServer::http2};

TEST(CurlConnections, AreSharedOverHTTP2AndOpenedAtOnceOtherwise) {
  const char* const stays = "X-A: 1\r\n";
  const char* const closes = "Connection: close\r\n";
  const struct {
    Protocol protocol;
    const char* first;  // headers of an earlier reply, or null
    int connections;
  } cases[] = {
      {plainHTTP, nullptr, 3},  {plainHTTP, stays, 3},     {secureHTTP1, stays, 3},
      {secureHTTP1, closes, 4}, {secureHTTP2, nullptr, 1}, {secureHTTP2, stays, 1},
  };
  for (const auto& [protocol, first, connections] : cases) {
    SCOPED_TRACE(std::string(protocol.name) + " " + (first ? first : ""));
    std::atomic<bool> holds = false;
    LoopbackServer server = protocol.serve([&, headers = first](auto& request, auto& connection) {
      holds.wait(true);
      connection.reply(200, "", request.target == "/first" ? headers : "");
    });
    SecureCurlURLSession session;
    if (first) {
      EXPECT_EQ(described(await(session, makeRequest("GET", server.url("/first", "localhost")))), "200");
    }
    holds = connections > 1;  // so that no connection is free again before all three requests have arrived
    server.awaitConnections(connections);
    Outcomes outcomes;
    for (int count = 0; count < 3; ++count)
      session.run(makeRequest("GET", server.url("/", "localhost")), outcomes.completion());
    waitUntil([&] { return server.requests().size() == (first ? 4U : 3U); });
    holds = false;
    holds.notify_all();
    for (const auto& [outcome, thread] : outcomes.wait(3)) EXPECT_EQ(described(outcome), "200");
    EXPECT_EQ(server.connections(), connections);
  }
}

TEST(CurlConnections, ResumeTLSSessionsAndAreFreshForABody) {
  for (const Protocol& protocol : {secureHTTP1, secureHTTP2}) {
    for (const char* method : {"POST", "PUT"}) {
      SCOPED_TRACE(std::string(protocol.name) + " " + method);
      LoopbackServer server = protocol.serve([](const Received& request, Connection& connection) {
        if (request.target != "/stalls") connection.reply(200);
      });
      SecureCurlURLSession session;
      const auto urlOf = [&](const char* path) { return server.url(path, "localhost"); };
      EXPECT_EQ(described(await(session, makeRequest("GET", urlOf("/")))), "200");
      Outcomes stalls;  // keeps the first connection and libcurl's first handle busy
      session.run(makeRequest("GET", urlOf("/stalls")), stalls.completion());
      waitUntil([&] { return server.requests().size() == 2; });
      EXPECT_EQ(described(await(session, makeRequest(method, urlOf("/")))), "200");
      const auto requests = server.requests();
      EXPECT_EQ(requests.at(1).connection, 1);
      EXPECT_EQ(requests.at(2).connection, 2);
      EXPECT_FALSE(requests.at(1).hasResumedSession);
      EXPECT_TRUE(requests.at(2).hasResumedSession);
    }
  }
}

TEST(CurlTimeLimits, EndARequestInTime) {
  LoopbackServer server = plainHTTP.serve([](const Received& request, Connection& connection) {
    if (request.target == "/stalls") return connection.waitForPeer();
    if (request.target == "/slow")
      return connection.play(
          R"("HTTP/1.1 200 OK\n\n" pause "x" pause "x" pause "x" pause "x" pause "x" close)");
    connection.play(R"(pause "HTTP/1.1 302 Found\nLocation: /\nContent-Length: 0\n\n")");
  });
  const struct {
    const char* path;
    std::chrono::milliseconds timeout;
    std::optional<std::chrono::milliseconds> totalTimeout, maxTimeout, maxTotalTimeout;
    const char* end;
  } cases[] = {
      {"/slow", 5s, {}, {}, {}, "200"},
      {"/slow", 5s, std::chrono::milliseconds::max(), {}, std::chrono::milliseconds::max(), "200"},
      {"/slow", 5s, 120ms, {}, {}, "error 28 No reply within 120 ms"},
      {"/slow", 5s, 5s, {}, 120ms, "error 28 No reply within 120 ms"},
      {"/slow", 5s, 120ms, {}, 5s, "error 28 No reply within 120 ms"},
      {"/", 5s, 120ms, {}, {}, "error 28 No reply within 120 ms"},
      {"/stalls", 5s, {}, 120ms, {}, "error 28 No progress for 120 ms"},
      {"/stalls", 120ms, {}, 5s, 5s, "error 28 No progress for 120 ms"},
      {"/stalls", 5s, -1ms, {}, {}, "error 28 No reply within 1 ms"},
  };
  for (const auto& [path, timeout, totalTimeout, maxTimeout, maxTotalTimeout, end] : cases) {
    CurlOptions options;
    options.maxTimeout = maxTimeout;
    options.maxTotalTimeout = maxTotalTimeout;
    CurlURLSession session(options);
    auto request = makeRequest("GET", server.url(path));
    request.timeout = timeout;
    request.totalTimeout = totalTimeout;
    EXPECT_EQ(described(await(session, request)), end) << path;
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
