#pragma once

// The fonts that texts are drawn with, and which of them draws a character.

#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "TalvoConsentSDK/base/Font.h"

#include "adapters/draw/FontFace.h"
#include "adapters/draw/SystemFonts.h"

namespace TalvoConsentSDK {

/// Main thread only.
class FontSet {
 public:
  FontSet(const std::vector<FontSource>& sources, bool usesSystemFonts);

  /// Returns the first font that has the character, in the weight nearest to the one wanted; if no font has
  /// it, the first font. Null only if there is no font at all.
  const FontFace* faceFor(char32_t character, platform::FontWeight weight);

  /// Returns the font that sets the height of lines. Null only if there is no font at all.
  const FontFace* first(platform::FontWeight weight) { return faceFor(U'a', weight); }

  /// Releases the pages of all fonts' files, see FontFile.
  void releasePages() const;

 private:
  struct Family {
    std::string name;
    std::vector<std::unique_ptr<FontFace>> faces;  // empty if all are damaged
  };

  void add(const FontSource& source, const std::string& name = {});
  void addFamily(const std::string& name);
  Family* find(char32_t character);

  std::vector<std::unique_ptr<Family>> families_;
  std::unique_ptr<SystemFonts> system_;
  std::deque<std::string> pending_;  // families of the system that have not been needed yet
  std::unordered_map<char32_t, Family*> known_;
};

}  // namespace TalvoConsentSDK
