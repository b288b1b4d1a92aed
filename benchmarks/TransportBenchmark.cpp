// What a request costs beside the same request on libcurl alone, and a submission beside its two parts: a
// POST and a durable write. Everything is on the loopback address.

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include <benchmark/benchmark.h>

#include "TalvoConsentSDK/TalvoConsentSDK.h"
#include "TalvoConsentSDK/models/JSONCoding.h"

#include "adapters/curl/CurlURLSession.h"
#include "adapters/posix/PosixPlatform.h"

#include "benchmarks/BareCurl.h"
#include "benchmarks/BareStore.h"
#include "benchmarks/QuickServer.h"

namespace TalvoConsentBenchmarks {
namespace {

using namespace TalvoConsentSDK;
using benchmark::State;

constexpr int requestCount = 1'000;

const std::string& consentBody() {
  static const std::string body =
      R"({"status":"partial","categories":{"preferences":"all","statistics":"none","marketing":["a","b"],)"
      R"("necessary":"all"},"typeConsent":"explicit","siteId":"site"})";
  return body;
}

// A count that a thread can wait for.
class Countdown {
 public:
  explicit Countdown(int count) : left_(count) {}

  void countDown() {
    const std::scoped_lock guard(lock_);
    if (--left_ == 0) changed_.notify_all();
  }
  void wait() {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [this] { return left_ == 0; });
  }

 private:
  std::mutex lock_;
  std::condition_variable changed_;
  int left_;
};

// Keeps so many requests in flight: each completion sends the next.
class Stream {
 public:
  Stream(URLSession& session, const std::string& url, const std::string& body)
      : session_(session), request_(*URL::parse(url)) {
    if (body.empty()) return;
    request_.method = "POST";
    request_.body = body;
    request_.headers["Content-Type"] = "application/json";
  }

  void run(int requests, int inFlight) {
    unsent_ = requests - inFlight;
    Countdown ended(requests);
    for (int i = 0; i < inFlight; ++i) send(ended);
    ended.wait();
  }

 private:
  void send(Countdown& ended) {
    session_.run(request_, [this, &ended](const Result<URLResponse>& response) {
      if (!response || response->statusCode != 200 || response->body->empty()) std::abort();
      if (unsent_-- > 0) send(ended);
      ended.countDown();
    });
  }

  URLSession& session_;
  URLRequest request_;
  std::atomic<int> unsent_ = 0;
};

void requests(State& state, const std::string& body) {
  const QuickServer server;
  CurlURLSession session;
  Stream stream(session, server.url(), body);
  for (auto _ : state) stream.run(requestCount, static_cast<int>(state.range(0)));
}

void bareRequests(State& state, const std::string& body) {
  const QuickServer server;
  BareCurl curl(server.url(), body);
  for (auto _ : state) curl.run(requestCount, static_cast<int>(state.range(0)));
}

void submission(State& state) {
  static const QuickServer& server = *new QuickServer;
  static const auto client = [] {
    Platform::install(makePosixPlatform(std::make_shared<MainQueue>(), scratchFolder() + "/client.sqlite"));
    return CookiesSDK::createInstance(server.url(), "site");
  }();
  const BasicConsent choices[] = {BasicConsent::acceptAll(), BasicConsent::rejectAll()};
  int turn = 0;
  for (auto _ : state) {
    Countdown done(1);
    client->submitConsent(choices[turn++ % 2], [&](const Result<ConsentResponse>& response) {
      if (!response) std::abort();
      done.countDown();
    });
    done.wait();
  }
}

void bareSubmission(State& state) {
  const QuickServer server;
  BareCurl curl(server.url(), consentBody());
  BareStore store(scratchFolder() + "/bare.sqlite");
  const std::string values[] = {JSONEncoder().encode(BasicConsent::acceptAll()).value(),
                                JSONEncoder().encode(BasicConsent::rejectAll()).value()};
  int turn = 0;
  for (auto _ : state) {
    curl.run(1, 1);
    store.save("consent", values[turn++ % 2]);
  }
}

BENCHMARK_CAPTURE(requests, get, "")
    ->Name("requests/GET/ours")
    ->Arg(1)
    ->Arg(32)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK_CAPTURE(bareRequests, get, "")
    ->Name("requests/GET/bare-curl")
    ->Arg(1)
    ->Arg(32)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK_CAPTURE(requests, post, consentBody())
    ->Name("requests/POST/ours")
    ->Arg(1)
    ->Arg(32)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK_CAPTURE(bareRequests, post, consentBody())
    ->Name("requests/POST/bare-curl")
    ->Arg(1)
    ->Arg(32)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK(submission)->Name("submission/ours")->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(bareSubmission)->Name("submission/bare-curl-and-sqlite")->MeasureProcessCPUTime()->UseRealTime();

}  // namespace
}  // namespace TalvoConsentBenchmarks

int main(int argc, char* argv[]) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
