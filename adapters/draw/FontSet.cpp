#include "adapters/draw/FontSet.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <tuple>
#include <utility>

#include <hb.h>

#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/view/Look.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

constexpr std::size_t maxKnown = 20'000;  // characters whose font is remembered

int weightNumber(FontWeight weight) {
  switch (weight) {
    case FontWeight::regular:
      return 400;
    case FontWeight::medium:
      return 500;
    case FontWeight::semibold:
      return 600;
    case FontWeight::bold:
      return 700;
  }
  return 400;
}

void printUnreadable(const std::string& font) {
  platform::print("A font of the banner cannot be read: " + font);
}

std::optional<std::string> familyForScript(char32_t character) {
  const auto script = [](char32_t c) { return hb_unicode_script(hb_unicode_funcs_get_default(), c); };
  const auto found = std::ranges::find(look::scriptFamilies, script(character),
                                       [&](const look::ScriptFamily& each) { return script(each.letter); });
  if (found == std::end(look::scriptFamilies)) return std::nullopt;
  return std::string(found->family);
}

}  // namespace

FontSet::FontSet(const std::vector<FontSource>& sources, bool usesSystemFonts) {
  for (const FontSource& source : sources) add(source);
  if (!usesSystemFonts) return;
  system_ = std::make_unique<SystemFonts>();
  pending_.assign(look::fontFamilies.begin(), look::fontFamilies.end());
}

// Adds the faces of a file. If one of its families has this name, adds only that family.
void FontSet::add(const FontSource& source, const std::string& name) {
  auto faces = FontFace::open(source);
  if (faces.empty()) printUnreadable(source.path);
  const bool isFound = std::ranges::any_of(faces, [&](const auto& face) { return face->family == name; });
  for (auto& face : faces) {
    if (isFound && face->family != name) continue;
    const auto found =
        std::ranges::find(families_, face->family, [](const auto& each) { return each->name; });
    Family* family = found == families_.end() ? nullptr : found->get();
    if (!family) {
      families_.push_back(std::make_unique<Family>(Family{face->family, {}}));
      family = families_.back().get();
    }
    face->isForScript = std::ranges::find(look::scriptFamilies, face->family, &look::ScriptFamily::family) !=
                        std::end(look::scriptFamilies);
    family->faces.push_back(std::move(face));
  }
}

void FontSet::addFamily(const std::string& name) {
  if (std::ranges::find(families_, name, [](const auto& each) { return each->name; }) != families_.end())
    return;
  for (const FontSource& source : system_->family(name)) add(source, name);
}

FontSet::Family* FontSet::find(char32_t character) {
  const auto known = known_.find(character);
  if (known != known_.end()) return known->second;
  Family* found = nullptr;
  std::size_t searched = 0;
  const auto search = [&] {
    for (; !found && searched < families_.size(); ++searched) {
      const auto& faces = families_[searched]->faces;
      if (!faces.empty() && faces.front()->has(character)) found = families_[searched].get();
    }
  };
  search();
  for (; !found && !pending_.empty(); search()) {
    addFamily(pending_.front());
    pending_.pop_front();
  }
  if (!found && system_) {
    if (const auto family = familyForScript(character)) addFamily(*family);
    search();
  }
  if (!found && system_) {
    if (const auto name = system_->familyWith(character)) addFamily(*name);
    search();
  }
  if (families_.empty() && known_.empty()) platform::print("There is no font for the banner");
  if (known_.size() >= maxKnown) known_.clear();
  return known_[character] = found;
}

const FontFace* FontSet::faceFor(char32_t character, FontWeight weight) {
  Family* family = find(character);
  for (std::size_t i = 0; !family && i < families_.size(); ++i) {
    if (!families_[i]->faces.empty()) family = families_[i].get();
  }
  if (!family) return nullptr;
  const int wanted = weightNumber(weight);
  // Of two weights at the same distance the heavier one, so that headings stand out.
  const auto nearest = std::ranges::min_element(family->faces, {}, [wanted](const auto& face) {
    return std::tuple(std::abs(face->weight - wanted), -face->weight);
  });
  if ((*nearest)->prepare()) return nearest->get();
  printUnreadable((*nearest)->path);
  family->faces.erase(nearest);  // the family stays, so that it is not opened again
  known_.clear();
  return faceFor(character, weight);
}

void FontSet::releasePages() const {
  for (const auto& family : families_) {
    for (const auto& face : family->faces) face->releasePages();
  }
}

}  // namespace TalvoConsentSDK
