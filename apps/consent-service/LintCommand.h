#pragma once

// The command that checks the documents of sites before they are served.

#include <filesystem>
#include <vector>

namespace TalvoConsentSDK::service {

/// Prints the findings in `paths`: documents, sites' folders and folders of sites. Documents of one folder
/// are checked as one site. False when there is an error among the findings, or a path that cannot be read.
bool lint(const std::vector<std::filesystem::path>& paths);

}  // namespace TalvoConsentSDK::service
