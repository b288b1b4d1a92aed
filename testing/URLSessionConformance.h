#pragma once

// Tests that every URLSession must pass. A backend is default-constructible and has
//   URLSession& session();
//   URL serve(std::string method, std::string path, int status, std::string body, HeaderLines headers = {}):
//     prepares this answer;
//   URL redirect(std::string method, std::string path, int status): prepares a redirect to another origin,
//     with a header Location; the other origin answers every request with status 200 and an empty body;
//   URL stall(std::string method, std::string path, Stall where): prepares an answer that never ends;
//   void awaitStall(): waits until the latest request to an answer that stalls has come to the place where it
//     stalls. A server does not see a client that is still connecting. On Linux, let it connect to a listener
//     whose queue is full, and wait until /proc/net/tcp lists the attempt in state 02 (testing/FullListener.h
//     in the source tree does this). If `awaitStall` only waits for a second instead, the tests show a little
//     less;
//   URL breakOff(std::string method, std::string path): prepares a reset of the connection;
//   URL unreachable(): a URL for which every request fails;
//   std::size_t seen(std::string text): how often exactly this text has arrived, at any origin, as HTTP/1.1
//     would send it: headers as "Name: value\r\n". For the name of a header, the tests ask for each spelling.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "TalvoConsentSDK/platform/URLSession.h"

#include "testing/Outcomes.h"

namespace TalvoConsentSDK {

/// The lines of a header, in order. Names may be repeated.
using HeaderLines = std::vector<std::pair<std::string, std::string>>;

/// Where an answer stalls: nothing happens from then on, except that `inBodyWithBytes` goes on sending a byte
/// now and then.
enum class Stall { connecting, beforeHead, inBody, inBodyWithBytes };

template <class Backend>
class URLSessionConformance : public ::testing::Test {
 protected:
  Backend backend;
};

TYPED_TEST_SUITE_P(URLSessionConformance);

TYPED_TEST_P(URLSessionConformance, ReportsStatusAndBodyUnchanged) {
  const std::string any("\0\r\n\xff{}", 6);
  const struct {
    const char* method;
    int status;
    std::string body;
    std::optional<std::string> expected;
  } cases[] = {
      {"GET", 200, "{}", "{}"},
      {"GET", 200, "", ""},
      {"POST", 201, any, any},
      {"PUT", 299, std::string(1U << 20U, '\0'), std::string(1U << 20U, '\0')},
      {"GET", 300, "choose", "choose"},
      {"POST", 404, "", ""},
      {"GET", 500, "<html>Sorry</html>", "<html>Sorry</html>"},
      {"GET", 204, "", std::nullopt},
      {"PUT", 304, "", std::nullopt},
      {"HEAD", 200, "", std::nullopt},
      {"HEAD", 404, "", std::nullopt},
  };
  for (const auto& [method, status, body, expected] : cases) {
    SCOPED_TRACE(std::string(method) + " " + std::to_string(status));
    const std::string path = "/" + std::to_string(status) + "/" + std::to_string(body.size());
    const URL url = this->backend.serve(method, path, status, body);
    const auto outcome = await(this->backend.session(), makeRequest(method, url.text()));
    ASSERT_TRUE(outcome) << outcome.error().what();
    EXPECT_EQ(outcome->statusCode, status);
    EXPECT_TRUE(outcome->body == expected);  // EXPECT_EQ would print it, and it may be large
  }
}

TYPED_TEST_P(URLSessionConformance, ReportsEveryRequestOnceOnAThreadOfItsOwn) {
  constexpr int threads = 4;
  constexpr int each = 25;
  const URL url = this->backend.serve("GET", "/many", 200, "x");
  ASSERT_TRUE(await(this->backend.session(), makeRequest("GET", url.text())));
  Outcomes outcomes;
  std::vector<std::thread> callers;
  std::vector<std::thread::id> ids{std::this_thread::get_id()};
  for (int caller = 0; caller < threads; ++caller) {
    callers.emplace_back([&] {
      for (int count = 0; count < each; ++count) {
        this->backend.session().run(makeRequest("GET", url.text()), outcomes.completion());
      }
    });
    ids.push_back(callers.back().get_id());
  }
  const auto all = outcomes.wait(threads * each);
  for (std::thread& caller : callers) caller.join();
  for (const auto& [outcome, thread] : all) {
    EXPECT_TRUE(outcome && outcome->body == "x");
    EXPECT_EQ(thread, all.front().second);
    for (const auto id : ids) EXPECT_NE(thread, id);
  }
  ASSERT_TRUE(await(this->backend.session(), makeRequest("GET", url.text())));
  EXPECT_EQ(outcomes.wait(0).size(), std::size_t{threads * each});
}

TYPED_TEST_P(URLSessionConformance, ReportsAFailureOnceAndStaysUsable) {
  const URL good = this->backend.serve("GET", "/good", 200, "x");
  Outcomes outcomes;
  this->backend.session().run(makeRequest("POST", this->backend.unreachable().text()), outcomes.completion());
  const auto outcome = outcomes.wait(1).front().first;
  ASSERT_FALSE(outcome);
  ASSERT_TRUE(outcome.error().template as<PlatformError>());
  EXPECT_STRNE(outcome.error().what(), "");
  EXPECT_TRUE(await(this->backend.session(), makeRequest("GET", good.text())));
  EXPECT_EQ(outcomes.wait(1).size(), 1U);
}

TYPED_TEST_P(URLSessionConformance, SendsABodyOnceAndToOneOrigin) {
  platform::URLSession& session = this->backend.session();
  ASSERT_TRUE(await(session, makeRequest("GET", this->backend.serve("GET", "/warm", 200, "x").text())));
  for (const std::string method : {"POST", "PUT"}) {
    const auto send = [&](const URL& url) {
      auto request = makeRequest(method, url.text());
      request.body = method + " to " + url.text() + " once";
      const auto outcome = await(session, request);
      EXPECT_LE(this->backend.seen(*request.body), 1U) << *request.body;
      return outcome;
    };
    EXPECT_FALSE(send(this->backend.breakOff(method, "/broken")));
    for (const int status : {301, 302, 303, 307, 308}) {
      const auto outcome = send(this->backend.redirect(method, "/away" + std::to_string(status), status));
      EXPECT_TRUE(!outcome || outcome->statusCode == status)
          << "another origin's answer is not the service's";
    }
  }
}

TYPED_TEST_P(URLSessionConformance, SendsHeadersUnchanged) {
  std::size_t types = 0;
  for (const std::string method : {"GET", "POST", "PUT"}) {
    auto request = makeRequest(method, this->backend.serve(method, "/headers", 200, "x").text());
    if (method != "GET") request.body = "a=b";
    EXPECT_TRUE(await(this->backend.session(), request));
    request.headers = {{"Content-Type", "text/x-" + method}, {"X-List", method + ", \"b\";  c=d"}};
    EXPECT_TRUE(await(this->backend.session(), request));
    EXPECT_EQ(this->backend.seen("ontent-Type:") + this->backend.seen("ontent-type:"), ++types)
        << "a type of the session's own";
    for (const auto& [name, value] : request.headers)
      EXPECT_EQ(this->backend.seen(": " + value + "\r\n"), 1U);
  }
}

TYPED_TEST_P(URLSessionConformance, SurvivesCompletionsThatThrowOrStartRequests) {
  const URL url = this->backend.serve("GET", "/again", 200, "x");
  Outcomes outcomes;
  platform::URLSession& session = this->backend.session();
  session.run(makeRequest("GET", url.text()),
              outcomes.completion([] { throw std::runtime_error("a host's"); }));
  session.run(makeRequest("GET", url.text()), outcomes.completion([] { throw 1; }));
  session.run(makeRequest("GET", url.text()), outcomes.completion([&session, outcomes, url]() mutable {
    session.run(makeRequest("GET", url.text()), outcomes.completion());
  }));
  for (const auto& [outcome, thread] : outcomes.wait(4)) EXPECT_TRUE(outcome);
}

TYPED_TEST_P(URLSessionConformance, ReportsHeadersAndURLOfTheFinalReply) {
  const URL url =
      this->backend.serve("GET", "/headers", 200, "x", {{"X-Part", "a"}, {"ETag", "\"v\""}, {"x-part", "b"}});
  const auto outcome = await(this->backend.session(), makeRequest("GET", url.text()));
  ASSERT_TRUE(outcome) << outcome.error().what();
  for (const auto& [name, value] : HeaderLines{{"X-PART", "a, b"}, {"etag", "\"v\""}}) {
    const auto found = outcome->headers.find(name);
    EXPECT_TRUE(found != outcome->headers.end() && found->second == value) << name;
  }
  EXPECT_EQ(outcome->url, url);

  const URL away = this->backend.redirect("GET", "/away", 302);
  const auto last = await(this->backend.session(), makeRequest("GET", away.text()));
  ASSERT_TRUE(last) << last.error().what();
  const bool isFollowed = last->statusCode != 302;
  EXPECT_EQ(last->headers.contains("location"), !isFollowed);
  EXPECT_TRUE(!last->url || (*last->url != away) == isFollowed);
}

TYPED_TEST_P(URLSessionConformance, EndsCancelledRequestsOnceAndNoOthers) {
  platform::URLSession& session = this->backend.session();
  const auto cancellable = [](const char* method, const URL& url) {
    auto request = makeCancellable(method, url.text());
    if (request.method != "GET") request.body = "body of " + url.text();
    return request;
  };
  const auto good = cancellable("GET", this->backend.serve("GET", "/good", 200, "x"));
  Outcomes others;
  Outcomes cancelled;
  std::size_t count = 0;
  const auto expectCancelled = [&](const char* when) {
    SCOPED_TRACE(when);
    EXPECT_TRUE(isCancelled(cancelled.wait(++count).back().first));
    EXPECT_TRUE(await(session, good)) << "the session is still usable";
  };
  for (const auto where : {Stall::connecting, Stall::beforeHead, Stall::inBody}) {
    for (const char* method : {"GET", "POST"}) {
      const std::string path = "/stalls/" + std::to_string(count);
      const auto stalling = cancellable(method, this->backend.stall(method, path, where));
      session.run(good, others.completion());
      session.run(stalling, cancelled.completion());
      session.run(good, others.completion());
      this->backend.awaitStall();
      stalling.cancellation->cancel();
      stalling.cancellation->cancel();
      expectCancelled(path.c_str());
      EXPECT_LE(this->backend.seen(stalling.body.value_or("no body")), 1U);
    }
  }
  auto late = cancellable("POST", this->backend.serve("POST", "/unsent", 200, "x"));
  late.cancellation->cancel();
  session.run(late, cancelled.completion());
  expectCancelled("before it is run");
  EXPECT_EQ(this->backend.seen(*late.body), 0U);

  const auto stalling = cancellable("GET", this->backend.stall("GET", "/stalls", Stall::beforeHead));
  session.run(good, others.completion([stalling] { stalling.cancellation->cancel(); }));
  session.run(stalling, cancelled.completion());
  expectCancelled("from another request's completion");

  late = cancellable("GET", good.url);
  EXPECT_TRUE(await(session, late));
  late.cancellation->cancel();
  for (const auto& [outcome, thread] : others.wait(2 * 6 + 1)) EXPECT_TRUE(outcome && outcome->body == "x");
  EXPECT_EQ(cancelled.wait(count).size(), count);
}

// Cancels every second request, half of which are never answered. Each request ends once, also if the session
// runs one request after another.
TYPED_TEST_P(URLSessionConformance, TakesCancellationsAtAnyTimeFromAnyThread) {
  constexpr std::size_t count = 200;
  platform::URLSession& session = this->backend.session();
  const URL good = this->backend.serve("GET", "/good", 200, std::string(20'000, 'x'));
  const URL stalling = this->backend.stall("GET", "/stalls", Stall::beforeHead);
  std::vector<std::pair<platform::URLRequest, Outcomes>> all;
  for (std::size_t number = 0; number < count; ++number)
    all.emplace_back(makeCancellable("GET", (number % 4 == 0 ? stalling : good).text()), Outcomes());
  std::atomic<std::size_t> started = 0;
  std::thread canceller([&] {
    for (std::size_t number = 0; number < count; number += 2) {
      while (started < std::min(number + number % 3, count)) std::this_thread::yield();
      all[number].first.cancellation->cancel();
    }
  });
  for (auto& [request, outcomes] : all) {
    session.run(request, outcomes.completion());
    if (++started % 10 == 0) outcomes.wait(1);
  }
  canceller.join();
  for (const auto& [request, outcomes] : all) outcomes.wait(1);
  EXPECT_TRUE(await(session, makeRequest("GET", good.text())));
  for (std::size_t number = 0; number < count; ++number) {
    const auto reports = all[number].second.wait(1);
    EXPECT_EQ(reports.size(), 1U);
    const auto& outcome = reports.front().first;
    EXPECT_TRUE(isCancelled(outcome) ? number % 2 == 0 : outcome && number % 4 != 0) << number;
  }
}

TYPED_TEST_P(URLSessionConformance, MayBeDestroyedBeforeACancellation) {
  auto destroyed = std::make_unique<TypeParam>();
  const auto request = makeCancellable("GET", destroyed->serve("GET", "/good", 200, "x").text());
  Outcomes outcomes;
  destroyed->session().run(request, outcomes.completion());
  EXPECT_TRUE(outcomes.wait(1).front().first);
  destroyed = nullptr;
  request.cancellation->cancel();
  EXPECT_EQ(outcomes.wait(1).size(), 1U);
}

TYPED_TEST_P(URLSessionConformance, LimitsTheTime) {
  platform::URLSession& session = this->backend.session();
  auto good = makeRequest("GET", this->backend.serve("GET", "/good", 200, "x").text());
  good.totalTimeout = std::chrono::hours(24 * 365 * 100);
  using std::chrono::milliseconds;
  const struct {
    Stall where;
    std::optional<milliseconds> totalTimeout;
    milliseconds timeout{60'000};
  } cases[] = {
      {Stall::connecting, milliseconds(300)},
      {Stall::beforeHead, milliseconds(300)},
      {Stall::inBody, milliseconds(300)},
      {Stall::inBodyWithBytes, milliseconds(300)},
      {Stall::beforeHead, milliseconds(0)},
      {Stall::beforeHead, milliseconds(-1)},
      {Stall::connecting, std::nullopt, milliseconds(300)},
      {Stall::beforeHead, std::nullopt, milliseconds(300)},
      {Stall::inBody, std::nullopt, milliseconds(300)},
  };
  for (const auto& [where, totalTimeout, timeout] : cases) {
    const std::string path = "/slow/" + std::to_string(static_cast<int>(where));
    SCOPED_TRACE(path + " " + std::to_string(totalTimeout.value_or(timeout).count()));
    auto request = makeRequest("GET", this->backend.stall("GET", path, where).text());
    request.totalTimeout = totalTimeout;
    request.timeout = timeout;
    const auto start = std::chrono::steady_clock::now();
    const auto outcome = await(session, request);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_TRUE(!outcome && !isCancelled(outcome));
    EXPECT_TRUE(await(session, good)) << "the session is still usable";
  }
}

REGISTER_TYPED_TEST_SUITE_P(URLSessionConformance, ReportsStatusAndBodyUnchanged,
                            ReportsEveryRequestOnceOnAThreadOfItsOwn, ReportsAFailureOnceAndStaysUsable,
                            SendsABodyOnceAndToOneOrigin, SendsHeadersUnchanged,
                            SurvivesCompletionsThatThrowOrStartRequests, ReportsHeadersAndURLOfTheFinalReply,
                            EndsCancelledRequestsOnceAndNoOthers, TakesCancellationsAtAnyTimeFromAnyThread,
                            MayBeDestroyedBeforeACancellation, LimitsTheTime);

}  // namespace TalvoConsentSDK
