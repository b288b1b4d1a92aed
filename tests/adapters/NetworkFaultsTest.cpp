// Faults of networks, servers and certificates, through the real libcurl session. The tables are
// tests/golden/network/faults.txt and http2.txt, whose headers explain the columns.

#include <iostream>
#include <list>
#include <map>

#include <openssl/ssl.h>

#include "tests/adapters/CurlTest.h"
#include "tests/support/ResidentMemory.h"

namespace TalvoConsentSDK {
namespace {

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
    EXPECT_THAT(described(await(session, request)) + " ", AllOf(StartsWith(end + " "), HasSubstr(text)));
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_TRUE(took < 30s && took >= (stalls ? 250ms : 0ms));
    const long grown = residentMemory("VmHWM:") - before;
    EXPECT_LT(grown, std::stol(mebibytes) << 10);
    if (pauses) std::this_thread::sleep_for(100ms);
    return mebibytes.size() < 3 ? grown : 0;
  }
};

// Plays the rows of a table.
void expectListedEnds(const std::string& file) {
  std::map<std::string, std::string> scripts;  // by the path of a request
  const auto play = [&](const Received& request, Connection& connection) {
    if (request.target == "/good") return connection.reply(200, "good");
    connection.play(scripts.at(request.target));
  };
  std::list<TestCertificate> certificates;
  std::map<std::string, LoopbackServer> servers;
  servers.try_emplace("plain", play);
  std::map<std::string, std::string> urls{
      {"nobody", LoopbackServer(play).url("")},
      {"nowhere", "https://" + std::string(64, 'a') + ".example"},
      {"plain", servers.at("plain").url("")},
      {"https-at-plain", "https" + servers.at("plain").url("").substr(4)}};
  CurlOptions options;
  std::ofstream trusted;
  const auto table = tableOf<8>(file);
  for (const auto& [name, server, method, script, mebibytes, end, text, seen] : table) {
    scripts["/" + name] = script;
    if (const auto at = script.find("PLAIN"); at != script.npos)
      scripts["/" + name].replace(at, 5, urls["plain"]);
    if (urls.contains(server)) continue;
    const bool isHTTP2 = server.starts_with("http2");
    const std::string greeting = server.substr(std::min(server.size(), isHTTP2 ? 6 : server.size()));
    const Texts parts = isHTTP2 ? words("tls localhost 0 2") : words(server);
    const std::string& kind = parts.back();
    const auto& certificate =
        certificates.emplace_back(parts[1], std::stoi(parts[2]), std::stoi(parts[3]), kind != "stranger")
            .certificate();
    if (!options.certificates) trusted.open(*(options.certificates = certificate.string() + ".trusted"));
    if (kind != "stranger" && kind != "self-signed")
      trusted << std::ifstream(certificate).rdbuf() << std::flush;
    const int onlyTLS = kind == "tls1" ? TLS1_VERSION : kind == "tls1_1" ? TLS1_1_VERSION : 0;
    const auto& started = servers
                              .try_emplace(server, play, &certificates.back(), onlyTLS,
                                           isHTTP2 && greeting.empty() ? LoopbackServer::http2 : greeting)
                              .first->second;
    urls[server] = started.url("", "localhost");
    const std::string client =
        "openssl s_client -cipher DEFAULT@SECLEVEL=0 </dev/null >/dev/null 2>&1 -connect 127.0.0.1:";
    EXPECT_TRUE(onlyTLS == 0 ||
                std::system((client + std::to_string(started.port()) + " -" + kind).c_str()) == 0)
        << "a client that allows it can use the version";
  }
  CurlURLSession session(options);
  long maxGrown = 0;
  for (const auto& [name, server, method, script, mebibytes, end, text, seen] : table) {
    SCOPED_TRACE(name);
    auto request = makeRequest(method, urls.at(server) + "/" + name);
    if (method != "GET") request.body = "body of " + name + ".";
    maxGrown = std::max(maxGrown, Fault{name, script, mebibytes, end, text}.run(session, request));
    if (const Texts most = words(seen); !most.empty()) {
      const LoopbackServer& asked = servers.at(server);
      EXPECT_LE(std::ranges::count(asked.requests(), "/" + name, &Received::target), std::stol(most[0]));
      EXPECT_LE(asked.seen(request.body.value_or("no body")), std::stoul(most[1]));
    }
    for (const char* const next : {"plain", "tls localhost 0 2", "http2"}) {
      if (urls.contains(next)) {
        EXPECT_EQ(described(await(session, makeRequest("GET", urls[next] + "/good"))), "200 good");
      }
    }
  }
  std::cout << "grew by at most " << maxGrown << " KiB in rows that keep no large body\n";
}

TEST(NetworkFaults, EndInTheListedErrorInBoundedTimeAndMemory) {
  expectListedEnds("network/faults.txt");
}

TEST(NetworkFaults, OverHTTP2EndInTheListedErrorAndSendABodyOnce) {
  expectListedEnds("network/http2.txt");
}

}  // namespace
}  // namespace TalvoConsentSDK
