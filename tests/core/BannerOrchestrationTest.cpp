#include <bit>

#include "TalvoConsentSDK/platform/Spawn.h"

#include "tests/core/ClientTest.h"
#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {

namespace {

// Keeps requests until the test reports their outcomes.
struct PendingSession : URLSession {
  struct Pending {
    URLRequest request;
    Completion completion;
  };
  std::vector<Pending> pending;

  void run(URLRequest request, Completion completion) override {
    pending.push_back({std::move(request), std::move(completion)});
  }
  bool isCancelled(std::size_t index) const { return pending.at(index).request.cancellation->isCancelled(); }
};

class BannerOrchestrationTest : public ClientTest {
 protected:
  BannerOrchestrationTest() {
    documents = {bannerDocument(customization("buttons:acceptAll closeButton", "tabs:marketing")),
                 written(catalogue("marketing:A")), "{}"};
    replaceSeam(&Platform::urlSession, session);
    replaceSeam(&Platform::mainActor, mainActor);
    client = CookiesSDK::createInstance("https://service.example/", "s");
    platform.settle();
    report(0, PlatformError("net", 1, "offline"));
    platform.printer->take();
    session->pending.clear();
  }

  /// Asks for a banner. Its requests are the last three in `session->pending`.
  void show(BannerOptions options = {}) {
    const auto captured = std::make_shared<int>();
    closures = captured;
    client->showBanner(
        BannerHandlers{.onError = [this, captured](const Error& error) { errors.push_back(error.what()); }},
        options);
    platform.settle();
  }

  void report(std::size_t index, const Result<URLResponse>& outcome) {
    std::exchange(session->pending.at(index).completion, nullptr)(outcome);
    platform.settle();
  }
  void deliver(std::size_t index) { report(index, replyOf("200", documents.at(index % 3))); }

  std::size_t shown() const { return platform.scene->windows().size(); }
  void close() {
    const auto window = platform.scene->windows().at(0);
    EXPECT_TRUE(tap(*window->controller, "button Close"));
    platform.settle();
    window->finishAnimations();
  }

  const std::shared_ptr<PendingSession> session = std::make_shared<PendingSession>();
  const std::shared_ptr<FailingExecutor> mainActor = std::make_shared<FailingExecutor>(platform.mainActor);
  std::shared_ptr<CookiesSDK> client;
  Texts documents;
  Texts errors;
  std::weak_ptr<int> closures;  // what the last banner's closures have captured
};

// Each order in which the three outcomes can arrive, with each set of documents that fail.
TEST_F(BannerOrchestrationTest, ShowsOrReportsOnceAsSoonAsThatIsCertain) {
  const Result<URLResponse> failures[] = {replyOf("200", R"({"bannerType":"popup"})"),
                                          PlatformError("net", 1, "no services"),
                                          PlatformError("net", 1, "no configuration")};
  const Texts reports{"No customization data in response", "Network error: no services",
                      "Network error: no configuration"};
  std::array<std::size_t, 3> order{0, 1, 2};
  do {
    for (unsigned failing = 0; failing < 8; ++failing) {
      SCOPED_TRACE("failing " + std::to_string(failing) + ", order " + std::to_string(order[0]) +
                   std::to_string(order[1]) + std::to_string(order[2]));
      const auto first = static_cast<std::size_t>(std::countr_zero(failing | 8U));
      session->pending.clear();
      errors.clear();
      show();
      Texts asked;
      for (const auto& [request, completion] : session->pending) asked.push_back(request.url.text());
      EXPECT_THAT(asked, ElementsAre(root + "banner-customization/s?lng=en", root + "cookies/s?lng=en",
                                     root + "cookies/s/configurations"));
      unsigned arrived = 0;
      for (const std::size_t each : order) {
        const bool fails = (failing >> each & 1U) != 0;
        if (session->isCancelled(each))
          report(each, cancelledError());
        else
          fails ? report(each, failures[each]) : deliver(each);
        arrived |= 1U << each;
        const unsigned needed = ((2U << first) - 1) & 7U;  // the documents up to the first that fails
        const bool isCertain = (arrived & needed) == needed;
        EXPECT_EQ(errors, isCertain && first < 3 ? Texts{reports[first]} : Texts{});
        EXPECT_EQ(shown(), isCertain && first == 3 ? 1U : 0U);
        for (std::size_t n = 0; n < 3; ++n) {
          const bool isNeeded = (arrived & failing & ((1U << n) - 1)) == 0;  // nothing before it has failed
          EXPECT_EQ(session->isCancelled(n), !isNeeded) << n;
        }
      }
      if (shown() > 0) close();
    }
  } while (std::ranges::next_permutation(order).found);
}

TEST_F(BannerOrchestrationTest, LeavesAnotherBannerAlone) {
  show();
  const auto first = closures;
  show();
  report(0, PlatformError("net", 1, "offline"));
  EXPECT_TRUE(first.expired() && !closures.expired()) << "even while the session reports nothing more";
  for (std::size_t n = 1; n < 6; ++n) EXPECT_EQ(session->isCancelled(n), n < 3) << n;
  for (const std::size_t n : {1U, 2U}) report(n, cancelledError());
  for (const std::size_t n : {5U, 4U, 3U}) deliver(n);
  EXPECT_THAT(errors, ElementsAre("Network error: offline"));
  EXPECT_EQ(shown(), 1U);
  close();
}

// The session ignores the limit.
TEST_F(BannerOrchestrationTest, ShowsNothingAfterItsTimeLimit) {
  show({.timeLimit = 0ms});
  for (const auto& [request, completion] : session->pending) EXPECT_EQ(request.totalTimeout, 0ms);
  deliver(0);
  EXPECT_THAT(errors, ElementsAre("Network error: The time limit for the banner has passed"));
  for (const std::size_t n : {1U, 2U}) deliver(n);
  EXPECT_EQ(errors.size(), 1U);
  EXPECT_EQ(shown(), 0U);

  std::optional<Error> thrown;
  session->pending.clear();
  spawn<BannerOutcome>(platform.mainActor, client->showBanner(BannerOptions{.timeLimit = 0ms}),
                       [&](const Result<BannerOutcome>& end) { thrown = end.error(); });
  platform.settle();
  for (const std::size_t n : {2U, 1U, 0U}) deliver(n);
  const auto* late = thrown ? thrown->as<HTTPClientError>() : nullptr;
  EXPECT_TRUE(late && late->kind() == HTTPClientError::Case::networkError);

  session->pending.clear();
  show({.timeLimit = 1h});
  for (std::size_t n = 0; n < 3; ++n) {
    EXPECT_EQ(session->pending.at(n).request.totalTimeout, 1h);
    deliver(n);
  }
  EXPECT_EQ(shown(), 1U);
  close();
}

TEST_F(BannerOrchestrationTest, ReportsOnceIfTheHostsSeamsThrow) {
  show();
  for (const auto& [request, completion] : session->pending)
    request.cancellation->observe([] { throw WithoutText(); });
  report(0, PlatformError("net", 1, "offline"));
  for (const std::size_t n : {1U, 2U}) deliver(n);
  EXPECT_THAT(errors, ElementsAre("Network error: offline"));
  EXPECT_THAT(platform.printer->take(), SizeIs(2)) << "the observers' exceptions";

  session->pending.clear();
  errors.clear();
  show();
  deliver(0);
  mainActor->refuses = true;
  for (const std::size_t n : {2U, 1U}) deliver(n);
  mainActor->refuses = false;
  EXPECT_THAT(errors, ElementsAre("The executor is out of order"));
  EXPECT_EQ(shown(), 0U);
}

}  // namespace
}  // namespace TalvoConsentSDK
