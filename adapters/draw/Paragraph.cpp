#include "adapters/draw/Paragraph.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "TalvoConsentSDK/view/Look.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

constexpr double rounding = 1e-6;      // points; sums of widths differ by less
constexpr std::size_t minTexts = 200;  // more than a frame shows, so that no frame shapes its texts again
constexpr std::size_t maxTexts = 2'000;
constexpr std::size_t maxCharacters = 200'000;  // of all texts that are kept, beyond `minTexts`
constexpr std::size_t maxWidths = 8;            // at which one text is kept
constexpr std::size_t maxShapedLines = 200;     // of one text
constexpr std::size_t maxWordLength = 1000;

}  // namespace

Paragraph::Paragraph(std::shared_ptr<const ShapedText> text, const Font& font, double textScale, double width)
    : text_(std::move(text)), lineHeight_(font.lineHeight() * textScale) {
  setFontSize(std::round(font.size() * textScale));
  breakLines(width);
  if (!splitsWord_) return;
  const double room = std::floor(width);
  const double share = room / std::ceil(widestWord());
  if (share < look::minTextShare || share >= 1) return;
  setFontSize(std::floor(fontSize_ * share));
  lineHeight_ *= share;
  minWidth_ = room;
  breakLines(width);
}

void Paragraph::setFontSize(double size) {
  fontSize_ = std::max(1.0, size);
  edges_ = text_->edges(fontSize_);
}

double Paragraph::widestWord() const {
  double widest = 0;
  for (std::size_t begin = 0, end = 0; begin < text_->size(); begin = end) {
    for (++end; end < text_->size() && text_->breakBefore(end) == LineBreak::none;) ++end;
    std::size_t last = std::min(end, begin + maxWordLength);
    while (last > begin && text_->isBlankAt(last - 1)) --last;
    widest = std::max(widest, widthOf({begin, last}));
  }
  return widest;
}

void Paragraph::breakLines(double width) {
  const double room = width + rounding;
  lines_.clear();
  widest_ = 0;
  splitsWord_ = false;
  for (std::size_t begin = 0; begin < text_->size();) {
    const auto [line, next] = nextLine(begin, room);
    lines_.push_back(line);
    widest_ = std::max(widest_, reachOf(line));
    begin = next;
  }
  // A text that ends in a line break has an empty line after it.
  const std::size_t size = text_->size();
  if (size > 0 && text_->breakBefore(size) == LineBreak::mandatory) lines_.push_back({size, size});
}

// The width of a line together with what its last letter reaches beyond it.
double Paragraph::reachOf(const Line& line) const {
  return widthOf(line) + (line.end > line.begin ? text_->overhang(line.end - 1, fontSize_) : 0);
}

// Returns the line that begins at a character, and the first character of the line after it.
std::pair<Paragraph::Line, std::size_t> Paragraph::nextLine(std::size_t begin, double room) {
  std::size_t end = begin;  // after the last character that is not a blank
  std::optional<std::pair<Line, std::size_t>> lastBreak;
  for (std::size_t i = begin; i < text_->size(); ++i) {
    const LineBreak before = i > begin ? text_->breakBefore(i) : LineBreak::none;
    if (before == LineBreak::mandatory) return {{begin, end}, i};
    if (before == LineBreak::allowed) lastBreak = {{begin, end}, i};
    if (text_->isBlankAt(i)) continue;
    const bool isTooWide = widthOf({begin, i + 1}) > room;
    const bool isWordEnd =
        i + 1 == text_->size() || text_->isBlankAt(i + 1) || text_->breakBefore(i + 1) != LineBreak::none;
    if (lastBreak && isWordEnd && !isTooWide && reachOf({begin, i + 1}) > room) return *lastBreak;
    if (i > begin && isTooWide && text_->isCharacterStart(i)) {
      if (lastBreak) return *lastBreak;
      splitsWord_ = true;
      return {{begin, i}, i};
    }
    end = i + 1;
  }
  return {{begin, end}, text_->size()};
}

Size Paragraph::size() const {
  const double height = lineHeight_ * static_cast<double>(std::max<std::size_t>(1, lines_.size()));
  return {std::max(minWidth_, std::ceil(widest_ - rounding)), height};
}

const ShapedLine& Paragraph::line(std::size_t index) const {
  const auto known = shaped_.find(index);
  if (known != shaped_.end()) return known->second;
  if (shaped_.size() >= maxShapedLines) shaped_.clear();
  return shaped_[index] = text_->line(lines_[index].begin, lines_[index].end, fontSize_);
}

std::shared_ptr<const Paragraph> Paragraphs::wrapped(std::string_view text, const Font& font,
                                                     double textScale, double width) {
  Entry& known = entry(text, font.weight);
  const std::tuple key(font.style, textScale, width);
  const auto found = known.paragraphs.find(key);
  if (found != known.paragraphs.end()) return found->second;
  if (known.paragraphs.size() >= maxWidths) known.paragraphs.clear();
  return known.paragraphs[key] = std::make_shared<Paragraph>(known.shaped, font, textScale, width);
}

void Paragraphs::setLanguage(const std::string& language) {
  if (language == language_) return;
  language_ = language;
  entries_.clear();
  ages_.clear();
  characters_ = 0;
}

Paragraphs::Entry& Paragraphs::entry(std::string_view text, FontWeight weight) {
  Key key(text, weight);
  const auto found = entries_.find(key);
  if (found != entries_.end()) {
    ages_.splice(ages_.begin(), ages_, found->second.age);
    return found->second;
  }
  Entry added{std::make_shared<ShapedText>(text, weight, *fonts_, language_, breaker_), {}, {}};
  std::list<const Key*> age(1);  // made here, because what follows the insertion must not throw
  while (ages_.size() >= maxTexts ||
         (ages_.size() >= minTexts && characters_ + text.size() > maxCharacters)) {
    const auto oldest = entries_.find(*ages_.back());
    characters_ -= std::get<std::string>(oldest->first).size();
    ages_.pop_back();
    entries_.erase(oldest);
  }
  added.age = age.begin();
  const auto place = entries_.try_emplace(std::move(key), std::move(added)).first;
  *age.begin() = &place->first;
  ages_.splice(ages_.begin(), age);
  characters_ += text.size();
  return place->second;
}

}  // namespace TalvoConsentSDK
