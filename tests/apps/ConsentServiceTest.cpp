// Tests the local consent service as a program: starts it, sends HTTP requests, and stops it.

#include <array>
#include <chrono>
#include <deque>
#include <fstream>
#include <map>
#include <thread>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/apps/ConsentServiceProcess.h"
#include "tests/support/ResidentMemory.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK::testing {
namespace {

using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::Values;

// Each file in tests/apps/exchanges holds options, and pairs of lines: a request (method, path, body), and
// the expected status, followed by part of the body or, after "not", by a text that the body must not
// contain. Without a text, the body must be empty. URL stands for the service's URL, FIRST for the first
// identifier that it returned, and STORE for a file. "restart" restarts the service.
class Exchanges : public TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(All, Exchanges, Values("consents", "documents", "refusals", "faults"),
                         [](const auto& each) { return each.param; });

TEST_P(Exchanges, RunAsListed) {
  const TemporaryFolder folder;
  std::ifstream file(TALVO_TEST_DATA "/apps/exchanges/"s + GetParam() + ".txt");
  Texts options;
  std::string line;
  while (std::getline(file, line) && (line[0] == '#' || line.starts_with("options: "))) {
    if (line[0] != '#')
      std::ranges::copy(words(filled(line.substr(9), {{"STORE", folder.path / "store"}})),
                        std::back_inserter(options));
  }
  std::optional<ConsentServiceProcess> service(options);
  std::map<std::string, std::string> values{{"URL", service->url()}};
  int count = 0;
  do {
    if (line == "restart") {
      EXPECT_EQ(service->stop(), 0);
      service.emplace(options);
      continue;
    }
    line = filled(line, values);
    httplib::Request request;
    std::istringstream(line) >> request.method >> request.path;
    request.body = line.substr(std::min(line.size(), request.method.size() + request.path.size() + 2));
    request.set_header("Content-Type", "application/json");
    SCOPED_TRACE(line);
    std::getline(file, line);
    const auto reply = service->client(line == "none" ? 1 : 30)->send(request);
    EXPECT_EQ(reply ? std::to_string(reply->status) : "none", line.substr(0, line.find(' ')));
    ++count;
    if (!reply) continue;
    if (const auto id = reply->body.find(R"("id":")"); id != std::string::npos)
      values.emplace("FIRST", reply->body.substr(id + 6, 36));
    const std::string part = filled(line.substr(std::min(line.size(), line.find(' ') + 1)), values);
    if (line.find(' ') == std::string::npos) {
      EXPECT_EQ(reply->body, "");
    } else if (part.starts_with("not ")) {
      EXPECT_THAT(reply->body, Not(HasSubstr(part.substr(4))));
    } else {
      EXPECT_THAT(reply->body, HasSubstr(part));
    }
  } while (std::getline(file, line));
  EXPECT_GT(count, 10);
}

TEST(ConsentService, ServesHTTPS) {
  const TemporaryFolder folder;
  const std::string key = folder.path / "key", certificate = folder.path / "certificate";
  const std::string make = "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 ";
  ASSERT_EQ(printedBy(make + "-subj /CN=localhost -keyout " + key + " -out " + certificate + " 2>&-"), "");
  const ConsentServiceProcess service({"--tls", certificate, key});
  EXPECT_THAT(service.firstLine(), MatchesRegex("listening on https://127\\.0\\.0\\.1:[0-9]+"));
  const auto reply = service.client()->Get("/public/banner-customization/demo");
  ASSERT_TRUE(reply);
  EXPECT_THAT(reply->body, HasSubstr(service.url() + "/sites/"));

  const ConsentServiceProcess behindAnother;
  const auto forwarded =
      behindAnother.client()->Get("/public/banner-customization/demo", {{"X-Forwarded-Proto", "https"}});
  ASSERT_TRUE(forwarded);
  EXPECT_THAT(forwarded->body, HasSubstr("https" + behindAnother.url().substr(4) + "/sites/"));
}

// The table is tests/golden/service/caching.txt.
TEST(ConsentService, SaysWhatMayBeKeptAndConfirmsWhatIsCurrent) {
  const ConsentServiceProcess service({"--sites", TALVO_TEST_DATA "/../docs/sites"});
  std::map<std::string, std::string> bodies;  // by ETag
  const auto table = tableOf<4>("service/caching.txt");
  for (const auto& [line, condition, status, cacheControl] : table) {
    SCOPED_TRACE(line + " | " + condition);
    httplib::Request request;
    std::istringstream(line) >> request.method >> request.path >> request.body;
    request.set_header("Content-Type", "application/json");
    const auto first = service.client()->send(request);
    ASSERT_TRUE(first);
    const std::string tag = first->get_header_value("ETag");
    EXPECT_EQ(tag.empty(), cacheControl.empty() || cacheControl == "no-store");
    if (!tag.empty() && request.method == "GET") {
      EXPECT_EQ(bodies.emplace(tag, first->body).first->second, first->body);
    }
    request.set_header("If-None-Match", filled(condition, {{"TAG", tag}}));
    const auto reply = service.client()->send(request);
    ASSERT_TRUE(reply);
    EXPECT_EQ(std::to_string(reply->status), status);
    EXPECT_EQ(reply->get_header_value("Cache-Control"), cacheControl);
    EXPECT_EQ(reply->get_header_value("ETag"), tag);
    EXPECT_EQ(reply->body.empty(), status == "304");
    EXPECT_EQ(reply->has_header("Content-Length"), status != "304");
  }
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
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20))
      << "idle connections would last thirty seconds";
}

// A client that sends any bytes and only reads when asked to.
class RawClient {
 public:
  explicit RawClient(const ConsentServiceProcess& service) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(service.url().substr(17))));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int small = 4096;
    setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
    connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  }
  RawClient(const RawClient&) = delete;
  ~RawClient() { close(socket_); }

  /// Returns whether the service took the text. Stops when the service answers or closes the connection.
  bool send(std::string_view text) const {
    while (!text.empty()) {
      pollfd ready{socket_, POLLIN | POLLOUT, 0};
      if (poll(&ready, 1, 30'000) <= 0 || ready.revents != POLLOUT) return false;
      const auto count = ::send(socket_, text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
      if (count > 0) text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
  }

  std::string statusLine() const {
    std::array<char, 13> text{};
    return recv(socket_, text.data(), 12, MSG_WAITALL) == 12 ? text.data() : "none";
  }

 private:
  const int socket_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

// Expands `"a"*9` to nine times "a", and \n to a line end.
std::string expanded(std::string text) {
  for (std::size_t from = text.find('"'); from != text.npos; from = text.find('"')) {
    const std::size_t to = text.find("\"*", from);
    const std::string part = text.substr(from + 1, to - from - 1);
    std::string all;
    for (int left = std::stoi(text.substr(to + 2)); left > 0; --left) all += part;
    text.replace(from, text.find_first_not_of("0123456789", to + 2) - from, all);
  }
  return filled(text, {{"\\n", "\r\n"}});
}

// The table is tests/golden/service/bounds.txt.
TEST(ConsentService, BoundsWhatAClientSendsInSizeAndTime) {
  const ConsentServiceProcess service({"--client-timeout", "300"});
  const std::string bomb = printedBy("head -c 300000000 /dev/zero | gzip -1");
  const long before = residentMemory("VmHWM:", service.process());
  const auto table = tableOf<4>("service/bounds.txt");
  for (const auto& [name, status, start, again] : table) {
    const std::string first = filled(expanded(start), {{"SIZE", std::to_string(bomb.size())}});
    const std::string more = again == "BOMB" ? bomb : expanded(again);
    const RawClient client(service);
    client.send(first);
    for (int i = 0; i < 300 && !more.empty() && client.send(more); ++i) {
    }
    EXPECT_EQ(client.statusLine(), "HTTP/1.1 " + status) << name;
  }
  EXPECT_LT(residentMemory("VmHWM:", service.process()) - before, 20 << 10);
}

TEST(ConsentService, ServesOthersBesideSlowClients) {
  const ConsentServiceProcess service;
  std::string unread;  // requests whose replies the client does not read
  for (int i = 0; i < 40; ++i) unread += "GET /public/cookies/large HTTP/1.1\r\nHost: a\r\n\r\n";
  const std::string slow[] = {"", "GET /", "POST / HTTP/1.1\r\nHost: a\r\nContent-Length: 10\r\n\r\n{"};
  std::deque<RawClient> crowd;
  for (int i = 0; i < 400; ++i) crowd.emplace_back(service).send(i % 50 == 3 ? unread : slow[i % 3]);
  EXPECT_TRUE(service.client(20)->Get("/public/banner-customization/demo"));
  EXPECT_THAT(crowd.front().statusLine(), "none") << "the oldest connection was ended";
}

}  // namespace
}  // namespace TalvoConsentSDK::testing
