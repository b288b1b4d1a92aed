// Networks, servers and certificates that misbehave, through the real session on libcurl. The table is
// tests/golden/network/faults.txt, whose head says how to read it.

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
namespace {

using namespace std::chrono_literals;

// "STATUS BODY" or "error CODE TEXT".
std::string told(const Result<URLResponse>& outcome) {
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

TEST(NetworkFaults, EndInTheirOwnErrorInBoundedTimeAndMemory) {
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
  const struct {
    const char *name, *host;
    int firstDay, lastDay, onlyTLS = 0;
    bool isTrusted = true, isSelfSigned = true;
  } identities[] = {
      {"https", "localhost", 0, 2},
      {"expired", "localhost", -2, -1},
      {"future", "localhost", 1, 2},
      {"other-host", "another", 0, 2},
      {"self-signed", "localhost", 0, 2, 0, false},
      {"stranger", "localhost", 0, 2, 0, false, false},
      {"tls1", "localhost", 0, 2, TLS1_VERSION},
      {"tls1_1", "localhost", 0, 2, TLS1_1_VERSION},
  };
  std::list<TestCertificate> certificates;
  std::list<LoopbackServer> servers;
  CurlOptions options;
  std::ofstream trusted;
  for (const auto& [name, host, firstDay, lastDay, onlyTLS, isTrusted, isSelfSigned] : identities) {
    const auto& file = certificates.emplace_back(host, firstDay, lastDay, isSelfSigned).certificate();
    if (!options.certificates) trusted.open(*(options.certificates = file.string() + ".trusted"));
    if (isTrusted) trusted << std::ifstream(file).rdbuf() << std::flush;
    urls[name] = servers.emplace_back(play, &certificates.back(), onlyTLS).url("", "localhost");
    if (onlyTLS == 0) continue;
    const std::string client = "openssl s_client -cipher DEFAULT@SECLEVEL=0 -connect ";
    EXPECT_EQ(
        std::system((client + urls[name].substr(8) + " -" + name + " </dev/null >/dev/null 2>&1").c_str()), 0)
        << "a client that allows it can use the version";
  }
  CurlURLSession session(options);
  long mostGrown = 0;
  for (auto [name, server, script, mebibytes, end, text] : tableOf<6>("network/faults.txt")) {
    SCOPED_TRACE(name);
    if (const auto at = script.find("PLAIN"); at != script.npos) script.replace(at, 5, plain.url(""));
    scripts["/" + name] = script;
    auto request = makeRequest("GET", urls.at(server) + "/" + name);
    const bool stalls = end == "error 28", pauses = script.find("pause") != script.npos;
    request.timeout = stalls || pauses ? 250ms : 5000ms;
    const long before = startOfPeak();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THAT(told(await(session, request)), AllOf(StartsWith(end + " "), HasSubstr(text)));
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_TRUE(took < 10s && took >= (stalls ? 250ms : 0ms));
    const long grown = residentMemory("VmHWM:") - before;
    EXPECT_LT(grown, std::stol(mebibytes) << 10);
    if (mebibytes.size() < 3) mostGrown = std::max(mostGrown, grown);
    if (pauses) std::this_thread::sleep_for(100ms);
    for (const char* next : {"plain", "https"})
      EXPECT_EQ(told(await(session, makeRequest("GET", urls[next] + "/good"))), "200 good");
  }
  std::cout << "grown by at most " << mostGrown << " KiB where no body is kept\n";
}

}  // namespace
}  // namespace TalvoConsentSDK
