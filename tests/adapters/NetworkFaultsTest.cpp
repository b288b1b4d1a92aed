// Faults of networks, servers and certificates, through the real libcurl session. The tables are
// tests/golden/network/faults.txt and http2.txt, whose headers explain the columns.

#include <chrono>
#include <list>
#include <map>

#include <openssl/ssl.h>

#include "adapters/curl/CurlURLSession.h"

#include "testing/LoopbackServer.h"
#include "testing/URLSessionConformance.h"
#include "tests/support/ResidentMemory.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

using namespace std::chrono_literals;

// "STATUS BODY" or "error CODE TEXT".
std::string described(const Result<URLResponse>& outcome) {
  if (!outcome) {
    const auto* error = outcome.error().as<PlatformError>();
    EXPECT_TRUE(error && error->domain() == "CURL");
    EXPECT_THAT(outcome.error().what(), Not(HasSubstr("secret")));
    return "error " + std::to_string(error->code()) + " " + error->what();
  }
  const std::string body = outcome->body.value_or("");
  return std::to_string(outcome->statusCode.value_or(0)) + " " +
         (body.size() < 100 ? body : std::to_string(body.size()) + " bytes");
}

// One row: the fault, the outcome that must follow soon, and by how much the process may grow meanwhile.
struct Fault {
  std::string name, script, mebibytes, end, text;

  // Returns by how many KiB the process has grown, or 0 if the row allows 100 MiB or more.
  long run(CurlURLSession& session, URLRequest request) const {
    SCOPED_TRACE(request.method + " " + name);
    const bool stalls = end == "error 28", pauses = script.find("pause") != script.npos;
    request.timeout = stalls || pauses || end == "error" ? 250ms : 5000ms;
    const long before = startOfPeak();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THAT(described(await(session, request)), AllOf(StartsWith(end + " "), HasSubstr(text)));
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_TRUE(took < 10s && took >= (stalls ? 250ms : 0ms));
    const long grown = residentMemory("VmHWM:") - before;
    EXPECT_LT(grown, std::stol(mebibytes) << 10);
    if (pauses) std::this_thread::sleep_for(100ms);
    return mebibytes.size() < 3 ? grown : 0;
  }
};

URLRequest requestWithBody(const char* method, const std::string& url) {
  auto request = makeRequest(method, url);
  if (*method == 'P') request.body = "body of " + url;
  return request;
}

TEST(NetworkFaults, OverHTTP2EndInTheListedErrorAndSendABodyOnce) {
  const TestCertificate identity("localhost");
  CurlOptions options;
  options.certificates = identity.certificate();
  std::map<std::string, std::string> scripts;
  std::map<std::string, std::unique_ptr<LoopbackServer>> servers;
  const auto table = tableOf<8>("network/http2.txt");
  for (const auto& [name, method, greeting, script, mebibytes, end, text, seen] : table) {
    scripts["/" + name] = script;
    auto& server = servers[greeting];
    if (server) continue;
    const auto play = [&](const LoopbackServer::Request& request, LoopbackServer::Connection& connection) {
      if (request.target == "/good") return connection.reply(200, "good");
      connection.play(scripts.at(request.target));
    };
    server = std::make_unique<LoopbackServer>(play, &identity, 0,
                                              greeting.empty() ? LoopbackServer::http2 : greeting);
  }
  CurlURLSession session(options);
  long maxGrown = 0;
  for (const auto& [name, method, greeting, script, mebibytes, end, text, seen] : table) {
    SCOPED_TRACE(name);
    const auto& server = *servers.at(greeting);
    const auto request = requestWithBody(method.c_str(), server.url("/" + name, "localhost"));
    maxGrown = std::max(maxGrown, Fault{name, script, mebibytes, end, text}.run(session, request));
    const auto arrived = std::ranges::count(server.requests(), "/" + name, &LoopbackServer::Request::target);
    const auto maxSeen = words(seen);
    EXPECT_LE(arrived, std::stol(maxSeen[0]));
    EXPECT_LE(server.seen(request.body.value_or("no body")), std::stoul(maxSeen[1]));
    auto next = makeRequest("GET", servers[""]->url("/good", "localhost"));
    next.timeout = 5s;
    EXPECT_EQ(described(await(session, next)), "200 good");
  }
  std::cout << "grew by at most " << maxGrown << " KiB in rows that keep no body\n";
}

TEST(NetworkFaults, EndInTheListedErrorInBoundedTimeAndMemory) {
  std::map<std::string, std::string> scripts, urls;
  const auto play = [&](const LoopbackServer::Request& request, LoopbackServer::Connection& connection) {
    if (request.target == "/good") return connection.reply(200, "good");
    connection.play(scripts.at(request.target));
  };
  const LoopbackServer plain(play);
  urls["nobody"] = LoopbackServer(play).url("");
  urls["nowhere"] = "https://" + std::string(64, 'a') + ".example";
  urls["plain"] = plain.url("");
  urls["https-at-plain"] = "https" + plain.url("").substr(4);
  std::list<TestCertificate> certificates;
  std::list<LoopbackServer> servers;
  CurlOptions options;
  std::ofstream trusted;
  const auto table = tableOf<6>("network/faults.txt");
  for (const auto& [name, server, script, mebibytes, end, text] : table) {
    scripts["/" + name] = script;
    if (const auto at = script.find("PLAIN"); at != script.npos)
      scripts["/" + name].replace(at, 5, plain.url(""));
    if (!server.starts_with("tls") || urls.contains(server)) continue;
    const Texts parts = words(server);
    const std::string& kind = parts.back();
    const auto& file =
        certificates.emplace_back(parts[1], std::stoi(parts[2]), std::stoi(parts[3]), kind != "stranger")
            .certificate();
    if (!options.certificates) trusted.open(*(options.certificates = file.string() + ".trusted"));
    if (kind != "stranger" && kind != "self-signed") trusted << std::ifstream(file).rdbuf() << std::flush;
    const int onlyTLS = kind == "tls1" ? TLS1_VERSION : kind == "tls1_1" ? TLS1_1_VERSION : 0;
    urls[server] = servers.emplace_back(play, &certificates.back(), onlyTLS).url("", "localhost");
    const std::string client =
        "openssl s_client -cipher DEFAULT@SECLEVEL=0 </dev/null >/dev/null 2>&1 -connect 127.0.0.1:";
    EXPECT_TRUE(onlyTLS == 0 ||
                std::system((client + std::to_string(servers.back().port()) + " -" + kind).c_str()) == 0)
        << "a client that allows it can use the version";
  }
  CurlURLSession session(options);
  long maxGrown = 0;
  for (const auto& [name, server, script, mebibytes, end, text] : table) {
    const auto& url = urls.at(server);
    const Fault fault{name, script, mebibytes, end, text};
    maxGrown = std::max(maxGrown, fault.run(session, makeRequest("GET", url + "/" + name)));
    SCOPED_TRACE(name);
    for (const char* next : {"plain", "tls localhost 0 2"})
      EXPECT_EQ(described(await(session, makeRequest("GET", urls[next] + "/good"))), "200 good");
  }
  std::cout << "grew by at most " << maxGrown << " KiB in rows that keep no large body\n";
}

}  // namespace
}  // namespace TalvoConsentSDK
