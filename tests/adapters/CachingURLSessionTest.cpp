// The cache in front of a session: threads, cancellation and limits, and random histories. CacheRulesTest
// tests the rules of HTTP.

#include <thread>

#include "adapters/cache/MemoryCacheStorage.h"

#include "testing/CacheStorageConformance.h"
#include "testing/Outcomes.h"
#include "testing/fakes/FailingSeams.h"
#include "testing/fakes/FakeURLSession.h"
#include "testing/fakes/ManualExecutor.h"
#include "tests/adapters/CacheHistory.h"
#include "tests/support/Repetitions.h"

namespace TalvoConsentSDK {
namespace {

struct InMemory {
  std::shared_ptr<CacheStorage> open(std::size_t maxBytes) {
    return std::make_shared<MemoryCacheStorage>(maxBytes);
  }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Memory, CacheStorageConformance, InMemory);

TEST(CachingURLSession, HoldsInRandomHistories) {
  std::map<int, std::shared_ptr<CacheStorage>> storages;  // by seed
  CacheHistory::playAll(repetitions("TALVO_TEST_HISTORIES", 50), 300, [&](int seed) {
    auto& storage = storages[seed];
    if (!storage) storage = std::make_shared<MemoryCacheStorage>(seed % 3 == 0 ? 2'000 : 100'000);
    return storage;
  });
}

class CachingURLSessionTest : public ::testing::Test {
 protected:
  CachingURLSessionTest() {
    storage->before = [this] { EXPECT_TRUE(executor->isCurrent()); };
    answer("max-age=60");
    inner->answer("POST", url, 204, "");
  }

  void answer(const std::string& cacheControl, const std::string& query = "") {
    URLResponse reply = replyOf("200", "one");
    reply.headers = {{"Content-Type", "application/json"}, {"Cache-Control", cacheControl}};
    inner->answer("GET", url + query, reply);
  }

  std::unique_ptr<CachingURLSession> newSession() {
    return std::make_unique<CachingURLSession>(inner, storage, executor, clock.cacheClock());
  }

  void run(URLRequest request) {
    const std::size_t before = outcomes.wait(0).size();
    session->run(std::move(request), outcomes.completion());
    EXPECT_EQ(outcomes.wait(0).size(), before) << "reported within `run`";
  }

  // Runs what is waiting, and returns the latest report; "" if there is none.
  std::string reported() {
    while (executor->runAll() + thread->runAll() > 0) {
    }
    const auto all = outcomes.wait(0);
    if (all.size() == reports) return "";
    EXPECT_EQ(all.size(), ++reports);
    const auto& outcome = all.back().first;
    if (!outcome) return outcome.error().what();
    return outcome->source == ReplySource::cache ? "cache" : "network";
  }

  std::string reportedTo(URLRequest request) {
    run(std::move(request));
    return reported();
  }

  const std::string url = "https://service.example/a";
  const std::shared_ptr<ManualExecutor> executor = std::make_shared<ManualExecutor>();
  const std::shared_ptr<ManualExecutor> thread = std::make_shared<ManualExecutor>();
  std::shared_ptr<FakeURLSession> inner = std::make_shared<FakeURLSession>(thread);
  TestClock clock;
  std::shared_ptr<FailingCacheStorage> storage =
      std::make_shared<FailingCacheStorage>(std::make_shared<MemoryCacheStorage>());
  std::unique_ptr<CachingURLSession> session = newSession();
  Outcomes outcomes;
  std::size_t reports = 0;
};

TEST_F(CachingURLSessionTest, ReportsACancelledRequestOnceAndSendsNothing) {
  for (const bool isKept : {false, true}) {
    const auto request = makeCancellable("GET", url);
    run(request);
    request.cancellation->cancel();
    EXPECT_EQ(reported(), cancelledError().what());
    EXPECT_EQ(inner->requests().size(), isKept ? 1U : 0U);
    EXPECT_EQ(reportedTo(makeRequest("GET", url)), isKept ? "cache" : "network");
  }
}

TEST_F(CachingURLSessionTest, PassesOnCancellationAndWhatIsLeftOfLimits) {
  constexpr std::chrono::milliseconds wait(20), limit(60'000);
  auto request = makeCancellable("GET", url);
  request.timeout = seconds(7);
  request.totalTimeout = limit;
  run(request);
  std::this_thread::sleep_for(wait);
  EXPECT_EQ(reported(), "network");
  const URLRequest sent = inner->requests().at(0);
  EXPECT_EQ(sent.cancellation, request.cancellation);
  EXPECT_EQ(sent.timeout, request.timeout);
  ASSERT_TRUE(sent.totalTimeout);
  EXPECT_LE(*sent.totalTimeout, limit - wait);
  EXPECT_GT(*sent.totalTimeout, limit * 11 / 12);
}

TEST_F(CachingURLSessionTest, ReplacesAnErrorInTimeButNotACancellation) {
  answer("stale-if-error=60", "?stale");
  auto request = makeCancellable("GET", url + "?stale");
  request.totalTimeout = seconds(80);
  EXPECT_EQ(reportedTo(request), "network");
  inner->stall("GET", url + "?stale");
  EXPECT_EQ(reportedTo(request), "cache");
  EXPECT_LE(inner->requests().at(1).totalTimeout, seconds(70)) << "time is left for the kept reply";
  request.totalTimeout.reset();
  run(request);
  executor->runAll();
  request.cancellation->cancel();
  EXPECT_EQ(reported(), cancelledError().what());
}

// Leaves its requests to the test.
struct HeldSession : URLSession {
  void run(URLRequest, Completion done) override { completion = std::move(done); }
  Completion completion;
};

// The reply may arrive although the request was cancelled. Whoever cancelled it had set no condition.
TEST_F(CachingURLSessionTest, ReportsNo304OfItsOwnConditionsToACancelledRequest) {
  const auto held = std::make_shared<HeldSession>();
  session = std::make_unique<CachingURLSession>(held, storage, executor, clock.cacheClock());
  const auto request = makeCancellable("GET", url);
  for (const char* const status : {"200", "304"}) {
    run(request);
    executor->runAll();
    if (status == "304"s) request.cancellation->cancel();
    URLResponse reply = replyOf(status, status == "200"s ? "one" : "nothing");
    reply.url = request.url;
    reply.headers = {{"Content-Type", "application/json"}, {"ETag", "\"1\""}};
    held->completion(reply);
  }
  executor->runAll();
  EXPECT_EQ(outcomes.wait(2).at(1).first.value().body, "one");
}

// Two sessions with one storage, as in two processes.
TEST_F(CachingURLSessionTest, RemovesWhatOthersHaveKeptSinceTheLastChange) {
  auto other = newSession();
  EXPECT_EQ(reportedTo(makeRequest("POST", url)), "network");
  session.swap(other);
  EXPECT_EQ(reportedTo(makeRequest("GET", url)), "network");
  session.swap(other);
  std::this_thread::sleep_for(std::chrono::milliseconds(100));  // sooner, nothing is removed again
  EXPECT_EQ(reportedTo(makeRequest("POST", url)), "network");
  session = newSession();
  EXPECT_EQ(reportedTo(makeRequest("GET", url)), "network");
  EXPECT_EQ(reportedTo(makeRequest("GET", url)), "cache");
}

TEST_F(CachingURLSessionTest, RemovesWhatItCouldNotChange) {
  EXPECT_EQ(reportedTo(makeRequest("GET", url)), "network");
  storage->fails = true;
  for (const char* const method : {"POST", "GET"}) EXPECT_EQ(reportedTo(makeRequest(method, url)), "network");
  storage->fails = false;
  for (const char* const expected : {"network", "cache"})
    EXPECT_EQ(reportedTo(makeRequest("GET", url)), expected);
}

TEST_F(CachingURLSessionTest, EndsRequestsThatItHasNotPassedOnWhenItIsDestroyed) {
  run(makeRequest("GET", url));
  session = nullptr;
  inner = nullptr;
  EXPECT_EQ(reported(), "The session was closed");
}

TEST_F(CachingURLSessionTest, AsksTheServiceIfItsExecutorRefusesWork) {
  const auto refusing = std::make_shared<FailingExecutor>(executor);
  refusing->refuses = true;
  session = std::make_unique<CachingURLSession>(inner, std::make_shared<MemoryCacheStorage>(), refusing);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(reportedTo(makeRequest("GET", url)), "network");
}

}  // namespace
}  // namespace TalvoConsentSDK
