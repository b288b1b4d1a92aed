#include "TalvoConsentSDK/core/TalvoConsent.h"

#include "tests/core/ClientTest.h"

namespace TalvoConsentSDK {
namespace {

struct Topics {
  std::string name;
  std::optional<std::string> token;
  std::optional<std::string> apiUrl;
  std::map<std::int64_t, bool> topics;
  std::string url;
  std::string members;  // of the body, besides those that are always the same
};

class TopicsTest : public ClientTest, public ::testing::WithParamInterface<Topics> {};

TEST_P(TopicsTest, SendsThem) {
  const auto& [name, token, apiUrl, topics, url, members] = GetParam();
  platform.session->answer("POST", url, 200, R"({"receipt":{"n":1}})");
  const auto client = TalvoConsent::getInstance("tenant", "point", token, apiUrl);
  EXPECT_EQ(TalvoConsent::getInstance("t", "other", "other", "https://elsewhere.example"), client);
  std::string reply;
  client->submitConsent("me@x.example", topics, [&](const Result<JSONObject>& result) {
    EXPECT_TRUE(platform.callbacks->isCurrent());
    reply += written(*result);
  });
  platform.settle();
  EXPECT_EQ(reply, R"({"receipt":{"n":1}})");
  const auto requests = platform.session->requests();
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_THAT(requests[0].headers, ElementsAre(Pair("Content-Type", "application/json"),
                                               Pair("X-Client-Name", "mobile-consent-sdk-ios")));
  EXPECT_EQ(
      canonical(*requests[0].body),
      canonical(R"({"collectionPointId":"point","requesterId":"me@x.example","requesterType":"EMAIL",)" +
                members));
}

const std::string none = R"("topicSelectionDtos":[]})";
const Topics allTopics[] = {
    {"WithToken",
     "t-1",
     "https://x.example",
     {{-3, true}, {7000000000, false}},
     "https://x.example/public/consent",
     R"("token":"t-1","topicSelectionDtos":[{"topicId":-3,"selected":true},{"topicId":7000000000,"selected":false}]})"},
    {"WithoutTopics", std::nullopt, "https://x.example/", {}, "https://x.example/public/consent", none},
    {"TwoSlashes", std::nullopt, "https://x.example//", {}, "https://x.example//public/consent", none},
    {"DefaultService", std::nullopt, std::nullopt, {}, TALVO_DEFAULT_API_URL "/public/consent", none},
};
INSTANTIATE_TEST_SUITE_P(Client, TopicsTest, ValuesIn(allTopics), byName);

}  // namespace
}  // namespace TalvoConsentSDK
