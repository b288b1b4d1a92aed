// The check of sites' documents, as the program that prints its findings.

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

namespace TalvoConsentSDK::testing {
namespace {

namespace fs = std::filesystem;

struct Outcome {
  std::string printed;
  int status;
};

Outcome lint(const fs::path& path) {
  std::FILE* pipe = popen((TALVO_CONSENT_SERVICE " lint '" + path.string() + "'").c_str(), "r");
  Outcome outcome;
  std::array<char, 4096> part;
  while (const std::size_t size = std::fread(part.data(), 1, part.size(), pipe)) {
    outcome.printed.append(part.data(), size);
  }
  outcome.status = WEXITSTATUS(pclose(pipe));
  return outcome;
}

TEST(LintCommand, IsSilentOnTheShippedSites) {
  const auto [printed, status] = lint(TALVO_SHIPPED_SITES);
  EXPECT_EQ(printed, "");
  EXPECT_EQ(status, 0);
  EXPECT_EQ(lint(TALVO_SHIPPED_SITES "/large/services.json").printed, "");
  EXPECT_EQ(lint("/nowhere").printed, "/nowhere: error: the file cannot be read\n");
  EXPECT_EQ(lint(TALVO_TEST_DATA "/golden/images").status, 1);
}

// Shipped sites with one text in one file replaced, and the finding.
TEST(LintCommand, FindsEveryFault) {
  const fs::path copy = fs::path(::testing::TempDir()) / ("talvo-lint-" + std::to_string(getpid()));
  std::ifstream faults(TALVO_TEST_DATA "/golden/lint/faults.txt");
  std::size_t count = 0;
  for (std::string line; std::getline(faults, line); ++count) {
    std::array<std::string, 4> cells;
    std::istringstream stream(line);
    for (std::string& cell : cells) std::getline(stream, cell, '|');
    const auto& [file, from, to, finding] = cells;
    const fs::path site = fs::path(file).parent_path();
    fs::remove_all(copy);
    fs::copy(fs::path(TALVO_SHIPPED_SITES) / site, copy);
    const fs::path document = copy / fs::path(file).filename();
    std::stringstream content;
    content << std::ifstream(document).rdbuf();
    std::string text = content.str();
    ASSERT_NE(text.find(from), std::string::npos) << line;
    std::ofstream(document) << text.replace(text.find(from), from.size(), to);

    const auto [printed, status] = lint(copy);
    EXPECT_THAT(printed, ::testing::HasSubstr((copy / finding).string())) << line;
    EXPECT_EQ(status, printed.find(": error: ") == std::string::npos ? 0 : 1) << line;
  }
  fs::remove_all(copy);
  EXPECT_GE(count, 20U);
}

}  // namespace
}  // namespace TalvoConsentSDK::testing
