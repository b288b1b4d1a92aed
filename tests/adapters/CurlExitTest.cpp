// A process that ends while its requests are under way.

#include <csignal>
#include <iostream>
#include <memory>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "adapters/curl/CurlURLSession.h"

#include "testing/LoopbackServer.h"
#include "tests/support/Repetitions.h"

namespace TalvoConsentSDK {
namespace {

// A server in a process of its own, whose end is not what is tested.
class ServerProcess {
 public:
  explicit ServerProcess(const TestCertificate* identity) : scheme_(identity ? "https" : "http") {
    int ports[2];
    EXPECT_EQ(::pipe(ports), 0);
    process_ = ::fork();
    if (process_ == 0) {
      const LoopbackServer server([](auto&, auto& connection) { connection.reply(200, "{}"); }, identity);
      const int port = server.port();
      if (::write(ports[1], &port, sizeof port) != sizeof port) ::_exit(1);
      for (;;) ::pause();
    }
    EXPECT_EQ(::read(ports[0], &port_, sizeof port_), static_cast<ssize_t>(sizeof port_));
    ::close(ports[0]);
    ::close(ports[1]);
  }
  ~ServerProcess() {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }
  ServerProcess(const ServerProcess&) = delete;

  std::string url() const { return scheme_ + "://localhost:" + std::to_string(port_) + "/"; }

 private:
  const std::string scheme_;
  pid_t process_ = -1;
  int port_ = 0;
};

// Sends one request after another and never stops.
void keepAsking(CurlURLSession& session, const std::string& url, const char* method) {
  URLRequest request(*URL::parse(url));
  request.method = method;
  session.run(request,
              [&session, url, method](const Result<URLResponse>&) { keepAsking(session, url, method); });
}

TEST(CurlExitTest, EndsWithoutACrash) {
  const TestCertificate identity("localhost");
  const int exits = repetitions("TALVO_TEST_EXITS", 10);
  std::unique_ptr<ServerProcess> plain, safe;
  for (int run = 0; run < exits; ++run) {
    if (run % 100 == 0) {
      plain = std::make_unique<ServerProcess>(nullptr);
      safe = std::make_unique<ServerProcess>(&identity);
    }
    const pid_t child = ::fork();
    if (child == 0) {
      CurlOptions options;
      options.certificates = identity.certificate();
      static auto& session = *new CurlURLSession(options);  // as a process-wide platform's
      for (const char* method : {"GET", "GET", "GET", "POST"}) {
        keepAsking(session, (run % 2 == 0 ? plain : safe)->url(), method);
      }
      std::this_thread::sleep_for(std::chrono::microseconds(run * 7919 % 60'000));
      std::exit(0);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "exit " << run << ", status " << status;
  }
  std::cout << exits << " exits\n";
}

}  // namespace
}  // namespace TalvoConsentSDK
