#include "TalvoConsentSDK/core/TalvoConsent.h"

#include "tests/core/ClientTest.h"

namespace TalvoConsentSDK {

namespace {

class TopicsTest : public ClientTest, public ::testing::WithParamInterface<std::array<std::string, 6>> {};

TEST_P(TopicsTest, SendsTopics) {
  const auto& [name, token, service, choices, url, members] = GetParam();
  const auto ifAny = [](const std::string& text) {
    return text == "none" ? std::nullopt : std::optional(text);
  };
  const auto chosen = parsed<JSONValue>(choices);
  std::map<std::int64_t, bool> topics;
  for (const auto& [id, isSelected] : *chosen.object()) topics[std::stoll(id)] = *isSelected.boolean();
  platform.session->answer("POST", (ifAny(service) ? "" : TALVO_DEFAULT_API_URL) + url, 200,
                           R"({"receipt":{"n":1}})");
  const auto client = TalvoConsent::getInstance("tenant", "point", ifAny(token), ifAny(service));
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
                members + "}"));
}

INSTANTIATE_TEST_SUITE_P(Client, TopicsTest, ValuesIn(tableOf<6>("topics.txt")), byFirstCell);

}  // namespace
}  // namespace TalvoConsentSDK
