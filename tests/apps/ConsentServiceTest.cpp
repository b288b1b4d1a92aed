// The local consent service, as the program that clients meet: started, asked over HTTP, and stopped.

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "TalvoConsentSDK/models/FullConsent.h"

#include "tests/apps/ConsentServiceProcess.h"
#include "tests/support/ResidentMemory.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK::testing {
namespace {

using ::testing::MatchesRegex;
using ::testing::Values;

constexpr const char* json = "application/json";

JSONObject object(const std::string& text) {
  const auto value = JSONDecoder().decode<JSONValue>(text);
  return value && value->object() ? *value->object() : JSONObject();
}

// A path that no other test uses; what is there in the end is removed.
class TemporaryFile : public std::string {
 public:
  explicit TemporaryFile(const std::string& name)
      : std::string(::testing::TempDir() + "talvo-service-" + std::to_string(getpid()) + name) {}
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() { std::filesystem::remove(c_str()); }
};

std::string consent(const std::string& more) {
  return R"({"status":"partial","categories":{"marketing":["A","B"],"statistics":false},"typeConsent":"explicit")" +
         more + "}";
}

// Each file in tests/apps/exchanges holds options, and requests (method, path, body) with what is answered:
// the status and, unless nothing follows, a part of the body, in which URL stands for the service's own.
class Exchanges : public TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(All, Exchanges, Values("documents", "refusals", "faults"),
                         [](const auto& each) { return each.param; });

TEST_P(Exchanges, GoAsWritten) {
  std::ifstream file(TALVO_TEST_DATA "/apps/exchanges/" + GetParam() + ".txt");
  std::vector<std::string> options;
  std::string line;
  while (std::getline(file, line) && (line[0] == '#' || line.starts_with("options: "))) {
    if (line[0] != '#') std::ranges::copy(words(line.substr(9)), std::back_inserter(options));
  }
  const ConsentServiceProcess service(options);
  int count = 0;
  do {
    httplib::Request request;
    std::istringstream(line) >> request.method >> request.path;
    request.body = line.substr(std::min(line.size(), request.method.size() + request.path.size() + 2));
    request.set_header("Content-Type", json);
    SCOPED_TRACE(line);
    std::getline(file, line);
    const auto reply = service.client(line == "none" ? 1 : 30)->send(request);
    EXPECT_EQ(reply ? std::to_string(reply->status) : "none", line.substr(0, line.find(' ')));
    std::string part = line.substr(std::min(line.size(), line.find(' ')));
    part.erase(0, 1);
    if (const auto at = part.find("URL"); at != std::string::npos) part.replace(at, 3, service.url());
    if (reply && part.empty()) {
      EXPECT_EQ(reply->body, "");
    }
    if (reply) {
      EXPECT_THAT(reply->body, HasSubstr(part));
    }
    ++count;
  } while (std::getline(file, line));
  EXPECT_GT(count, 10);
}

TEST(ConsentService, KeepsConsentsAcrossARestart) {
  const TemporaryFile store(".db");
  const std::string path = "/public/cookie-consent/demo";
  std::string first;
  {
    ConsentServiceProcess service({"--store", store});
    const auto client = service.client();
    const auto post = [&](const std::string& site, const std::string& more) {
      return *object(client->Post("/public/cookie-consent/" + site, consent(more), json)->body)
                  .at("id")
                  .string();
    };
    first = post("demo", R"(,"userId":"ann@x.example")");
    const std::string second = post("demo", R"(,"userId":"ann@x.example")");
    post("implicit", R"(,"userId":"ann@x.example")");
    EXPECT_NE(first, second);
    const auto put = [&](const std::string& more) {
      return *object(client->Put(path, consent(more), json)->body).at("id").string();
    };
    EXPECT_EQ(put(R"(,"userId":"ann@x.example","siteId":"demo","id":")" + first + '"'), first);
    EXPECT_NE(put(R"(,"id":"unknown")"), "unknown");
    EXPECT_NE(put(""), first);
    EXPECT_EQ(service.stop(), 0);
  }
  ConsentServiceProcess service({"--store", store});
  const auto client = service.client();
  const auto known = client->Get(path + "/identified/ann%40x.example?consentId=other");
  const auto record = JSONDecoder().decode<std::optional<FullConsent>>(known->body);
  ASSERT_TRUE(record && *record) << known->body;
  EXPECT_EQ((*record)->id, first) << "the consent that changed last";
  EXPECT_EQ((*record)->siteId, "demo");
  EXPECT_EQ((*record)->status, "partial");
  EXPECT_EQ((*record)->categories->at("marketing").items(), (std::vector<std::string>{"A", "B"}));
  const auto unknown = client->Get(path + "/identified/bob?consentId=" + first);
  EXPECT_EQ(unknown->status, 200);
  EXPECT_EQ(unknown->body, "null");
  service.stop();  // before its store is removed
}

TEST(ConsentService, ServesHTTPS) {
  const TemporaryFile key(".key");
  const TemporaryFile certificate(".pem");
  const std::string make =
      "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj /CN=localhost "
      "-keyout " +
      key + " -out " + certificate + " 2>&1";
  ASSERT_EQ(std::system(make.c_str()), 0);
  const ConsentServiceProcess service({"--tls", certificate, key});
  EXPECT_THAT(service.firstLine(), MatchesRegex("listening on https://127\\.0\\.0\\.1:[0-9]+"));
  const auto reply = service.client()->Get("/public/banner-customization/demo");
  ASSERT_TRUE(reply);
  EXPECT_THAT(reply->body, HasSubstr(service.url() + "/sites/"));
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
      << "idle connections last thirty";
}

// A client that sends what it likes, and reads when it likes.
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

  /// Whether it was taken; an answer ends it.
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

const std::string post = "POST /public/cookie-consent/demo HTTP/1.1\r\nHost: a\r\n";

TEST(ConsentService, BoundsWhatAClientSendsInSizeAndTime) {
  const ConsentServiceProcess service({"--patience", "300"});
  const std::string zeros = ::testing::TempDir() + "talvo-service-zeros-" + service.process();
  ASSERT_EQ(std::system(("head -c 300000000 /dev/zero | gzip -1 >" + zeros).c_str()), 0);
  const std::string bomb = contentOf(zeros);
  std::filesystem::remove(zeros);
  const std::string get = "GET / HTTP/1.1\r\nHost: a\r\n", million(1'000'000, 'a');
  const std::string chunked = post + "Transfer-Encoding: chunked\r\n";
  const std::string chunk = "f4240\r\n" + million + "\r\n";
  std::string headers;
  for (int i = 0; i < 20'000; ++i) headers += "a: b\r\n";
  const struct {
    const char* name;
    std::string start;
    std::string again;  // sent up to 300 times, or until there is an answer
    const char* status;
  } table[] = {
      {"announced", post + "Content-Length: 300000000\r\n\r\n", million, "413"},
      {"waited for", post + "Content-Length: 300000000\r\nExpect: 100-continue\r\n\r\n", "", "413"},
      {"chunks", chunked + "\r\n", chunk, "413"},
      {"one chunk's extension", chunked + "\r\n1;", million, "413"},
      {"a body of another kind", "PRI / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n", chunk, "501"},
      {"unknown transfer", post + "Transfer-Encoding: gzip\r\n\r\n", "", "501"},
      {"a form", post + "Content-Type: multipart/form-data; boundary=b\r\nContent-Length: 9\r\n\r\n", "",
       "415"},
      {"compressed",
       post + "Content-Encoding: gzip\r\nContent-Length: " + std::to_string(bomb.size()) + "\r\n\r\n", bomb,
       "413"},
      {"compressed, in a chunk", chunked + "Content-Encoding: gzip\r\n\r\n7fffffff\r\n", bomb, "413"},
      {"headers", get, headers, "431"},
      {"one header", get + "a: ", million, "431"},
      {"a longer header than most", get + "a: " + million.substr(0, 9'000) + "\r\n\r\n", "", "431"},
      {"more headers than most", get + headers.substr(0, 600) + "\r\n", "", "431"},
      {"a request line", "GET /", million, "414"},
      {"half a head", "GET / HTTP/1.1\r\n", "", "408"},
      {"half a body", post + "Content-Length: 10\r\n\r\n{", "", "408"},
      {"neither length nor chunks", post + "\r\n", "", "400"},
  };
  const long before = residentMemory("VmHWM:", service.process());
  for (const auto& [name, start, again, status] : table) {
    const RawClient client(service);
    client.send(start);
    for (int i = 0; i < 300 && !again.empty() && client.send(again); ++i) {
    }
    EXPECT_EQ(client.statusLine(), std::string("HTTP/1.1 ") + status) << name;
  }
  EXPECT_LT(residentMemory("VmHWM:", service.process()) - before, 20 << 10);
}

TEST(ConsentService, ServesOthersBesideSlowClients) {
  const ConsentServiceProcess service;
  std::string unread;  // replies
  for (int i = 0; i < 40; ++i) unread += "GET /public/cookies/large HTTP/1.1\r\nHost: a\r\n\r\n";
  const std::string slow[] = {"", "GET /", post + "Content-Length: 10\r\n\r\n{"};
  std::deque<RawClient> crowd;
  for (int i = 0; i < 400; ++i) crowd.emplace_back(service).send(i % 50 == 3 ? unread : slow[i % 3]);
  EXPECT_TRUE(service.client(20)->Get("/public/banner-customization/demo"));
  EXPECT_THAT(crowd.front().statusLine(), "none") << "the oldest made room";
}

}  // namespace
}  // namespace TalvoConsentSDK::testing
