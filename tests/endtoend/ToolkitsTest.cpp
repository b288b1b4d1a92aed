// Runs the same scripts with Qt and with draw lists, and compares what assistive technology is given after
// each command, and the pictures of the screens.

#include <cmath>
#include <regex>

#include <png.h>

#include "tests/draw/SavedPicture.h"
#include "tests/endtoend/VisitFile.h"

namespace TalvoConsentSDK::testing {
namespace {

// The elements of an "accessible" line without their rectangles, which are appended to `rects`.
std::string withoutRects(const std::string& line, std::vector<Rect>& rects) {
  static const std::regex rect(R"re("rect":\[([^,\]]*),([^,\]]*),([^,\]]*),([^,\]]*)\],)re");
  for (std::sregex_iterator each(line.begin(), line.end(), rect); each != std::sregex_iterator(); ++each) {
    const auto number = [&](std::size_t group) { return std::stod((*each)[group]); };
    rects.push_back({number(1), number(2), number(3), number(4)});
  }
  return std::regex_replace(line, rect, "");
}

Texts accessibleAfterEach(const VisitFile& visit, const char* toolkit) {
  Texts all = visit.run(HostFolder(), toolkit, "accessible\n");
  std::erase_if(all, [](const std::string& line) { return !line.starts_with("{\"accessible\""); });
  return all;
}

class AccessibleElementsTest : public TestWithParam<fs::path> {};

// The other visits show no banner, or only its first screen.
std::vector<fs::path> visitsThatOperateTheBanner() {
  std::vector<fs::path> files = VisitFile::all();
  static const std::regex operates("\n(tap|key) ");
  std::erase_if(files, [](auto& file) { return !std::regex_search(VisitFile(file).head, operates); });
  return files;
}

INSTANTIATE_TEST_SUITE_P(All, AccessibleElementsTest, ValuesIn(visitsThatOperateTheBanner()),
                         [](const auto& each) { return each.param.stem().string(); });

// Qt gives whole points, and of an element that is partly scrolled out of sight the visible part.
TEST_P(AccessibleElementsTest, AreThoseOfQt) {
  const Texts qt = accessibleAfterEach(VisitFile(GetParam()), "qt");
  const Texts draw = accessibleAfterEach(VisitFile(GetParam()), "draw");
  ASSERT_EQ(qt.size(), draw.size());
  for (std::size_t i = 0; i < qt.size(); ++i) {
    std::vector<Rect> expected, actual;
    EXPECT_EQ(withoutRects(draw[i], actual), withoutRects(qt[i], expected)) << "after command " << i;
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t k = 0; k < actual.size(); ++k) {
      constexpr double apart = 2;
      EXPECT_NEAR(actual[k].x, expected[k].x, apart) << draw[i];
      EXPECT_NEAR(actual[k].width, expected[k].width, apart) << draw[i];
      EXPECT_LE(actual[k].y, expected[k].y + apart) << draw[i];
      EXPECT_GE(actual[k].bottom(), expected[k].bottom() - apart) << draw[i];
    }
  }
}

struct Picture {
  int width = 0;
  int height = 0;
  Bytes bytes;  // red, green, blue

  static Picture read(const fs::path& file) {
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_file(&png, file.c_str()), 0) << file;
    png.format = PNG_FORMAT_RGB;
    Picture picture{static_cast<int>(png.width), static_cast<int>(png.height), {}};
    picture.bytes.resize(PNG_IMAGE_SIZE(png));
    EXPECT_NE(png_image_finish_read(&png, nullptr, picture.bytes.data(), 0, nullptr), 0) << file;
    return picture;
  }

  png_byte& at(int x, int y, int channel) {
    return bytes[static_cast<std::size_t>((y * width + x) * 3 + channel)];
  }
};

// The differences of the means of blocks of 8 x 8 pixels, in 1/255. A letter that is drawn with other edges
// hardly changes a mean. The pictures beside each other, with the differences of their pixels, are saved
// under `name`.
std::vector<double> differences(Picture& a, Picture& b, const std::string& name) {
  constexpr int side = 8;
  Picture shown{3 * a.width, a.height, {}};
  shown.bytes.assign(static_cast<std::size_t>(shown.width * shown.height * 3), 0);
  std::vector<double> found;
  for (int top = 0; top + side <= a.height; top += side) {
    for (int left = 0; left + side <= a.width; left += side) {
      double most = 0;
      for (int channel = 0; channel < 3; ++channel) {
        double sum = 0;
        for (int y = top; y < top + side; ++y) {
          for (int x = left; x < left + side; ++x) {
            const int difference = a.at(x, y, channel) - b.at(x, y, channel);
            sum += difference;
            shown.at(x, y, channel) = a.at(x, y, channel);
            shown.at(x + a.width, y, channel) = b.at(x, y, channel);
            shown.at(x + 2 * a.width, y, channel) = static_cast<png_byte>(255 - std::abs(difference));
          }
        }
        most = std::max(most, std::abs(sum) / (side * side));
      }
      found.push_back(most);
    }
  }
  savePicture(name, shown.width, shown.height, shown.bytes);
  return found;
}

class PicturesTest : public TestWithParam<std::array<std::string, 5>> {};
INSTANTIATE_TEST_SUITE_P(All, PicturesTest, ValuesIn(tableOf<5>("draw/toolkits.txt")), byFirstCell);

TEST_P(PicturesTest, AgreeWithQt) {
  const auto& [name, options, language, preferences, category] = GetParam();
  Texts steps{"banner", "tap " + preferences, "tap expander:" + category + "\ntap switch:Echotrail",
              "tap button:Adlantern\nkey Tab"};
  if (preferences.empty()) steps.resize(1);
  const HostFolder folder;
  const ConsentServiceProcess service(folder.serviceOptions());
  for (const std::string toolkit : {"qt", "draw"}) {
    std::string script;
    for (std::size_t i = 0; i < steps.size(); ++i)
      script += steps[i] + "\nsettle\nscreenshot " + toolkit + std::to_string(i) + ".png\n";
    const std::string own = " --language " + language + " --toolkit " + toolkit + " --store " + toolkit;
    EXPECT_EQ(joined(folder.run(service, words(options + own), script)).find("error"), std::string::npos);
  }
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const std::string number = std::to_string(i);
    Picture qt = Picture::read(folder.path / ("qt" + number + ".png"));
    Picture draw = Picture::read(folder.path / ("draw" + number + ".png"));
    ASSERT_EQ(std::pair(qt.width, qt.height), std::pair(draw.width, draw.height));
    const std::string file = "toolkits_" + name + number;
    const std::vector<double> found = differences(qt, draw, file);
    const auto unlike = std::ranges::count_if(found, [](double each) { return each > 32; });
    EXPECT_LE(static_cast<double>(unlike), 0.001 * static_cast<double>(found.size())) << file;
    EXPECT_LE(std::ranges::max(found), 48) << file;
  }
}

}  // namespace
}  // namespace TalvoConsentSDK::testing
