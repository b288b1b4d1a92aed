#include <QBuffer>

#include "adapters/qt/QtImageLoader.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

using namespace platform;

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

const struct Download {
  const char* name;
  std::optional<int> status;
  std::optional<std::string> body;
  std::string error;  // the start of the error; empty if the picture loads
  const char* url = "https://a.example/logo";
  Size size = {20, 10};
} cases[] = {
    {"picture", 201, picture, ""},
    {"notFound", 404, picture, "No picture received"},
    {"noHTTP", std::nullopt, picture, "No picture received"},
    {"noBody", 204, std::nullopt, "No picture received"},
    {"empty", 200, "", "The picture cannot be read"},
    {"broken", 200, picture.substr(0, 50), "The picture cannot be read"},
    {"icon", 200, icon, "The picture cannot be read: It is not PNG"},
    {"huge", 200, hugePicture, "The picture is too large"},
    {"svg", 200, svg("<g><path d='M0 0h9'/></g>"), "", "https://a.example/logo", {368, 184}},
    {"svgNested", 200, nested(31), "", "https://a.example/logo", {368, 184}},
    {"svgNestedDeeply", 200, nested(32), "The picture cannot be read: It is no plain SVG"},
    {"svgWithFile", 200, svg("<image href='/etc/hosts'/>"), "The picture cannot be read: It is no plain SVG"},
    {"svgWithReference", 200, svg("<linearGradient href='#a'/>"),
     "The picture cannot be read: It is no plain"},
    {"svgWithCopies", 200, svg("<use/>"), "The picture cannot be read: It is no plain SVG"},
    {"svgWithDashes", 200, svg("<style>a{stroke-d&#x61;sharray:1}</style>"),
     "The picture cannot be read: It is no plain SVG"},
    {"svgWithEntities", 200, "<!DOCTYPE svg [<!ENTITY a 'a'>]>" + svg("&a;"),
     "The picture cannot be read: It is no"},
    {"svgTooLong", 200, svg("<desc>" + std::string(262'144, 'a') + "</desc>"),
     "The picture cannot be read: It is no plain SVG"},
    {"lost", 200, picture, "Unexpected request", "https://other.example"},
    {"noHost", 200, picture, "The URL cannot be requested", "data:text"},
};

class QtImageLoaderTest : public TestWithParam<Download> {};
INSTANTIATE_TEST_SUITE_P(All, QtImageLoaderTest, ValuesIn(cases), byName);

TEST_P(QtImageLoaderTest, AnswersOnceOnTheMainActorAndDecodesInTheBackground) {
  MemoryPlatform platform;
  URLResponse response;
  response.statusCode = GetParam().status;
  response.body = GetParam().body;
  platform.session->answer("GET", "https://a.example/logo", response);
  QtImageLoader loader(platform.session, platform.mainActor, platform.background);
  std::vector<Result<std::shared_ptr<const Image>>> answers;
  loader.load(*URL::parse(GetParam().url), [&](Result<std::shared_ptr<const Image>> answer) {
    EXPECT_TRUE(platform.mainActor->isCurrent());
    answers.push_back(std::move(answer));
  });
  EXPECT_THAT(answers, IsEmpty());
  const std::size_t responses = platform.sessionThread->runAll();
  EXPECT_EQ(platform.background->runAll(), responses);
  platform.mainActor->runAll();
  ASSERT_EQ(answers.size(), 1U);
  EXPECT_THAT(failure(answers[0]), StartsWith(GetParam().error));
  ASSERT_EQ(answers[0].has_value(), GetParam().error.empty());
  if (!answers[0]) return;
  const auto& image = dynamic_cast<const QtImage&>(**answers[0]);
  EXPECT_EQ(image.size(), GetParam().size);
  EXPECT_EQ(image.content().pixelColor(image.content().width() - 1, 9), QColor(Qt::green));
}

}  // namespace
}  // namespace TalvoConsentSDK
