#include <QBuffer>
#include <map>

#include "adapters/qt/QtImageLoader.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

namespace {

const std::string picture = [] {
  QImage image(20, 10, QImage::Format_RGB32);
  image.fill(Qt::green);
  QByteArray bytes;
  QBuffer buffer(&bytes);
  image.save(&buffer, "PNG");
  return bytes.toStdString();
}();
const std::string icon = std::string("\0\0\1\0\1\0\x14\x0A\0\0\1\0\x20\0", 14) +
                         static_cast<char>(picture.size() % 256) + static_cast<char>(picture.size() / 256) +
                         std::string("\0\0\x16\0\0\0", 6) + picture;
// The beginning of a picture of 60,000 x 60,000 pixels.
const std::string hugePicture(
    "\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR\0\0\xEA\x60\0\0\xEA\x60\x08\x02\0\0\0\x0F\xB0\xE2\x15\0\0\0\x01IDAT",
    41);

std::string svg(const std::string& content) {
  return R"(<?xml version="1.0"?><svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 20 10">)" + content +
         R"(<rect width="30" height="20" fill="#0f0"/></svg>)";
}

std::string nested(int levels) {
  std::string all;
  for (int i = 0; i < levels; ++i) all += "<g>";
  for (int i = 0; i < levels; ++i) all += "</g>";
  return svg(all);
}

// What a row of the table calls them. All other bodies are the content of an SVG.
const std::map<std::string, std::string> bodies{
    {"", ""},
    {"picture", picture},
    {"half a picture", picture.substr(0, 50)},
    {"icon", icon},
    {"huge picture", hugePicture},
    {"31 groups", nested(31)},
    {"32 groups", nested(32)},
    {"long text", svg("<desc>" + std::string(262'144, 'a') + "</desc>")},
    {"entity", "<!DOCTYPE svg [<!ENTITY a 'a'>]>" + svg("&a;")}};

class QtImageLoaderTest : public TestWithParam<std::array<std::string, 6>> {};
INSTANTIATE_TEST_SUITE_P(All, QtImageLoaderTest, ValuesIn(tableOf<6>("downloads.txt")), byFirstCell);

TEST_P(QtImageLoaderTest, AnswersOnceOnTheMainActorAndDecodesInTheBackground) {
  const auto& [name, status, body, url, width, error] = GetParam();
  MemoryPlatform platform;
  URLResponse response = replyOf(status, "nothing");
  if (body != "nothing") response.body = bodies.contains(body) ? bodies.at(body) : svg(body);
  platform.session->answer("GET", "https://a.example/logo", response);
  QtImageLoader loader(platform.session, platform.mainActor, platform.background);
  std::vector<Result<std::shared_ptr<const Image>>> answers;
  loader.load(*URL::parse(url), [&](Result<std::shared_ptr<const Image>> answer) {
    EXPECT_TRUE(platform.mainActor->isCurrent());
    answers.push_back(std::move(answer));
  });
  EXPECT_THAT(answers, IsEmpty());
  const std::size_t responses = platform.sessionThread->runAll();
  EXPECT_EQ(platform.background->runAll(), responses);
  platform.mainActor->runAll();
  ASSERT_EQ(answers.size(), 1U);
  EXPECT_THAT(failure(answers[0]), StartsWith(error));
  ASSERT_EQ(answers[0].has_value(), error.empty());
  if (!answers[0]) return;
  const auto& image = dynamic_cast<const QtImage&>(**answers[0]);
  EXPECT_EQ(image.size(), (Size{std::stod(width), std::stod(width) / 2}));
  EXPECT_EQ(image.content().pixelColor(image.content().width() - 1, 9), QColor(Qt::green));
}

}  // namespace
}  // namespace TalvoConsentSDK
