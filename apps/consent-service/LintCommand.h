#pragma once

// The command that checks the documents of sites before the service serves them.

#include <filesystem>
#include <vector>

namespace TalvoConsentSDK::service {

/// Checks `paths`, which may be documents, sites' folders, and folders that contain sites' folders, and
/// prints the findings. The documents in one folder are checked as one site. Returns false if a finding is an
/// error or a path cannot be read.
bool lint(const std::vector<std::filesystem::path>& paths);

}  // namespace TalvoConsentSDK::service
