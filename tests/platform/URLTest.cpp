#include "TalvoConsentSDK/platform/URL.h"
#include "TalvoConsentSDK/platform/URLSession.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {
namespace {

TEST(URLTest, IsWhatRFC3986Has) {
  for (const auto& text : words(R"(
           https://example.com HTTPS://EXAMPLE.com:443/ https://user:pw@example.com/a/b?x=1&y=2#f
           http://[::1]:8443/p http://127.0.0.1:65535/%41%20 https://example.com:/ https://a_b.example..com/)")) {
    EXPECT_TRUE(URL::parse(text).value().isRequestable()) << text;
  }
  for (const auto& text :
       words(R"(https://example.com:65536/ https://example.com:99999999999999999999/ https://
                                   https:///path mailto:a@b.c tel:+491234)")) {
    EXPECT_FALSE(URL::parse(text).value().isRequestable()) << text;
  }
  Texts invalid = words(R"(
      relative/path //host/path https//example.com 1https://example.com https://example.com/é https://exämple.com/
      https://example.com/{id} https://example.com/a|b https://example.com/100% https://example.com/%zz
      https://example.com/a\b https://example.com/?q=[1] https://example.com/?a^b https://example.com/#a#b
      https://example.com/<x> https://example.com/"q" https://[::1/p https://example.com:abc/)");
  for (const auto& text : {""s, " https://a.b"s, "https://a b.c/"s, "https://a.b/\n"s, "https://a.b/\0c"s}) {
    invalid.push_back(text);
  }
  for (const auto& text : invalid) EXPECT_FALSE(URL::parse(text)) << text;

  const URL url = URL::parse("HTTPS://u@[2001:DB8::1]:1/A").value();
  EXPECT_EQ(url.scheme() + " " + url.host() + " " + url.text(),
            "https 2001:DB8::1 HTTPS://u@[2001:DB8::1]:1/A");
}

TEST(HTTPHeadersTest, HaveNamesWithoutCase) {
  HTTPHeaders headers{{"Content-Type", "a"}, {"X-[", "b"}};
  headers["content-TYPE"] = "c";
  EXPECT_THAT(headers, ElementsAre(Pair("Content-Type", "c"), Pair("X-[", "b")));
  EXPECT_EQ(headers.count("x-{"), 0u) << "only letters have a case";
}

}  // namespace
}  // namespace TalvoConsentSDK
