#include "adapters/draw/SystemFonts.h"

#include <algorithm>

#if defined(TALVO_HAS_FONTCONFIG)

#include <fontconfig/fontconfig.h>

namespace TalvoConsentSDK {

namespace {

struct Destroy {
  void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
  void operator()(FcFontSet* fonts) const { FcFontSetDestroy(fonts); }
  void operator()(FcObjectSet* names) const { FcObjectSetDestroy(names); }
};
using Pattern = std::unique_ptr<FcPattern, Destroy>;
using Fonts = std::unique_ptr<FcFontSet, Destroy>;

const FcChar8* bytes(const char* text) {
  return reinterpret_cast<const FcChar8*>(text);
}

std::string text(FcPattern* font, const char* property) {
  FcChar8* value = nullptr;
  if (FcPatternGetString(font, property, 0, &value) != FcResultMatch) return {};
  return reinterpret_cast<const char*>(value);
}

}  // namespace

// All fonts in the order in which the system prefers them, made when the first character is looked for.
struct SystemFonts::Sorted {
  Fonts fonts;
};

SystemFonts::SystemFonts() = default;
SystemFonts::~SystemFonts() = default;

std::vector<FontSource> SystemFonts::family(const std::string& name) const {
  const Pattern wanted(FcPatternCreate());
  FcPatternAddString(wanted.get(), FC_FAMILY, bytes(name.c_str()));
  FcPatternAddInteger(wanted.get(), FC_SLANT, FC_SLANT_ROMAN);
  FcPatternAddInteger(wanted.get(), FC_WIDTH, FC_WIDTH_NORMAL);
  const std::unique_ptr<FcObjectSet, Destroy> properties(FcObjectSetBuild(FC_FILE, nullptr));
  const Fonts fonts(FcFontList(nullptr, wanted.get(), properties.get()));
  std::vector<std::string> files;
  for (int i = 0; fonts && i < fonts->nfont; ++i) files.push_back(text(fonts->fonts[i], FC_FILE));
  std::ranges::sort(files);
  const auto repeated = std::ranges::unique(files);
  files.erase(repeated.begin(), repeated.end());
  std::vector<FontSource> sources;
  for (std::string& file : files) sources.push_back({std::move(file)});
  return sources;
}

std::optional<std::string> SystemFonts::familyWith(char32_t character) {
  if (!sorted_) {
    const Pattern wanted(FcPatternCreate());
    FcPatternAddString(wanted.get(), FC_FAMILY, bytes("sans-serif"));
    FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
    FcDefaultSubstitute(wanted.get());
    FcResult result = FcResultNoMatch;
    sorted_ =
        std::make_unique<Sorted>(Sorted{Fonts(FcFontSort(nullptr, wanted.get(), FcTrue, nullptr, &result))});
  }
  for (int i = 0; sorted_->fonts && i < sorted_->fonts->nfont; ++i) {
    FcPattern* const font = sorted_->fonts->fonts[i];
    FcCharSet* characters = nullptr;
    if (FcPatternGetCharSet(font, FC_CHARSET, 0, &characters) == FcResultMatch &&
        FcCharSetHasChar(characters, character)) {
      return text(font, FC_FAMILY);
    }
  }
  return std::nullopt;
}

}  // namespace TalvoConsentSDK

#else

namespace TalvoConsentSDK {

struct SystemFonts::Sorted {};

SystemFonts::SystemFonts() = default;
SystemFonts::~SystemFonts() = default;

std::vector<FontSource> SystemFonts::family(const std::string&) const {
  return {};
}

std::optional<std::string> SystemFonts::familyWith(char32_t) {
  return std::nullopt;
}

}  // namespace TalvoConsentSDK

#endif
