// Tests of the libcurl session beyond the conformance suite: the bytes sent, redirects and connections.
// NetworkFaultsTest covers bad networks.

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <thread>

#include <sys/resource.h>

#include "testing/LoopbackServer.h"
#include "testing/URLSessionConformance.h"
#include "tests/adapters/SecureCurlURLSession.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

using namespace std::chrono_literals;
using ::testing::Not;
using Connection = LoopbackServer::Connection;
using Received = LoopbackServer::Request;

// The error code of an outcome; 0 for success.
int codeOf(const Result<URLResponse>& outcome) {
  if (outcome) return 0;
  const auto* error = outcome.error().as<PlatformError>();
  EXPECT_TRUE(error && error->domain() == "CURL" && !error->localizedDescription().empty());
  return error ? error->code() : -1;
}

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
  LoopbackServer server([](auto&, auto& connection) { connection.reply(200); });
  CurlURLSession session;
  const std::string good = server.url("/");
  const struct {
    std::string url, method, header, value, text;
    int code;
  } cases[] = {
      {good, "GET", "X-A", "secret\r\nX-B: 1", "X-A", 43},
      {good, "GET", "X-A", "secret\nX-B: 1", "X-A", 43},
      {good, "GET", "X-A", std::string("a\0b", 3), "NUL", 43},
      {good, "GET", "X-A\r\nX-B", "1", "name", 43},
      {good, "GET", "", "1", "name", 43},
      {good, "DELETE", "X-A", "1", "method", 43},
      {good, "GET / HTTP/1.1\r\nX", "X-A", "1", "method", 43},
      {"ftp://127.0.0.1/x", "GET", "X-A", "1", "ftp", 1},
      {"file:///etc/hostname", "GET", "X-A", "1", "file", 1},
      {"mailto:somebody@consent.example", "GET", "X-A", "1", "URL", 3},
  };
  for (const auto& [url, method, header, value, text, code] : cases) {
    auto request = makeRequest(method, url);
    request.headers[header] = value;
    const auto outcome = await(session, request);
    EXPECT_EQ(codeOf(outcome), code) << url << " " << failure(outcome);
    EXPECT_THAT(failure(outcome), AllOf(HasSubstr(text), Not(HasSubstr("secret"))));
  }
  auto withBody = makeRequest("GET", good);
  withBody.body = "secret";
  EXPECT_EQ(codeOf(await(session, withBody)), 43);
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
    EXPECT_TRUE(outcome ? outcome->body == "direct" : codeOf(outcome) == 7) << host << failure(outcome);
  }
  auto refused = tableOf<1>("network/refused.txt");
  refused.push_back({server.url("/away")});
  for (const auto& [url] : refused) {
    const auto outcome = await(session, makeRequest("GET", url));
    EXPECT_EQ(codeOf(outcome), 1) << url;
    EXPECT_THAT(failure(outcome), AllOf(HasSubstr("Plain http is refused"), Not(HasSubstr("secret"))));
  }
  EXPECT_EQ(proxy.connections(), 0);

  CurlOptions options;
  options.allowsPlainHTTP = true;
  options.maxReply = 25;
  CurlURLSession permissive(options);
  EXPECT_EQ(codeOf(await(permissive, makeRequest("GET", "http://consent.example/xyz"))), 63);
  EXPECT_EQ(await(permissive, makeRequest("GET", "http://consent.example/x")).value().body,
            "http://consent.example/x");
}

TEST(CurlURLSession, ReportsTheFinalReplysHeadersAndURL) {
  const struct {
    const char* script;
    HTTPHeaders headers;
    int end;  // the case whose URL answers
  } cases[] = {
      {R"("HTTP/1.1 200 OK\nVary: A\ncache-control:no-cache\nVARY:  B \nX-Empty:\nContent-Length: 0\n\n")",
       {{"Vary", "A, B"}, {"cache-control", "no-cache"}, {"X-Empty", ""}, {"Content-Length", "0"}},
       0},
      {R"("HTTP/1.1 103 Early Hints\nLink: a\n\nHTTP/1.1 200 OK\nContent-Length: 0\nETag: x\n\n")",
       {{"ETag", "x"}, {"Content-Length", "0"}},
       1},
      {R"("HTTP/1.1 200 OK\nVary : A,\n \x09B\nX A: b\n c\nTransfer-Encoding: chunked\n\n0\nETag: late\n\n")",
       {{"Vary", "A, B"}, {"Transfer-Encoding", "chunked"}},
       2},
      {R"("HTTP/1.1 304 Not Modified\nETag: y\n\n")", {{"ETag", "y"}}, 3},
      {R"("HTTP/1.1 302 Found\nETag: z\nLocation: /1/%7e?q=./x\nContent-Length: 0\n\n")",
       {{"ETag", "x"}, {"Content-Length", "0"}},
       1},
  };
  const LoopbackServer server([&](const Received& request, Connection& connection) {
    connection.play(cases[std::stoul(request.target.substr(1))].script);
  });
  const LoopbackServer http2(
      [](auto&, auto& connection) {
        connection.play(R"(HEADERS:4 "\x08\x03103\x00\x04link\x01a")");
        connection.reply(200, "", "ETag: x\r\nVary: A\r\nVary: B\r\n");
      },
      SecureCurlURLSession::identity(), 0, LoopbackServer::http2);
  SecureCurlURLSession session;
  for (std::size_t number = 0; number < std::size(cases); ++number) {
    const auto urlOf = [&](std::size_t each) {
      return server.url("/" + std::to_string(each) + "/%7e?q=./x");
    };
    const auto outcome = await(session, makeRequest("GET", urlOf(number)));
    ASSERT_TRUE(outcome) << failure(outcome);
    EXPECT_THAT(outcome->headers, ::testing::ContainerEq(cases[number].headers)) << number;
    EXPECT_EQ(outcome->url->text(), urlOf(static_cast<std::size_t>(cases[number].end)));
  }
  const auto outcome = await(session, makeRequest("GET", http2.url("/", "localhost")));
  ASSERT_TRUE(outcome) << failure(outcome);
  EXPECT_EQ(outcome->headers, (HTTPHeaders{{"etag", "x"}, {"vary", "A, B"}, {"content-length", "0"}}));
}

TEST(CurlURLSession, FollowsRedirectsAsTheirStatusSays) {
  LoopbackServer server([](const Received& request, Connection& connection) {
    const std::string status = request.target.substr(1, request.target.find('/', 1) - 1);
    if (status == "end") return connection.reply(200, "end");
    connection.reply(std::stoi(status), "gone", "Location: ../end/here%20?q\r\n");
  });
  CurlURLSession session;
  const auto table = tableOf<3>("network/redirects.txt");
  for (const auto& [method, status, finalMethod] : table) {
    SCOPED_TRACE(method + " " + status);
    auto request = makeRequest(method, server.url("/" + status + "/x"));
    if (method[0] == 'P') request.body = "body";
    request.headers = {{"Content-Type", "text/plain"}, {"X-Client-Name", "mobile"}};
    const auto outcome = await(session, request);
    if (finalMethod == "ends") {
      EXPECT_EQ(codeOf(outcome), 65);
      continue;
    }
    ASSERT_TRUE(outcome) << failure(outcome);
    EXPECT_EQ(outcome->statusCode, finalMethod.empty() ? std::stoi(status) : 200);
    if (finalMethod.empty()) continue;
    if (method != "HEAD") {
      EXPECT_EQ(outcome->body, "end");
    }
    const Received last = server.requests().back();
    EXPECT_EQ(last.target, "/end/here%20?q");
    EXPECT_EQ(last.method, finalMethod);
    EXPECT_EQ(last.body, finalMethod[0] == 'P' ? "body" : "");
    EXPECT_EQ(last.headers.count("Content-Type"), finalMethod[0] == 'P' || finalMethod == method);
    EXPECT_EQ(last.headers.at("X-Client-Name"), "mobile");
  }
}

TEST(CurlURLSession, FollowsTwentyRedirectsAndLeavesOriginsWithoutCredentials) {
  LoopbackServer other([](const Received& request, Connection& connection) {
    const bool first = request.target == "/";
    connection.reply(first ? 308 : 200, "theirs", first ? "Location: /then\r\n" : "");
  });
  // "/302" redirects to the other origin at once, "/here/302" first redirects within this one.
  LoopbackServer server([&](const Received& request, Connection& connection) {
    const std::string& target = request.target;
    const std::string next = target == "/"                 ? "/x y\xc3\xa9/302"
                             : target.starts_with("/here") ? target.substr(5)
                                                           : other.url("/");
    connection.reply(std::stoi(target == "/" ? "307" : target.substr(target.size() - 3)), "",
                     "Location: " + next + "\r\n");
  });
  CurlURLSession session;
  const auto run = [&](const char* method, std::string url) {
    auto request = makeRequest(method, url.replace(url.find("://"), 3, "://name:secret@"));
    if (*method == 'P') request.body = "{}";
    request.headers = {{"authorization", "secret"}, {"Proxy-Authorization", "secret"}, {"Cookie", "secret"}};
    for (const char* name : {"X-Client-Name", "Content-Type"}) request.headers[name] = "text/plain";
    return await(session, request);
  };
  for (const char* method : {"POST", "PUT"}) {
    for (const std::string path : {"/301", "/302", "/303", "/307", "/308", "/here/303", "/here/307"}) {
      const auto outcome = run(method, server.url(path));
      EXPECT_EQ(codeOf(outcome), 47) << method << " " << path;
      EXPECT_THAT(failure(outcome), HasSubstr("to another origin"));
    }
  }
  EXPECT_EQ(other.connections(), 0);

  EXPECT_TRUE(run("GET", server.url("/")));
  EXPECT_EQ(server.requests().back().target, "/x%20y%c3%a9/302");
  EXPECT_EQ(server.requests().back().headers.at("Cookie"), "secret");
  EXPECT_EQ(other.requests().back().target, "/then");
  for (const Received& received : other.requests()) {
    EXPECT_EQ(received.headers.count("Authorization"), 0U);
    for (const auto& [name, value] : received.headers) EXPECT_NE(value, "secret") << name;
    EXPECT_EQ(received.headers.at("X-Client-Name") + received.headers.at("Content-Type"),
              "text/plaintext/plain");
  }

  LoopbackServer chain([](const Received& request, Connection& connection) {
    const int left = std::stoi(request.target.substr(1));
    if (left == 0) return connection.reply(200);
    connection.reply(302, "", "Location: /" + std::to_string(left - 1) + "\r\n");
  });
  EXPECT_EQ(codeOf(run("POST", chain.url("/20"))), 0);
  EXPECT_EQ(codeOf(run("POST", chain.url("/21"))), 47);
  EXPECT_EQ(chain.requests().size(), 42U);
}

TEST(CurlURLSession, ReusesConnections) {
  LoopbackServer server([](auto&, auto& connection) { connection.reply(200); });
  CurlURLSession session;
  for (int count = 0; count < 3; ++count) ASSERT_TRUE(await(session, makeRequest("GET", server.url("/"))));
  EXPECT_EQ(server.connections(), 1);
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
    ASSERT_TRUE(outcome) << failure(outcome);
    EXPECT_EQ(outcome->body, std::to_string(number));
  }
}

TEST(CurlURLSession, ReportsAClosedSessionToRequestsInFlight) {
  LoopbackServer server([](const Received& request, Connection& connection) {
    if (request.target == "/stalled") return connection.waitForPeer();
    connection.reply(200);
  });
  Outcomes outcomes;
  const auto check = [&](std::size_t expected) {
    const auto all = outcomes.wait(expected);
    EXPECT_EQ(all.size(), expected);
    for (const auto& [outcome, thread] : all) {
      EXPECT_EQ(codeOf(outcome), 42);
      EXPECT_NE(thread, std::this_thread::get_id());
    }
  };
  {
    CurlURLSession session;
    for (int count = 0; count < 20; ++count) {
      session.run(makeRequest("GET", server.url("/stalled")), outcomes.completion());
    }
  }
  check(20);

  // A completion may release the last reference.
  auto session = std::make_shared<CurlURLSession>();
  session->run(makeRequest("GET", server.url("/stalled")), outcomes.completion());
  Outcomes last;
  URLSession& reference = *session;
  reference.run(makeRequest("GET", server.url("/")),
                last.completion([session = std::move(session)]() mutable { session.reset(); }));
  EXPECT_EQ(codeOf(last.wait(1).front().first), 0);
  check(21);
}

TEST(CurlURLSession, CountsBytesAndTimeBeyond32Bits) {
  LoopbackServer server([](const Received& request, Connection& connection) {
    const std::string length = request.target.substr(1);
    connection.play(R"("HTTP/1.1 200 OK\nContent-Length: )" + length + R"(\n\n" "x"*)" +
                    (length.size() < 10 ? length : "1") + " close");
  });
  const struct {
    const char *method, *length;
    std::size_t largest;
    int code;
  } cases[] = {
      {"GET", "4294967297", 64U << 20U, 63},
      {"HEAD", "4294967297", 64U << 20U, 0},
      {"GET", "9223372036854775807", std::numeric_limits<std::size_t>::max(), 63},
      {"GET", "90000000", 128U << 20U, 0},
  };
  for (const auto& [method, length, largest, code] : cases) {
    CurlOptions options;
    options.maxReply = largest;
    CurlURLSession session(options);
    auto request = makeRequest(method, server.url(std::string("/") + length));
    request.timeout = std::chrono::milliseconds::max();
    const auto outcome = await(session, request);
    EXPECT_EQ(codeOf(outcome), code) << length << " " << failure(outcome);
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
