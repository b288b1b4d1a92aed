#pragma once

// Says how to make a text JSON.

#include <cstddef>
#include <string>
#include <string_view>

namespace TalvoConsentSDK::linting {

struct SyntaxFault {
  std::size_t offset;  // of the place to edit
  std::string sentence;
};

/// Explains the syntax error at `offset`, where `json::syntaxErrorOffset` found it.
SyntaxFault syntaxFault(std::string_view text, std::size_t offset);

}  // namespace TalvoConsentSDK::linting
