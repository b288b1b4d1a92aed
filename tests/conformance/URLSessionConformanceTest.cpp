// Runs the conformance suite on the in-memory sessions.

#include <algorithm>

#include "adapters/threads/BackgroundThread.h"

#include "testing/URLSessionConformance.h"
#include "testing/fakes/FailingSeams.h"
#include "testing/fakes/FakeURLSession.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

class FakeBackend {
 public:
  URLSession& session() { return *fake_; }

  URL serve(const std::string& method, const std::string& path, int status, std::string body,
            const HeaderLines& headers = {}) {
    URLResponse response;
    response.statusCode = status;
    for (const auto& [name, value] : headers) {
      std::string& joined = response.headers[name];
      joined += (joined.empty() ? "" : ", ") + value;
    }
    if (method != "HEAD" && status != 204 && status != 304) response.body = std::move(body);
    fake_->answer(method, base_ + path, std::move(response));
    return URL::parse(base_ + path).value();
  }

  URL redirect(const std::string& method, const std::string& path, int status) {
    return serve(method, path, status, "", {{"Location", base_}});
  }
  URL breakOff(const std::string&, const std::string&) { return unreachable(); }

  URL stall(const std::string& method, const std::string& path, Stall) {
    fake_->stall(method, base_ + path);
    return URL::parse(base_ + path).value();
  }
  void awaitStall() {}

  std::size_t seen(const std::string& text) const {
    const auto isSent = [&](const URLRequest& request) {
      std::string all = request.body.value_or("");
      for (const auto& [name, value] : request.headers) all += name + ": " + value + "\r\n";
      return all.find(text) < all.npos && !(request.cancellation && request.cancellation->isCancelled());
    };
    return static_cast<std::size_t>(std::ranges::count_if(fake_->requests(), isSent));
  }

  URL unreachable() { return URL::parse(base_ + "/unprepared").value(); }

 protected:
  const std::string base_ = "https://consent.example";
  const std::shared_ptr<Executor> thread_ = std::make_shared<BackgroundThread>();
  const std::shared_ptr<FakeURLSession> fake_ = std::make_shared<FakeURLSession>(thread_);
};

class FailingBackend : public FakeBackend {
 public:
  FailingURLSession& session() { return failing_; }

 private:
  FailingURLSession failing_{fake_, thread_};
};

using Backends = ::testing::Types<FakeBackend, FailingBackend>;
INSTANTIATE_TYPED_TEST_SUITE_P(Memory, URLSessionConformance, Backends);

}  // namespace
}  // namespace TalvoConsentSDK
