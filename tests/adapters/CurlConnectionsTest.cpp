// Which connections the libcurl session opens, shares and stops using. Requests that are cancelled, and
// requests that reach a time limit.

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
    server.holdUntilConnections(connections);
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

TEST(CurlConnections, SurviveACancelledRequestOnlyOverHTTP2) {
  const struct {
    Protocol protocol;
    const char *method, *script;
    int connections;  // after the next GET
  } cases[] = {
      {plainHTTP, "GET", "", 2},    {plainHTTP, "GET", R"("HTTP/1.1 200 OK\nContent-Length: 2\n\nx")", 2},
      {plainHTTP, "POST", "", 2},   {secureHTTP1, "GET", R"("HTTP/1.1 200 OK\nContent-Length: 2\n\nx")", 2},
      {secureHTTP2, "GET", "", 1},  {secureHTTP2, "GET", R"(HEADERS:4 "\x88" DATA:0 "x"^16384*64)", 1},
      {secureHTTP2, "POST", "", 2},
  };
  for (const auto& [protocol, method, script, connections] : cases) {
    SCOPED_TRACE(std::string(protocol.name) + " " + method + " " + script);
    std::atomic<bool> isPlayed = false;
    LoopbackServer server = protocol.serve([&](const Received& request, Connection& connection) {
      if (request.target != "/cancelled") return connection.reply(200);
      connection.play(script);
      isPlayed = true;
    });
    SecureCurlURLSession session;
    const auto next = makeRequest("GET", server.url("/", "localhost"));
    EXPECT_EQ(described(await(session, next)), "200");
    auto request = makeRequest(method, server.url("/cancelled", "localhost"));
    request.cancellation = std::make_shared<Cancellation>();
    Outcomes outcomes;
    session.run(request, outcomes.completion());
    waitUntil([&] { return isPlayed.load(); });
    request.cancellation->cancel();
    EXPECT_EQ(described(outcomes), "cancelled");
    EXPECT_EQ(described(await(session, next)), "200");
    EXPECT_EQ(server.connections(), connections);
    EXPECT_EQ(std::ranges::count(server.requests(), "/cancelled", &Received::target), 1);
    EXPECT_EQ(outcomes.wait(1).size(), 1U);
  }
}

TEST(CurlConnections, AreNotReusedIfSilentWhenARequestIsCancelled) {
  LoopbackServer server = secureHTTP2.serve([](const Received& request, Connection& connection) {
    if (request.target == "/") connection.reply(200);
  });
  SecureCurlURLSession session;
  auto stalled = makeRequest("GET", server.url("/stalls", "localhost"));
  stalled.cancellation = std::make_shared<Cancellation>();
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
  auto cancelled = request("/cancelled");  // on stream 3
  cancelled.cancellation = std::make_shared<Cancellation>();
  Outcomes first, second;
  session.run(cancelled, first.completion());
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
  auto cancelled = makeRequest("GET", urlOf("/cancelled"));
  cancelled.cancellation = std::make_shared<Cancellation>();
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

TEST(CurlCancellation, SendsNothingIfItCameFirst) {
  LoopbackServer server = plainHTTP.serve([](auto&, auto& connection) { connection.reply(200); });
  CurlURLSession session;
  auto request = makeRequest("POST", server.url("/"));
  request.cancellation = std::make_shared<Cancellation>();
  request.cancellation->cancel();
  EXPECT_EQ(described(await(session, request)), "cancelled");
  EXPECT_EQ(server.connections(), 0);
}

// The server never answers the handshake.
TEST(CurlCancellation, EndsAConnectionAttemptAndRequestsThatWaitForIt) {
  LoopbackServer server = plainHTTP.serve([](auto&, auto&) {});
  CurlURLSession session;
  const std::string url = "https" + server.url("/").substr(4);
  std::vector<std::pair<std::shared_ptr<Cancellation>, Outcomes>> all(4);
  for (auto& [cancellation, outcomes] : all) {
    auto request = makeRequest("GET", url);
    request.cancellation = cancellation = std::make_shared<Cancellation>();
    session.run(request, outcomes.completion());
  }
  waitUntil([&] { return server.connections() == 1; });
  for (const int number : {1, 0, 3, 2}) {  // first one that waits, then the one that connects
    auto& [cancellation, outcomes] = all[static_cast<std::size_t>(number)];
    cancellation->cancel();
    EXPECT_EQ(described(outcomes), "cancelled");
  }
}

TEST(CurlCancellation, MayComeFromACompletion) {
  LoopbackServer server = secureHTTP2.serve([](const Received& request, Connection& connection) {
    if (request.target == "/") connection.reply(200);
  });
  SecureCurlURLSession session;
  const auto cancellation = std::make_shared<Cancellation>();
  Outcomes stalled, answered;
  for (int count = 0; count < 3; ++count) {
    auto request = makeRequest("GET", server.url("/stalls", "localhost"));
    request.cancellation = cancellation;
    session.run(request, stalled.completion());
  }
  auto request = makeRequest("GET", server.url("/", "localhost"));
  request.cancellation = cancellation;
  session.run(request, answered.completion([&] { cancellation->cancel(); }));
  EXPECT_EQ(described(answered), "200");
  const auto all = stalled.wait(3);
  for (const auto& [outcome, thread] : all) EXPECT_EQ(described(outcome), "cancelled");
  EXPECT_EQ(all.size(), 3U);
}

// Each request ends once, with its reply or as cancelled; what is not cancelled is answered.
TEST(CurlCancellation, MayComeAtAnyTimeFromAnyThread) {
  constexpr std::size_t count = 200;
  for (const Protocol& protocol : {plainHTTP, secureHTTP2}) {
    SCOPED_TRACE(protocol.name);
    LoopbackServer server =
        protocol.serve([](auto&, auto& connection) { connection.reply(200, std::string(20'000, 'x')); });
    std::vector<std::pair<std::shared_ptr<Cancellation>, Outcomes>> all(count);
    for (auto& [cancellation, outcomes] : all) cancellation = std::make_shared<Cancellation>();
    {
      SecureCurlURLSession session;
      std::atomic<std::size_t> started = 0;
      std::thread canceller([&] {
        for (std::size_t number = 0; number < count; number += 2) {
          while (started < std::min(number + number % 7, count)) std::this_thread::yield();
          all[number].first->cancel();
        }
      });
      for (auto& [cancellation, outcomes] : all) {
        auto request = makeRequest("GET", server.url("/", "localhost"));
        request.cancellation = cancellation;
        session.run(std::move(request), outcomes.completion());
        if (++started % 10 == 0) outcomes.wait(1);
      }
      canceller.join();
      for (const auto& [cancellation, outcomes] : all) outcomes.wait(1);
    }
    std::size_t cancelled = 0;
    for (std::size_t number = 0; number < count; ++number) {
      const std::string end = described(all[number].second);
      EXPECT_TRUE(end == "200" || (end == "cancelled" && number % 2 == 0)) << end;
      cancelled += end == "cancelled" ? 1 : 0;
    }
    EXPECT_GT(cancelled, 0U);
  }
}

TEST(CurlCancellation, MayComeWhileTheSessionEnds) {
  LoopbackServer server = plainHTTP.serve([](auto&, auto&) {});
  for (int round = 0; round < 50; ++round) {
    const auto cancellation = std::make_shared<Cancellation>();
    Outcomes outcomes;
    auto session = std::make_unique<CurlURLSession>();
    for (int count = 0; count < 4; ++count) {
      auto request = makeRequest("GET", server.url("/"));
      request.cancellation = cancellation;
      session->run(std::move(request), outcomes.completion());
    }
    const bool isFirst = round % 2 == 0;
    if (isFirst) cancellation->cancel();
    std::thread canceller([&] { cancellation->cancel(); });
    session.reset();
    canceller.join();
    const auto all = outcomes.wait(4);
    EXPECT_EQ(all.size(), 4U);
    for (const auto& [outcome, thread] : all)
      EXPECT_TRUE(described(outcome) == "cancelled" ||
                  (!isFirst && described(outcome).starts_with("error 42 ")));
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
