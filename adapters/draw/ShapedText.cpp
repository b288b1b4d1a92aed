#include "adapters/draw/ShapedText.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include <hb.h>

#include "TalvoConsentSDK/view/TextDirection.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

hb_unicode_funcs_t* unicode() {
  return hb_unicode_funcs_get_default();
}

// Marks and characters without a shape of their own, which are drawn with the character before them.
bool continuesCharacter(char32_t c) {
  if (c == 0x200C || c == 0x200D || (c >= 0xFE00 && c <= 0xFE0F) || (c >= 0x1F3FB && c <= 0x1F3FF) ||
      (c >= 0xE0000 && c <= 0xE0FFF)) {
    return true;
  }
  const hb_unicode_general_category_t category = hb_unicode_general_category(unicode(), c);
  return category == HB_UNICODE_GENERAL_CATEGORY_NON_SPACING_MARK ||
         category == HB_UNICODE_GENERAL_CATEGORY_SPACING_MARK ||
         category == HB_UNICODE_GENERAL_CATEGORY_ENCLOSING_MARK;
}

bool isInvisible(char32_t c) {
  const hb_unicode_general_category_t category = hb_unicode_general_category(unicode(), c);
  return isBlank(c) || category == HB_UNICODE_GENERAL_CATEGORY_CONTROL ||
         category == HB_UNICODE_GENERAL_CATEGORY_FORMAT;
}

// Japanese draws some of the letters that it shares with Chinese differently.
bool isJapanese(const std::u32string& text) {
  return std::ranges::any_of(text, [](char32_t c) {
    const hb_script_t script = hb_unicode_script(unicode(), c);
    return script == HB_SCRIPT_HIRAGANA || script == HB_SCRIPT_KATAKANA;
  });
}

// Scales a width in ems as FreeType does, and cuts it to 1/64 of a point, as Qt does. FreeType's scale is a
// whole number, so a letter of one em may be a little narrower than the font size and lose 1/64 of a point.
double cut(double width, double fontSize, const FontFace& face) {
  const double scale =
      std::round(fontSize * 64 * 65536 * face.unit);  // 1/64 of a point to a unit, in 1/65536
  const double scaled = std::round(std::round(width / face.unit) * scale / 64);  // in 1/65536 of a point
  return std::floor(scaled / 1024) / 64 / fontSize;
}

bool hasOwnScript(hb_script_t script) {
  return script != HB_SCRIPT_COMMON && script != HB_SCRIPT_INHERITED && script != HB_SCRIPT_UNKNOWN;
}

}  // namespace

struct ShapedText::Shape {
  struct Glyph {
    std::uint32_t glyph;
    std::size_t character;
    double x, y, advance;
  };
  std::vector<Glyph> glyphs;  // from left to right
};

ShapedText::ShapedText(std::string_view utf8, FontWeight weight, FontSet& fonts, const std::string& language,
                       const LineBreaker& breaker)
    : text_(charactersOf(utf8)),
      language_(isJapanese(text_.codes) ? "ja" : language),
      font_(fonts.first(weight)),
      space_(font_ ? font_->spaceWidth : 0),
      breaks_(lineBreaks(utf8, text_, language, breaker)),
      isStart_(text_.codes.size(), true) {
  const std::vector<std::int8_t> levels = bidiLevels(text_.codes, dominantDirection(utf8));
  for (std::size_t i = 0; i < size(); ++i) {
    if (runs_.empty() || runs_.back().level != levels[i]) runs_.push_back({i, i, levels[i]});
    runs_.back().end = i + 1;
  }
  findRuns(fonts, weight);
  measure();
}

// Splits the runs of one level by script and font. Characters that belong to no script, such as full stops,
// join the script before them, or after them at the start of a run. They are drawn with this script's font if
// it has them.
void ShapedText::findRuns(FontSet& fonts, FontWeight weight) {
  std::vector<Run> split;
  for (const Run& whole : runs_) {
    hb_script_t script = HB_SCRIPT_COMMON;
    for (std::size_t i = whole.begin; i < whole.end && !hasOwnScript(script); ++i) {
      script = hb_unicode_script(unicode(), text_.codes[i]);
    }
    Run run{whole.begin, whole.begin, whole.level, static_cast<std::uint32_t>(script), nullptr};
    const FontFace* scriptFace = nullptr;  // of the last letter with a script, if the font is for this script
    for (std::size_t i = whole.begin; i < whole.end; ++i) {
      const char32_t c = text_.codes[i];
      const hb_script_t own = hb_unicode_script(unicode(), c);
      if (hasOwnScript(own)) script = own;
      const bool continues = run.face && continuesCharacter(c);
      const bool keepsFont = !continues && scriptFace && !hasOwnScript(own) && scriptFace->has(c);
      const bool joins = continues || (run.face && !keepsFont && isInvisible(c));
      const FontFace* const face = joins ? run.face : keepsFont ? scriptFace : fonts.faceFor(c, weight);
      if (hasOwnScript(own)) scriptFace = face && face->isForScript ? face : nullptr;
      const bool isSame = run.face == face && run.script == static_cast<std::uint32_t>(script);
      if (run.end > run.begin && !isSame && !joins) {
        split.push_back(run);
        run.begin = i;
      }
      if (!joins) run.face = face;
      if (!joins || run.begin == i) run.script = static_cast<std::uint32_t>(script);
      run.end = i + 1;
    }
    if (run.end > run.begin) split.push_back(run);
  }
  runs_ = std::move(split);
}

void ShapedText::measure() {
  advances_.assign(size(), 0);
  lastGlyphs_.assign(size(), 0);
  for (const Run& run : runs_) {
    std::fill(isStart_.begin() + static_cast<std::ptrdiff_t>(run.begin),
              isStart_.begin() + static_cast<std::ptrdiff_t>(run.end), false);
    for (const auto& glyph : shape(run, run.begin, run.end).glyphs) {
      advances_[glyph.character] += glyph.advance;
      lastGlyphs_[glyph.character] = glyph.glyph;
      isStart_[glyph.character] = true;
    }
    isStart_[run.begin] = true;
  }
  for (std::size_t i = 1; i < size(); ++i) {
    // The library for line breaks is older than the letters that are joined to one, such as families of
    // emoji.
    if (breaks_[i] == LineBreak::allowed && !isStart_[i]) breaks_[i] = LineBreak::none;
  }
}

std::shared_ptr<const std::vector<double>> ShapedText::edges(double fontSize) const {
  if (edges_ && edgesSize_ == fontSize) return edges_;
  auto found = std::make_shared<std::vector<double>>();
  found->reserve(size() + 1);
  found->push_back(0);
  for (const Run& run : runs_) {
    for (std::size_t i = run.begin; i < run.end; ++i) {
      const double width = run.face ? cut(advances_[i], fontSize, *run.face) * fontSize : 0;
      found->push_back(found->back() + width);
    }
  }
  edgesSize_ = fontSize;
  return edges_ = std::move(found);
}

double ShapedText::overhang(std::size_t index, double fontSize) const {
  const auto run = std::ranges::upper_bound(runs_, index, {}, &Run::end);
  if (run == runs_.end() || !run->face || lastGlyphs_[index] == 0) return 0;
  return run->face->overhang(lastGlyphs_[index], fontSize);
}

ShapedText::Shape ShapedText::shape(const Run& run, std::size_t begin, std::size_t end) const {
  Shape result;
  if (!run.face) return result;
  static const std::unique_ptr<hb_buffer_t, void (*)(hb_buffer_t*)> shared(hb_buffer_create(),
                                                                           hb_buffer_destroy);
  hb_buffer_t* const buffer = shared.get();
  hb_buffer_reset(buffer);
  static_assert(sizeof(char32_t) == sizeof(std::uint32_t));
  hb_buffer_add_codepoints(buffer, reinterpret_cast<const std::uint32_t*>(text_.codes.data()),
                           static_cast<int>(size()), static_cast<unsigned>(begin),
                           static_cast<int>(end - begin));
  hb_buffer_set_direction(buffer, run.level % 2 == 0 ? HB_DIRECTION_LTR : HB_DIRECTION_RTL);
  hb_buffer_set_script(buffer, static_cast<hb_script_t>(run.script));
  hb_buffer_set_language(
      buffer, language_.empty() ? hb_language_get_default() : hb_language_from_string(language_.c_str(), -1));
  hb_shape(run.face->shaper(), buffer, nullptr, 0);
  unsigned count = 0;
  const hb_glyph_info_t* const infos = hb_buffer_get_glyph_infos(buffer, &count);
  const hb_glyph_position_t* const places = hb_buffer_get_glyph_positions(buffer, &count);
  result.glyphs.reserve(count);
  for (unsigned i = 0; i < count; ++i) {
    const std::size_t character = std::clamp<std::size_t>(infos[i].cluster, begin, end - 1);
    // A fallback for single letters does not change how wide blanks are.
    const bool isSpace = text_.codes[character] == ' ' && places[i].x_advance > 0 && run.face != font_ &&
                         !run.face->isForScript;
    // A damaged font may have letters of any width.
    const double advance = isSpace ? space_ : std::clamp(places[i].x_advance * run.face->unit, 0.0, 20.0);
    result.glyphs.push_back({infos[i].codepoint, character, places[i].x_offset * run.face->unit,
                             -places[i].y_offset * run.face->unit, advance});
  }
  return result;
}

ShapedLine ShapedText::line(std::size_t begin, std::size_t end, double fontSize) const {
  ShapedLine line;
  if (font_) line = {{}, 0, font_->ascent, font_->descent};
  std::vector<Run> parts;
  for (auto run = std::ranges::upper_bound(runs_, begin, {}, &Run::end);
       run != runs_.end() && run->begin < end; ++run) {
    parts.push_back(*run);
    parts.back().begin = std::max(run->begin, begin);
    parts.back().end = std::min(run->end, end);
  }
  // From the deepest level on, reverse each sequence of runs that are at least that deep (rule L2 of UAX #9).
  std::int8_t deepest = 0;
  for (const Run& part : parts) deepest = std::max(deepest, part.level);
  for (std::int8_t level = deepest; level > 0; --level) {
    for (auto from = parts.begin(); from != parts.end();) {
      from = std::find_if(from, parts.end(), [level](const Run& part) { return part.level >= level; });
      const auto to =
          std::find_if(from, parts.end(), [level](const Run& part) { return part.level < level; });
      std::reverse(from, to);
      from = to;
    }
  }
  for (const Run& part : parts) {
    if (!part.face) continue;
    line.ascent = std::max(line.ascent, part.face->ascent);
    line.descent = std::max(line.descent, part.face->descent);
    for (const auto& glyph : shape(part, part.begin, part.end).glyphs) {
      // Fonts draw a box for a control character.
      if (!isInvisible(text_.codes[glyph.character])) {
        line.glyphs.push_back({part.face, glyph.glyph, line.width + glyph.x, glyph.y});
      }
      line.width += cut(glyph.advance, fontSize, *part.face);
    }
  }
  return line;
}

}  // namespace TalvoConsentSDK
