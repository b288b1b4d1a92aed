// The cache in front of a session: threads, cancellation and limits, and random histories. CacheRulesTest
// tests the rules of HTTP.

#include <thread>

#include "adapters/cache/CachingURLSession.h"
#include "adapters/cache/MemoryCacheStorage.h"

#include "testing/URLSessionConformance.h"
#include "testing/fakes/FakeURLSession.h"
#include "testing/fakes/ManualExecutor.h"
#include "tests/adapters/CacheHistory.h"
#include "tests/adapters/CacheStorageSuite.h"
#include "tests/support/Repetitions.h"

namespace TalvoConsentSDK {
namespace {

struct InMemory {
  std::shared_ptr<CacheStorage> open(std::size_t maxBytes) {
    return std::make_shared<MemoryCacheStorage>(maxBytes);
  }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Memory, CacheStorageSuite, InMemory);

TEST(CachingURLSession, HoldsInRandomHistories) {
  int hits = 0, confirmed = 0;
  const int seeds = repetitions("TALVO_TEST_HISTORIES", 50);
  for (int seed = 1; seed <= seeds && !::testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    const auto storage = std::make_shared<MemoryCacheStorage>(seed % 3 == 0 ? 2'000 : 100'000);
    CacheHistory history(static_cast<std::uint32_t>(seed), [&] { return storage; });
    history.play(300);
    hits += history.hits();
    confirmed += history.confirmed();
  }
  EXPECT_GT(hits - confirmed, seeds) << "the histories try too little";
  EXPECT_GT(confirmed, seeds);
}

// Fails if it is used on another thread than the executor's.
class GuardedStorage : public MemoryCacheStorage {
 public:
  explicit GuardedStorage(const ManualExecutor& executor) : executor_(executor) {}
  Result<std::optional<CacheEntry>> read(std::string_view key) override {
    EXPECT_TRUE(executor_.isCurrent());
    return MemoryCacheStorage::read(key);
  }
  Result<void> write(std::string_view key, const CacheEntry& entry) override {
    EXPECT_TRUE(executor_.isCurrent());
    return MemoryCacheStorage::write(key, entry);
  }
  Result<void> remove(std::string_view key) override {
    EXPECT_TRUE(executor_.isCurrent());
    return MemoryCacheStorage::remove(key);
  }

 private:
  const ManualExecutor& executor_;
};

class CachingURLSessionTest : public ::testing::Test {
 protected:
  CachingURLSessionTest() {
    URLResponse reply;
    reply.statusCode = 200;
    reply.body = "one";
    reply.url = URL::parse(url);
    reply.headers = {{"Content-Type", "application/json"}, {"Cache-Control", "max-age=60"}};
    inner->answer("GET", url, reply);
    inner->answer("POST", url, 204, "");
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

  const std::string url = "https://service.example/a";
  const std::shared_ptr<ManualExecutor> executor = std::make_shared<ManualExecutor>();
  const std::shared_ptr<ManualExecutor> thread = std::make_shared<ManualExecutor>();
  std::shared_ptr<FakeURLSession> inner = std::make_shared<FakeURLSession>(thread);
  TestClock clock;
  std::unique_ptr<CachingURLSession> session = std::make_unique<CachingURLSession>(
      inner, std::make_shared<GuardedStorage>(*executor), executor, clock.cacheClock());
  Outcomes outcomes;
  std::size_t reports = 0;
};

TEST_F(CachingURLSessionTest, ReportsLaterAndUsesTheStorageOnItsExecutor) {
  for (const char* const expected : {"network", "cache", "cache"}) {
    run(makeRequest("GET", url));
    EXPECT_EQ(reported(), expected);
  }
  run(makeRequest("POST", url));
  EXPECT_EQ(reported(), "network");
  run(makeRequest("GET", url));
  EXPECT_EQ(reported(), "network");
}

TEST_F(CachingURLSessionTest, ReportsACancelledRequestOnceAndSendsNothing) {
  for (const bool isKept : {false, true}) {
    auto request = makeRequest("GET", url);
    request.cancellation = std::make_shared<Cancellation>();
    run(request);
    request.cancellation->cancel();
    EXPECT_EQ(reported(), cancelledError().what());
    EXPECT_EQ(inner->requests().size(), isKept ? 1U : 0U);
    run(makeRequest("GET", url));
    EXPECT_EQ(reported(), isKept ? "cache" : "network");
  }
}

TEST_F(CachingURLSessionTest, PassesOnCancellationAndWhatIsLeftOfLimits) {
  constexpr std::chrono::milliseconds wait(20), limit(60'000);
  auto request = makeRequest("GET", url);
  request.cancellation = std::make_shared<Cancellation>();
  request.timeout = std::chrono::seconds(7);
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

TEST_F(CachingURLSessionTest, LeavesTimeForTheReplyThatReplacesAnError) {
  URLResponse reply;
  reply.statusCode = 200;
  reply.body = "one";
  reply.headers = {{"Content-Type", "application/json"}, {"Cache-Control", "stale-if-error=60"}};
  inner->answer("GET", url + "?d", reply);
  auto request = makeRequest("GET", url + "?d");
  request.totalTimeout = std::chrono::seconds(80);
  run(request);
  EXPECT_EQ(reported(), "network");
  inner->stall("GET", url + "?d");
  run(request);
  EXPECT_EQ(reported(), "cache");
  EXPECT_LE(inner->requests().at(1).totalTimeout, std::chrono::seconds(70));
}

TEST_F(CachingURLSessionTest, DoesNotReplaceACancelledRequest) {
  URLResponse reply;
  reply.statusCode = 200;
  reply.body = "one";
  reply.url = URL::parse(url + "?b");
  reply.headers = {{"Content-Type", "application/json"}, {"Cache-Control", "stale-if-error=60"}};
  inner->answer("GET", url + "?b", reply);
  inner->answer("GET", url + "?b", cancelledError());
  run(makeRequest("GET", url + "?b"));
  EXPECT_EQ(reported(), "network");
  auto request = makeRequest("GET", url + "?b");
  request.cancellation = std::make_shared<Cancellation>();
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
  session = std::make_unique<CachingURLSession>(held, std::make_shared<MemoryCacheStorage>(), executor,
                                                clock.cacheClock());
  auto request = makeRequest("GET", url);
  request.cancellation = std::make_shared<Cancellation>();
  URLResponse reply;
  reply.url = request.url;
  reply.headers = {{"Content-Type", "application/json"}, {"ETag", "\"1\""}};
  for (const int status : {200, 304}) {
    run(request);
    executor->runAll();
    if (status == 304) request.cancellation->cancel();
    reply.statusCode = status;
    reply.body = status == 200 ? std::optional<std::string>("one") : std::nullopt;
    held->completion(reply);
  }
  EXPECT_EQ(outcomes.wait(2).at(1).first.value().body, "one");
}

// Two sessions with one storage, as in two processes.
TEST_F(CachingURLSessionTest, RemovesWhatOthersHaveKeptSinceTheLastChange) {
  const auto storage = std::make_shared<MemoryCacheStorage>();
  const auto ask = [&](const char* method) {
    run(makeRequest(method, url));
    return reported();
  };
  const auto started = [&] {
    return std::make_unique<CachingURLSession>(inner, storage, executor, clock.cacheClock());
  };
  session = started();
  auto other = started();
  EXPECT_EQ(ask("POST"), "network");
  session.swap(other);
  EXPECT_EQ(ask("GET"), "network");
  session.swap(other);
  EXPECT_EQ(ask("POST"), "network");
  session = started();
  EXPECT_EQ(ask("GET"), "network");
  EXPECT_EQ(ask("GET"), "cache");
}

TEST_F(CachingURLSessionTest, EndsRequestsThatItHasNotPassedOnWhenItIsDestroyed) {
  run(makeRequest("GET", url));
  session = nullptr;
  inner = nullptr;
  EXPECT_EQ(reported(), "The session was closed");
}

struct RefusingExecutor : Executor {
  void post(std::function<void()>) override { throw std::runtime_error("full"); }
};

TEST_F(CachingURLSessionTest, AsksTheServiceIfItsExecutorRefusesWork) {
  session = std::make_unique<CachingURLSession>(inner, std::make_shared<MemoryCacheStorage>(),
                                                std::make_shared<RefusingExecutor>());
  for (int i = 0; i < 2; ++i) {
    run(makeRequest("GET", url));
    EXPECT_EQ(reported(), "network");
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
