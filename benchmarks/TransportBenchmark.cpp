// Compares a request with the same request on bare libcurl, a reply from the cache with a request, and a
// submission with its two parts, a POST and a durable write. Everything uses the loopback address. The
// session has the cache of the ready-made platforms in front of it.

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include <benchmark/benchmark.h>

#include "TalvoConsentSDK/TalvoConsentSDK.h"
#include "TalvoConsentSDK/base/NeverDestroyed.h"
#include "TalvoConsentSDK/models/JSONCoding.h"

#include "adapters/curl/CurlURLSession.h"
#include "adapters/posix/CachedSession.h"
#include "adapters/posix/PosixPlatform.h"

#include "benchmarks/BareCurl.h"
#include "benchmarks/BareStore.h"
#include "benchmarks/QuickServer.h"

namespace TalvoConsentBenchmarks {
namespace {

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using benchmark::State;

constexpr int requestCount = 1'000;
constexpr int warmUpCount = 64;  // makes handles and connections first, since an app's session lives long

const std::string& consentBody() {
  static const std::string body =
      R"({"status":"partial","categories":{"preferences":"all","statistics":"none","marketing":["a","b"],)"
      R"("necessary":"all"},"typeConsent":"explicit","siteId":"site"})";
  return body;
}

// Counts down to 0; a thread can wait for that.
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

// Keeps a number of requests in flight: each completion sends the next request.
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

// Times both in turn and reports a pair of times in nanoseconds and their ratio. The speed of the machine
// varies from second to second, so only runs next to each other can be compared.
template <class Ours, class Bare>
void measurePair(State& state, Ours ours, Bare bare) {
  using Clock = std::chrono::steady_clock;
  const auto timed = [](auto& work) {
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double, std::nano>(Clock::now() - start).count();
  };
  static bool oursFirst = false;
  double oursTime = 0, bareTime = 0;
  for (auto _ : state) {
    oursFirst = !oursFirst;
    if (oursFirst) oursTime += timed(ours);
    bareTime += timed(bare);
    if (!oursFirst) oursTime += timed(ours);
  }
  const auto iterations = static_cast<double>(state.iterations());
  state.counters["ours"] = oursTime / iterations;
  state.counters["bare"] = bareTime / iterations;
  state.counters["ratio"] = oursTime / bareTime;
}

void requests(State& state, const std::string& body) {
  const auto inFlight = static_cast<int>(state.range(0));
  const QuickServer server;
  const auto session =
      cachedSession(std::make_shared<CurlURLSession>(), scratchFolder() + "/requests.sqlite", 10'000'000);
  Stream stream(*session, server.url(), body);
  BareCurl curl(server.url(), body);
  stream.run(warmUpCount, inFlight);
  curl.run(warmUpCount, inFlight);
  const auto ours = [&] { stream.run(requestCount, inFlight); };
  const auto bare = [&] { curl.run(requestCount, inFlight); };
  measurePair(state, ours, bare);
}

// Lets the cache keep what the server sends.
class KeptReplies : public URLSession {
 public:
  void run(URLRequest request, Completion completion) override {
    curl_.run(std::move(request), [completion = std::move(completion)](Result<URLResponse> outcome) {
      if (outcome) outcome->headers["Cache-Control"] = "max-age=86400";
      completion(std::move(outcome));
    });
  }

 private:
  CurlURLSession curl_;
};

void hits(State& state) {
  const auto inFlight = static_cast<int>(state.range(0));
  const QuickServer server;
  CurlURLSession session;
  const auto cached =
      cachedSession(std::make_shared<KeptReplies>(), scratchFolder() + "/hits.sqlite", 10'000'000);
  Stream kept(*cached, server.url(), ""), requested(session, server.url(), "");
  kept.run(warmUpCount, 1);
  requested.run(warmUpCount, inFlight);
  const auto ours = [&] { kept.run(requestCount, inFlight); };
  const auto bare = [&] { requested.run(requestCount, inFlight); };
  measurePair(state, ours, bare);
}

void submission(State& state) {
  static const QuickServer& server = neverDestroyed<QuickServer>();
  static const auto client = [] {
    Platform::install(makePosixPlatform(std::make_shared<MainQueue>(), scratchFolder() + "/client.sqlite"));
    return CookiesSDK::createInstance(server.url(), "site");
  }();
  BareCurl curl(server.url(), consentBody());
  BareStore store(scratchFolder() + "/bare.sqlite");
  const BasicConsent choices[] = {BasicConsent::acceptAll(), BasicConsent::rejectAll()};
  const std::string values[] = {JSONEncoder().encode(choices[0]).value(),
                                JSONEncoder().encode(choices[1]).value()};
  int submitted = 0, saved = 0;
  const auto ours = [&] {
    Countdown done(1);
    client->submitConsent(choices[submitted++ % 2], [&](const Result<ConsentResponse>& response) {
      if (!response) std::abort();
      done.countDown();
    });
    done.wait();
  };
  const auto bare = [&] {
    curl.run(1, 1);
    store.save("consent", values[saved++ % 2]);
  };
  measurePair(state, ours, bare);
}

BENCHMARK_CAPTURE(requests, get, "")->Name("requests/GET")->Arg(1)->Arg(32)->Iterations(1);
BENCHMARK_CAPTURE(requests, post, consentBody())->Name("requests/POST")->Arg(1)->Arg(32)->Iterations(1);
BENCHMARK(hits)->Arg(1)->Arg(32)->Iterations(1);
BENCHMARK(submission)->Name("submission")->Iterations(50);

}  // namespace
}  // namespace TalvoConsentBenchmarks

int main(int argc, char* argv[]) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
