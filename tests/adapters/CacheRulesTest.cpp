// Plays the table of what a private cache must and must not do (tests/golden/cache/rules.txt, whose header
// explains the steps) through the real session and a real server.

#include <algorithm>

#include "adapters/cache/CachingURLSession.h"
#include "adapters/cache/MemoryCacheStorage.h"
#include "adapters/curl/CurlURLSession.h"
#include "adapters/threads/BackgroundThread.h"

#include "testing/LoopbackServer.h"
#include "testing/Outcomes.h"
#include "tests/adapters/CacheTest.h"

namespace TalvoConsentSDK {
namespace {

using Fields = std::vector<std::pair<std::string, std::string>>;

struct Reply {
  int status = 200;
  std::string body;
  Fields fields;
  std::string verb;  // of the step that prepared it
};

struct Step {
  explicit Step(std::string text) {
    for (auto begin = text.find('{'); begin != text.npos; begin = text.find('{')) {
      const auto end = text.find('}');
      const std::string field = text.substr(begin + 1, end - begin - 1);
      const auto colon = field.find(':');
      const auto value = field.find_first_not_of(' ', colon + 1);
      fields.emplace_back(field.substr(0, colon), value == field.npos ? "" : field.substr(value));
      text.replace(begin, end - begin + 1, " ");
    }
    parts = words(text);
    verb = parts.at(0);
    parts.erase(parts.begin());
    if (parts.empty() || !parts.front().starts_with('/')) return;
    path = parts.front();
    parts.erase(parts.begin());
  }

  std::string verb, path = "/a";
  Texts parts;
  Fields fields;
};

// A row of the table: name, section, steps.
using Row = std::array<std::string, 3>;

class CacheRules : public TestWithParam<Row> {
 protected:
  CacheRules() { restart(); }

  void restart() {
    ++run;
    openAnother();
  }
  void openAnother() {
    session = std::make_unique<CachingURLSession>(curl, storage, thread, clock.cacheClock(run));
  }

  void play(Step step) {
    const std::string& verb = step.verb;
    for (auto& [name, value] : step.fields) value = filledIn(value);
    if (verb == "get" || verb == "personal") return get(step);
    if (verb == "post" || verb == "put" || verb == "elsewhere") return send(step);
    if (verb == "has") return expectFields(step.fields, latest);
    if (verb == "asked") return expectFields(step.fields, server.requests().back().headers);
    if (verb == "restart") return restart();
    if (verb == "another") return openAnother();
    if (verb == "wait") return clock.wait(seconds(std::stoi(step.parts.at(0))));
    if (verb == "clock") return clock.set(seconds(std::stoi(step.parts.at(0))));
    const std::scoped_lock guard(lock);
    if (verb == "serve") {
      isConfirming = false;
      replies[step.path] = {std::stoi(step.parts.at(0)), step.parts.at(1), step.fields, verb};
    } else if (verb == "unframed" || verb == "cut") {
      replies[step.path] = {200, step.parts.at(0), step.fields, verb};
    } else if (verb == "redirect") {
      replies[step.path] = {302, "", {{"Location", step.parts.at(0)}}, verb};
    } else if (verb == "confirm") {
      isConfirming = true;
      confirmation = {304, "", step.fields, verb};
    } else if (verb == "accept") {
      acceptance = {std::stoi(step.parts.at(0)), "", step.fields, verb};
    } else if (verb == "down" || verb == "up") {
      isDown = verb == "down";
    } else if (verb == "slow") {
      delay = seconds(std::stoi(step.parts.at(0)));
    } else {
      ADD_FAILURE() << "There is no step " << verb;
    }
  }

  // "@N" and its variants become dates, and "@origin" this server's origin.
  std::string filledIn(std::string value) const {
    if (const auto at = value.find("@origin"); at != value.npos) return value.replace(at, 7, server.url(""));
    if (!value.starts_with('@')) return value;
    const auto colon = value.find(':');
    const std::string kind = colon == value.npos ? "" : value.substr(1, colon - 1);
    const seconds offset(std::stoi(value.substr(colon == value.npos ? 1 : colon + 1)));
    if (kind == "850") return httpDate(clock.wall() + offset, "%A, %d-%b-%y %H:%M:%S GMT");
    if (kind == "c") return httpDate(clock.wall() + offset, "%a %b %e %H:%M:%S %Y");
    return httpDate(clock.wall() + offset);
  }

  void get(const Step& step) {
    URLRequest request = makeRequest("GET", server.url(step.path));
    request.headers = HTTPHeaders(step.fields.begin(), step.fields.end());
    request.isPersonal = step.verb == "personal";
    const auto outcome = await(*session, request);
    const std::string& source = step.parts.at(0);
    if (!outcome || source == "error") {
      EXPECT_EQ(outcome ? "network" : "error", source) << failure(outcome);
      return;
    }
    static const std::map<ReplySource, std::string> names{{ReplySource::network, "network"},
                                                          {ReplySource::cache, "cache"},
                                                          {ReplySource::validatedCache, "checked"}};
    EXPECT_EQ(names.at(outcome->source), source);
    EXPECT_EQ(outcome->body, step.parts.at(1));
    if (outcome->source != ReplySource::network) {
      EXPECT_EQ(outcome->statusCode, 200);
      EXPECT_EQ(outcome->url, request.url);
    }
    latest = outcome->headers;
  }

  void send(const Step& step) {
    const std::string host = step.verb == "elsewhere" ? "localhost" : "127.0.0.1";
    const auto outcome =
        await(*session, makeRequest(step.verb == "put" ? "PUT" : "POST", server.url(step.path, host)));
    const std::scoped_lock guard(lock);
    EXPECT_EQ(outcome.has_value(), !isDown);
    EXPECT_TRUE(isDown || outcome->statusCode == acceptance.status);
  }

  static void expectFields(const Fields& expected, const HTTPHeaders& headers) {
    for (const auto& [name, value] : expected) {
      const auto found = headers.find(name);
      EXPECT_EQ(found == headers.end() ? "" : found->second, value) << name;
    }
  }

  void answer(const LoopbackServer::Request& request, LoopbackServer::Connection& connection) {
    const std::scoped_lock guard(lock);
    clock.wait(delay);
    if (isDown) return connection.reset();
    const bool isGet = request.method == "GET";
    const bool isConditional =
        request.headers.contains("If-None-Match") || request.headers.contains("If-Modified-Since");
    Reply reply = isGet ? replies[request.target] : acceptance;
    if (isGet && isConditional && isConfirming && reply.verb != "redirect") reply = confirmation;
    std::string lines;
    for (const auto& [name, value] : reply.fields)
      if (!value.empty()) lines += name + ": " + value + "\r\n";
    const bool hasType = std::ranges::count(reply.fields, "Content-Type", &Fields::value_type::first) > 0;
    if (!hasType && reply.status != 304) lines += "Content-Type: application/json\r\n";
    if (reply.verb != "unframed" && reply.verb != "cut")
      return connection.reply(reply.status, reply.body, lines);
    if (reply.verb == "cut") lines += "Content-Length: " + std::to_string(2 * reply.body.size()) + "\r\n";
    connection.send("HTTP/1.1 200 OK\r\n" + lines + "\r\n" + reply.body);
    connection.close();
  }

  TestClock clock;
  std::uint64_t run = 0;  // of the process
  std::mutex lock;        // guards what the server's thread uses
  std::map<std::string, Reply> replies;
  Reply confirmation, acceptance;
  bool isConfirming = false, isDown = false;
  seconds delay{0};

  LoopbackServer server{[this](auto& request, auto& connection) { answer(request, connection); }};
  const std::shared_ptr<URLSession> curl = std::make_shared<CurlURLSession>();
  const std::shared_ptr<CacheStorage> storage = std::make_shared<MemoryCacheStorage>();
  const std::shared_ptr<Executor> thread = std::make_shared<BackgroundThread>();
  std::unique_ptr<CachingURLSession> session;
  HTTPHeaders latest;
};

TEST_P(CacheRules, Hold) {
  const auto& [name, section, steps] = GetParam();
  for (const std::string& step : split(steps, '>')) {
    SCOPED_TRACE(section + ": " + step);
    play(Step(step));
  }
}
INSTANTIATE_TEST_SUITE_P(Table, CacheRules, ValuesIn(tableOf<3>("cache/rules.txt")), byFirstCell);

}  // namespace
}  // namespace TalvoConsentSDK
