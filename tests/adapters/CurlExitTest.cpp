// A process that exits while its requests are in flight.

#include <iostream>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "adapters/curl/CurlURLSession.h"

#include "testing/ChildProcess.h"
#include "testing/LoopbackServer.h"
#include "tests/support/Repetitions.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

// A server in a separate process, so that its threads play no part in the exit that is tested.
class ServerProcess {
 public:
  explicit ServerProcess(const TestCertificate* identity)
      : url(identity ? "https://localhost:" : "http://localhost:"),
        process_([=](const ProcessChannel& parent) {
          const LoopbackServer server([](auto&, auto& connection) { connection.reply(200, "{}"); }, identity);
          parent.send(server.port());
          parent.receive<bool>();  // until the parent ends
        }) {
    url += std::to_string(process_.channel->receive<int>().value()) + "/";
  }

  std::string url;

 private:
  ChildProcess process_;
};

// Sends one request after another, without end.
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
    ChildProcess child([&](const ProcessChannel&) {
      CurlOptions options;
      options.certificates = identity.certificate();
      // Never destroyed, like the session of a process-wide platform.
      static auto& session = *new CurlURLSession(options);
      for (const char* method : {"GET", "GET", "GET", "POST"}) {
        keepAsking(session, (run % 2 == 0 ? plain : safe)->url, method);
      }
      std::this_thread::sleep_for(std::chrono::microseconds(run * 7919 % 60'000));
      std::exit(0);
    });
    ASSERT_EQ(child.wait(), 0) << "exit " << run;
  }
  std::cout << exits << " exits\n";
}

}  // namespace
}  // namespace TalvoConsentSDK
