// A process that exits while its requests are in flight.

#include <iostream>
#include <list>

#include "testing/ChildProcess.h"
#include "tests/adapters/CurlTest.h"
#include "tests/support/Repetitions.h"

namespace TalvoConsentSDK {
namespace {

// A server in a separate process, so that its threads play no part in the exit that is tested.
class ServerProcess {
 public:
  ServerProcess(const TestCertificate* identity, const char* greeting)
      : url(identity ? "https://localhost:" : "http://localhost:"),
        process_([=](const ProcessChannel& parent) {
          const LoopbackServer server(replyGood, identity, 0, greeting);
          parent.send(server.port());
          parent.receive<bool>();  // until the parent ends
        }) {
    url += std::to_string(process_.channel->receive<int>().value()) + "/";
  }

  std::string url;

 private:
  ChildProcess process_;
};

// Sends one request after another, without end. Cancels every PUT.
void keepAsking(CurlURLSession& session, const std::string& url, const char* method) {
  const auto request = makeCancellable(method, url);
  session.run(request, [&session, url, method](const auto&) { keepAsking(session, url, method); });
  if (method == "PUT"s) request.cancellation->cancel();
}

TEST(CurlExitTest, EndsWithoutACrash) {
  const TestCertificate identity("localhost");  // local, so that no child removes it when it exits
  CurlOptions options;
  options.certificates = identity.certificate();
  const int exits = repetitions("TALVO_TEST_EXITS", 12);
  std::list<ServerProcess> servers;
  for (int run = 0; run < exits; ++run) {
    if (run % 100 == 0) {
      servers.clear();
      servers.emplace_back(nullptr, "");
      servers.emplace_back(&identity, "");
      servers.emplace_back(&identity, LoopbackServer::http2);
    }
    servers.splice(servers.end(), servers, servers.begin());  // takes turns
    ChildProcess child([&](const ProcessChannel&) {
      // Never destroyed, like the session of a process-wide platform.
      static auto& session = *new CurlURLSession(options);
      for (const char* method : {"GET", "GET", "POST", "PUT"})
        keepAsking(session, servers.front().url, method);
      std::this_thread::sleep_for(std::chrono::microseconds(run * 7919 % 60'000));
      std::exit(0);
    });
    ASSERT_EQ(child.wait(), 0) << "exit " << run;
  }
  std::cout << exits << " exits\n";
}

}  // namespace
}  // namespace TalvoConsentSDK
