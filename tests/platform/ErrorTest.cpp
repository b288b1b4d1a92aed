#include <stdexcept>

#include "TalvoConsentSDK/base/Error.h"
#include "TalvoConsentSDK/base/Result.h"
#include "TalvoConsentSDK/models/CodingError.h"
#include "TalvoConsentSDK/network/HTTPClientError.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

namespace {

Error caught(const std::function<void()>& work) {
  try {
    work();
  } catch (...) {
    return Error::current();
  }
  return PlatformError("test", 0, "nothing was thrown");
}

TEST(ErrorTest, KeepsItsCauseWhenPassedOn) {
  Result<int> failed = PlatformError("domain", 7, "text");
  const Error copy = failed.error();
  failed = 1;
  EXPECT_EQ(*failed, 1);
  EXPECT_THROW((void)failed.error(), std::bad_variant_access);
  for (const Error& error :
       {copy, caught([&] { throw copy; }), caught([] { throw PlatformError("domain", 7, "text"); }),
        caught([&] { Result<void>(copy).value(); }),
        caught([&] { (void)Result<std::string>(copy)->size(); })}) {
    ASSERT_TRUE(error.as<PlatformError>());
    EXPECT_EQ(error.as<PlatformError>()->domain(), "domain");
    EXPECT_STREQ(error.what(), "text");
    EXPECT_THAT(error.as<PlatformError>()->userInfo(), ElementsAre(Pair("NSLocalizedDescription", "text")));
    EXPECT_FALSE(error.as<HTTPClientError>());
  }
  EXPECT_STREQ(caught([] { throw std::runtime_error("plain"); }).what(), "plain");
  for (const Error& error :
       {caught([] { throw 3; }), caught([] { throw WithoutText(); }), Error(WithoutText())}) {
    EXPECT_STREQ(error.what(), "Unknown error");
    EXPECT_STREQ(HTTPClientError::networkError(error).what(), "Network error: Unknown error");
  }
}

TEST(ErrorTest, ShowsTextAfterANUL) {
  const std::string text = "a\0b\0"s;
  const auto refused = HTTPClientError::httpError(500, text);
  EXPECT_EQ(refused.message(), text);
  EXPECT_EQ(refused.errorDescription(), refused.what());
  for (const Error& error : {Error(refused), Error(PlatformError("domain", 7, text)),
                             Error(CodingError(CodingError::Kind::keyNotFound, text, "")),
                             Error(CodingError(CodingError::Kind::dataCorrupted, "", text))}) {
    EXPECT_THAT(error.what(), EndsWith("a\\u0000b\\u0000"));
    EXPECT_THAT(HTTPClientError::networkError(error).what(), EndsWith(error.what()));
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
