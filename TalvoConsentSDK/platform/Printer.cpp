#include "TalvoConsentSDK/platform/Printer.h"

#include <array>
#include <cstdio>
#include <mutex>
#include <string>

#include "TalvoConsentSDK/base/Error.h"
#include "TalvoConsentSDK/base/unicode/Characters.h"
#include "TalvoConsentSDK/platform/Platform.h"

namespace TalvoConsentSDK {
namespace platform {

namespace {

constexpr std::size_t maxLine = 2048;
constexpr std::string_view cutMark = "…";

// Whether the character may end a line, control a terminal, or reorder the text around it.
bool isControl(char32_t code) {
  return code < 0x20 || (code >= 0x7F && code < 0xA0) || (code >= 0x2028 && code <= 0x202E) ||
         (code >= 0x2066 && code <= 0x2069);
}

std::string escaped(const char* format, unsigned number) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), format, number);
  return text.data();
}

std::string visible(Character character, std::string_view text) {
  if (character.length == 0) return escaped("\\x%02x", static_cast<unsigned char>(text.front()));
  if (!isControl(character.code)) return std::string(text.substr(0, character.length));
  if (character.code == '\n') return "\\n";
  if (character.code == '\r') return "\\r";
  if (character.code == '\t') return "\\t";
  return escaped("\\u%04x", character.code);
}

std::string oneLine(std::string_view text) {
  std::string line;
  std::size_t cut = 0;  // the length to cut the line to, so that the mark still fits
  while (!text.empty()) {
    const Character character = firstCharacter(text);
    line += visible(character, text);
    if (line.size() > maxLine) return line.substr(0, cut).append(cutMark);
    if (line.size() <= maxLine - cutMark.size()) cut = line.size();
    text.remove_prefix(character.length > 0 ? character.length : 1);
  }
  return line;
}

}  // namespace

void StandardOutput::print(std::string_view line) {
  static std::mutex lock;
  std::string text(line);
  text += '\n';
  const std::scoped_lock guard(lock);
  std::fflush(stdout);  // writes what the host has printed, so that the line has the buffer to itself
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

void print(std::string_view line) noexcept {
  try {
    Platform::current().printer->print(oneLine(line));
  } catch (...) {  // there is nowhere left to report this
  }
}

void callHost(const std::function<void()>& code) noexcept {
  try {
    if (code) code();
  } catch (...) {
    print(std::string("⚠️ A callback threw: ") + Error::current().what());
  }
}

}  // namespace platform
}  // namespace TalvoConsentSDK
