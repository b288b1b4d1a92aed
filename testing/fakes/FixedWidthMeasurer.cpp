#include "testing/fakes/FixedWidthMeasurer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>

#include "TalvoConsentSDK/base/unicode/Characters.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

void forEachPiece(std::string_view text, char separator, const std::function<void(std::string_view)>& visit) {
  for (std::size_t begin = 0;;) {
    const std::size_t end = text.find(separator, begin);
    visit(text.substr(begin, end - begin));
    if (end == std::string_view::npos) return;
    begin = end + 1;
  }
}

}  // namespace

Size FixedWidthMeasurer::measure(std::string_view text, const Font& font, double width) {
  const double widestPart = shrinks_ ? widestWord(text, font) : 0;
  if (width < widestPart) {
    const double share = width / widestPart;
    const Size size = measure(text, font, widestPart);
    return {size.width * share, size.height * share};
  }
  const double character = characterWidth(font);
  const double perLine = std::max(1.0, std::floor(width / character));
  double lines = 0;
  double widest = 0;
  forEachPiece(text, '\n', [&](std::string_view paragraph) {
    double used = -1;  // the first word of a line has no space before it
    ++lines;
    forEachPiece(paragraph, ' ', [&](std::string_view word) {
      auto length = static_cast<double>(characterCount(word));
      if (used >= 0 && used + 1 + length > perLine) {
        ++lines;
        used = -1;
      }
      for (; length > perLine; length -= perLine) {
        ++lines;
        widest = std::max(widest, perLine);
      }
      used += 1 + length;
      widest = std::max(widest, used);
    });
  });
  return {std::min(widest * character, width), lines * font.lineHeight() * scale_};
}

double FixedWidthMeasurer::widestWord(std::string_view text, const Font& font) {
  double widest = 0;
  forEachPiece(text, '\n', [&](std::string_view paragraph) {
    forEachPiece(paragraph, ' ', [&](std::string_view word) {
      widest = std::max(widest, static_cast<double>(characterCount(word)));
    });
  });
  return widest * characterWidth(font);
}

}  // namespace TalvoConsentSDK
