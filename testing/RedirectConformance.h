#pragma once

// Tests that every URLSession must pass if it follows redirects. The session is default-constructible and may
// send plain http to the loopback host.

#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "TalvoConsentSDK/platform/URLSession.h"

#include "testing/LoopbackServer.h"
#include "testing/Outcomes.h"

namespace TalvoConsentSDK {

template <class Session>
class RedirectConformance : public ::testing::Test {
 protected:
  static std::string location(const std::string& url) { return "Location: " + url + "\r\n"; }

  Session session;
};

TYPED_TEST_SUITE_P(RedirectConformance);

TYPED_TEST_P(RedirectConformance, FollowsRedirectsAsTheirStatusSays) {
  const struct {
    std::string method;
    std::string redirects;  // the statuses in turn; "away" if the last redirect leads to another origin
    std::string last;       // the method of the last request; "error"; or empty if the redirect is the answer
  } cases[] = {
      {"GET", "301", "GET"},
      {"GET", "302", "GET"},
      {"GET", "303", "GET"},
      {"GET", "307", "GET"},
      {"GET", "300", ""},
      {"GET", "304", ""},
      {"HEAD", "302", "HEAD"},
      {"HEAD", "303", "HEAD"},
      {"POST", "301", "GET"},
      {"POST", "302", "GET"},
      {"POST", "303", "GET"},
      {"POST", "307", "POST"},
      {"POST", "308", "POST"},
      {"POST", "307/303", "GET"},
      {"PUT", "301", "error"},
      {"PUT", "302", "error"},
      {"PUT", "303", "GET"},
      {"PUT", "307", "PUT"},
      {"PUT", "308", "PUT"},
      {"POST", "301/away", "error"},
      {"POST", "302/away", "error"},
      {"POST", "303/away", "error"},
      {"POST", "307/away", "error"},
      {"POST", "308/away", "error"},
      {"PUT", "303/away", "error"},
      {"PUT", "307/away", "error"},
      {"PUT", "308/away", "error"},
      {"POST", "303/303/away", "error"},
      {"PUT", "303/303/away", "error"},
      {"PUT", "307/303/away", "error"},
  };
  using Request = LoopbackServer::Request;
  using Connection = LoopbackServer::Connection;
  const LoopbackServer other([](const Request&, Connection& connection) { connection.reply(200); });
  // The path of a request consists of the redirects that are left.
  const LoopbackServer server([&](const Request& request, Connection& connection) {
    const std::string status = request.target.substr(1, request.target.find('/', 1) - 1);
    const std::string left = request.target.substr(1 + status.size());
    if (status == "end") return connection.reply(200, "end");
    const std::string next = left.empty() ? "x/../end/here%20?q" : left == "/away" ? other.url("/") : left;
    connection.reply(std::stoi(status), "gone", this->location(next));
  });
  for (const auto& [method, redirects, last] : cases) {
    SCOPED_TRACE(method + " " + redirects);
    auto request = makeRequest(method, server.url("/" + redirects));
    if (method[0] == 'P') request.body = "body";
    request.headers = {{"Content-Type", "text/plain"}, {"X-Client-Name", "mobile"}};
    const auto outcome = await(this->session, request);
    EXPECT_EQ(outcome.has_value(), last != "error");
    if (!outcome) continue;
    EXPECT_EQ(outcome->statusCode, last.empty() ? std::stoi(redirects) : 200);
    if (last.empty()) continue;
    EXPECT_EQ(outcome->body.value_or(""), method == "HEAD" ? "" : "end");
    const Request latest = server.requests().back();
    EXPECT_EQ(latest.target, "/end/here%20?q");
    EXPECT_EQ(latest.method, last);
    EXPECT_EQ(latest.body, last[0] == 'P' ? "body" : "");
    EXPECT_EQ(latest.headers.count("Content-Type"), std::size_t{last[0] == 'P' || last == method});
    EXPECT_EQ(latest.headers.at("X-Client-Name"), "mobile");
  }
  EXPECT_EQ(other.connections(), 0);
}

TYPED_TEST_P(RedirectConformance, LeavesOriginsWithoutCredentials) {
  using Request = LoopbackServer::Request;
  using Connection = LoopbackServer::Connection;
  const LoopbackServer other([this](const Request& request, Connection& connection) {
    const bool isFirst = request.target == "/";
    connection.reply(isFirst ? 308 : 200, "", isFirst ? this->location("/then") : "");
  });
  const LoopbackServer server([&](const Request& request, Connection& connection) {
    connection.reply(302, "", this->location(request.target == "/" ? "/x y\xc3\xa9" : other.url("/")));
  });
  std::string url = server.url("/");
  auto request = makeRequest("GET", url.replace(url.find("://"), 3, "://name:secret@"));
  for (const char* const name :
       {"authorization", "Proxy-Authorization", "Cookie", "If-None-Match", "if-modified-since"})
    request.headers[name] = "secret";
  for (const char* const name : {"X-Client-Name", "Content-Type"}) request.headers[name] = "text/plain";
  EXPECT_TRUE(await(this->session, request));
  EXPECT_EQ(server.requests().back().target, "/x%20y%c3%a9");
  EXPECT_EQ(server.requests().back().headers.at("Cookie"), "secret");
  EXPECT_EQ(other.requests().back().target, "/then");
  for (const Request& received : other.requests()) {
    EXPECT_EQ(received.headers.count("Authorization"), 0U);
    for (const auto& [name, value] : received.headers) EXPECT_NE(value, "secret") << name;
    for (const char* const name : {"X-Client-Name", "Content-Type"})
      EXPECT_EQ(received.headers.at(name), "text/plain");
  }
}

TYPED_TEST_P(RedirectConformance, FollowsTwentyRedirects) {
  using Request = LoopbackServer::Request;
  using Connection = LoopbackServer::Connection;
  const LoopbackServer server([this](const Request& request, Connection& connection) {
    const int left = std::stoi(request.target.substr(1));
    connection.reply(left == 0 ? 200 : 302, "",
                     left == 0 ? "" : this->location("/" + std::to_string(left - 1)));
  });
  EXPECT_TRUE(await(this->session, makeRequest("POST", server.url("/20"))));
  EXPECT_FALSE(await(this->session, makeRequest("POST", server.url("/21"))));
  EXPECT_EQ(server.requests().size(), 42U);
}

REGISTER_TYPED_TEST_SUITE_P(RedirectConformance, FollowsRedirectsAsTheirStatusSays,
                            LeavesOriginsWithoutCredentials, FollowsTwentyRedirects);

}  // namespace TalvoConsentSDK
