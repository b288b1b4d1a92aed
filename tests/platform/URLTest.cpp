#include "TalvoConsentSDK/base/URL.h"
#include "TalvoConsentSDK/platform/URLSession.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

namespace {

TEST(URLTest, AcceptsExactlyWhatRFC3986Allows) {
  for (const auto& [text, what] : tableOf<2>("platform/urls.txt")) {
    const auto url = URL::parse(unescaped(text));
    EXPECT_EQ(!url ? "no URL" : url->isRequestable() ? "requestable" : "another URL", what) << text;
  }

  const URL url = URL::parse("HTTPS://u@[2001:DB8::1]:1/A").value();
  EXPECT_EQ(url.scheme(), "https");
  EXPECT_EQ(url.host(), "2001:DB8::1");
  EXPECT_EQ(url.text(), "HTTPS://u@[2001:DB8::1]:1/A");
}

TEST(HTTPHeadersTest, IgnoreTheCaseOfNames) {
  HTTPHeaders headers{{"Content-Type", "a"}, {"X-[", "b"}};
  headers["content-TYPE"] = "c";
  EXPECT_THAT(headers, ElementsAre(Pair("Content-Type", "c"), Pair("X-[", "b")));
  EXPECT_EQ(headers.count("x-{"), 0u) << "only letters have a case";
}

}  // namespace
}  // namespace TalvoConsentSDK
