// Which connections the libcurl session opens, shares and stops using. Requests that are cancelled, and
// requests that reach a time limit.

#include <atomic>
#include <thread>

#include "tests/adapters/CurlTest.h"

namespace TalvoConsentSDK {
namespace {

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
  std::string name;
  const TestCertificate* identity;
  const char* greeting;

  LoopbackServer serve(LoopbackServer::Handler handler) const {
    return LoopbackServer(std::move(handler), identity, 0, greeting);
  }
};
const Protocol plainHTTP{"http", nullptr, ""};
const Protocol secureHTTP1{"https", SecureCurlURLSession::identity(), ""};
const Protocol secureHTTP2{"http2", SecureCurlURLSession::identity(), LoopbackServer::http2};

const Protocol& protocolOf(const std::string& name) {
  return name == "http" ? plainHTTP : name == "https" ? secureHTTP1 : secureHTTP2;
}

TEST(CurlConnections, AreSharedOverHTTP2AndOpenedAtOnceOtherwise) {
  for (const auto& [protocol, first, opened] : tableOf<3>("network/connections.txt")) {
    SCOPED_TRACE(protocol + " " + first);
    const int connections = std::stoi(opened);
    const bool hasFirst = first != "none";
    std::atomic<bool> holds = false;
    LoopbackServer server =
        protocolOf(protocol).serve([&, closes = first == "closes"](auto& request, auto& connection) {
          holds.wait(true);
          connection.reply(200, "", closes && request.target == "/first" ? "Connection: close\r\n" : "");
        });
    SecureCurlURLSession session;
    if (hasFirst) {
      EXPECT_EQ(described(await(session, makeRequest("GET", server.url("/first", "localhost")))), "200");
    }
    holds = connections > 1;  // so that no connection is free again before all three requests have arrived
    server.holdUntilConnections(connections);
    Outcomes outcomes;
    for (int count = 0; count < 3; ++count)
      session.run(makeRequest("GET", server.url("/", "localhost")), outcomes.completion());
    waitUntil([&] { return server.requests().size() == (hasFirst ? 4U : 3U); });
    holds = false;
    holds.notify_all();
    for (const auto& [outcome, thread] : outcomes.wait(3)) EXPECT_EQ(described(outcome), "200");
    EXPECT_EQ(server.connections(), connections);
  }
}

// The first handshake hangs until there is a second connection.
TEST(CurlConnections, AreNotWaitedForAfterARequestHasWaitedInVain) {
  LoopbackServer server = secureHTTP2.serve([](auto&, auto& connection) { connection.reply(200); });
  server.holdUntilConnections(2);
  SecureCurlURLSession session;
  const auto request = makeRequest("GET", server.url("/", "localhost"));
  Outcomes first;
  session.run(request, first.completion());
  auto limited = request;
  limited.totalTimeout = 300ms;
  EXPECT_EQ(described(await(session, limited)), "error 28 No reply within 300 ms");
  EXPECT_EQ(described(await(session, request)), "200");
  EXPECT_EQ(described(first), "200");
}

TEST(CurlConnections, ResumeTLSSessionsAndAreFreshForABody) {
  for (const Protocol& protocol : {secureHTTP1, secureHTTP2}) {
    for (const char* method : {"POST", "PUT"}) {
      SCOPED_TRACE(protocol.name + " " + method);
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

TEST(CurlConnections, SurviveACancelledRequestOnlyOverHTTP2) {
  for (const auto& [protocol, method, script, connections] : tableOf<4>("network/cancelled.txt")) {
    SCOPED_TRACE(protocol + " " + method + " " + script);
    std::atomic<bool> isPlayed = false;
    LoopbackServer server =
        protocolOf(protocol).serve([&, &played = script](const Received& request, Connection& connection) {
          if (request.target != "/cancelled") return connection.reply(200);
          connection.play(played);
          isPlayed = true;
        });
    SecureCurlURLSession session;
    const auto next = makeRequest("GET", server.url("/", "localhost"));
    EXPECT_EQ(described(await(session, next)), "200");
    const auto request = makeCancellable(method, server.url("/cancelled", "localhost"));
    Outcomes outcomes;
    session.run(request, outcomes.completion());
    waitUntil([&] { return isPlayed.load(); });
    request.cancellation->cancel();
    EXPECT_EQ(described(outcomes), "cancelled");
    EXPECT_EQ(described(await(session, next)), "200");
    EXPECT_EQ(std::to_string(server.connections()), connections);
    EXPECT_EQ(std::ranges::count(server.requests(), "/cancelled", &Received::target), 1);
    EXPECT_EQ(outcomes.wait(1).size(), 1U);
  }
}

TEST(CurlConnections, AreNotReusedIfSilentWhenARequestIsCancelled) {
  LoopbackServer server = secureHTTP2.serve([](const Received& request, Connection& connection) {
    if (request.target == "/") connection.reply(200);
  });
  SecureCurlURLSession session;
  const auto stalled = makeCancellable("GET", server.url("/stalls", "localhost"));
  Outcomes outcomes;
  session.run(stalled, outcomes.completion());
  waitUntil([&] { return server.requests().size() == 1; });
  LoopbackServer other([](auto&, auto&) {});
  auto timed = makeRequest("GET", other.url("/"));
  timed.timeout = 2100ms;
  EXPECT_EQ(described(await(session, timed)), "error 28 No progress for 2100 ms");
  stalled.cancellation->cancel();
  EXPECT_EQ(described(outcomes), "cancelled");
  EXPECT_EQ(described(await(session, makeRequest("GET", server.url("/", "localhost")))), "200");
  EXPECT_EQ(server.connections(), 2);
}

TEST(CurlConnections, CarryOtherStreamsAfterACancelledOneIsReset) {
  LoopbackServer server = secureHTTP2.serve([](const Received& request, Connection& connection) {
    if (request.target == "/end") connection.play(R"(HEADERS:5:5 "\x88")");
    if (request.target == "/" || request.target == "/end") connection.reply(200);
  });
  SecureCurlURLSession session;
  const auto request = [&](const char* path) { return makeRequest("GET", server.url(path, "localhost")); };
  EXPECT_EQ(described(await(session, request("/"))), "200");
  const auto cancelled = makeCancellable("GET", request("/cancelled").url.text());
  Outcomes first, second;
  session.run(cancelled, first.completion());  // on stream 3
  waitUntil([&] { return server.requests().size() == 2; });
  session.run(request("/stays"), second.completion());  // on stream 5
  waitUntil([&] { return server.requests().size() == 3; });
  cancelled.cancellation->cancel();
  EXPECT_EQ(described(first), "cancelled");
  // RST_STREAM with the code STREAM_CLOSED
  waitUntil([&] { return server.seen(std::string("\0\0\4\3\0\0\0\0\3\0\0\0\5", 13)) == 1; });
  EXPECT_EQ(described(await(session, request("/end"))), "200");
  EXPECT_EQ(described(second), "200");
  EXPECT_EQ(server.connections(), 1);
}

// libcurl 7.88 keeps a pointer to the handle of a request that waits until the service allows another stream.
TEST(CurlConnections, CarryTheNextRequestAfterAWaitingOneIsCancelled) {
  std::atomic<bool> holds = true;
  LoopbackServer server = secureHTTP2.serve([&](const Received& request, Connection& connection) {
    connection.reply(200);
    if (request.target != "/first") return;
    connection.play(R"(SETTINGS:0:0 "\x00\x03\x00\x00\x00\x00")");
    holds.wait(true);
    connection.play(R"(SETTINGS:0:0 "\x00\x03\x00\x00\x00\x64")");
  });
  LoopbackServer other([](auto&, auto& connection) { connection.reply(200); });
  SecureCurlURLSession session;
  const auto urlOf = [&](const char* path) { return server.url(path, "localhost"); };
  EXPECT_EQ(described(await(session, makeRequest("GET", urlOf("/first")))), "200");
  const auto cancelled = makeCancellable("GET", urlOf("/cancelled"));
  Outcomes outcomes;
  session.run(cancelled, outcomes.completion());
  EXPECT_EQ(described(await(session, makeRequest("GET", other.url("/")))), "200");  // `cancelled` has begun
  cancelled.cancellation->cancel();
  EXPECT_EQ(described(outcomes), "cancelled");
  holds = false;
  holds.notify_all();
  for (int count = 0; count < 3; ++count)
    EXPECT_EQ(described(await(session, makeRequest("GET", urlOf("/next")))), "200");
  EXPECT_EQ(server.connections(), 1);
  EXPECT_EQ(std::ranges::count(server.requests(), "/cancelled", &Received::target), 0);
}

// The server never answers the handshake.
TEST(CurlCancellation, EndsAConnectionAttemptAndRequestsThatWaitForIt) {
  LoopbackServer server = plainHTTP.serve([](auto&, auto&) {});
  CurlURLSession session;
  const std::string url = "https" + server.url("/").substr(4);
  std::vector<std::pair<URLRequest, Outcomes>> all;
  for (int number = 0; number < 4; ++number) {
    all.emplace_back(makeCancellable("GET", url), Outcomes());
    session.run(all.back().first, all.back().second.completion());
  }
  waitUntil([&] { return server.connections() == 1; });
  for (const int number : {1, 0, 3, 2}) {  // first one that waits, then the one that connects
    auto& [request, outcomes] = all[static_cast<std::size_t>(number)];
    request.cancellation->cancel();
    EXPECT_EQ(described(outcomes), "cancelled");
  }
}

// A session that is destroyed ends its requests. Another thread may cancel them before or meanwhile.
TEST(CurlCancellation, MayComeWhileTheSessionEnds) {
  LoopbackServer server = plainHTTP.serve([](auto&, auto&) {});
  for (int round = 0; round < 60; ++round) {
    const bool isFirst = round % 3 == 0, isCancelled = round % 3 != 1;
    const auto request = makeCancellable("GET", server.url("/"));
    Outcomes outcomes;
    auto session = std::make_unique<CurlURLSession>();
    for (int count = 0; count < 4; ++count) session->run(request, outcomes.completion());
    if (isFirst) request.cancellation->cancel();
    std::thread canceller([&] {
      if (isCancelled) request.cancellation->cancel();
    });
    session.reset();
    canceller.join();
    const auto all = outcomes.wait(4);
    EXPECT_EQ(all.size(), 4U);
    for (const auto& [outcome, thread] : all) {
      const std::string end = described(outcome);
      EXPECT_TRUE(end == "cancelled" ? isCancelled : !isFirst && end.starts_with("error 42 ")) << end;
      EXPECT_NE(thread, std::this_thread::get_id());
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
  const auto limit = [](const std::string& text) -> std::optional<std::chrono::milliseconds> {
    if (text.empty()) return std::nullopt;
    return std::chrono::milliseconds(std::stoll(text));
  };
  for (const auto& [path, timeout, total, maxTimeout, maxTotal, end] : tableOf<6>("network/limits.txt")) {
    CurlOptions options;
    options.maxTimeout = limit(maxTimeout);
    options.maxTotalTimeout = limit(maxTotal);
    CurlURLSession session(options);
    auto request = makeRequest("GET", server.url(path));
    request.timeout = limit(timeout).value();
    request.totalTimeout = limit(total);
    EXPECT_THAT(described(await(session, request)), StartsWith(end)) << path;
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
