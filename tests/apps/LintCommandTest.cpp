// Tests the lint command, which checks the documents of sites and prints findings.

#include <filesystem>
#include <fstream>

#include "tests/apps/ConsentServiceProcess.h"

namespace TalvoConsentSDK::testing {
namespace {

namespace fs = std::filesystem;

std::string lint(const fs::path& path) {
  return printedBy(TALVO_CONSENT_SERVICE " lint '" + path.string() + "'");
}

TEST(LintCommand, IsSilentOnTheShippedSites) {
  EXPECT_EQ(lint(TALVO_SHIPPED_SITES), "");
  EXPECT_EQ(lint(TALVO_SHIPPED_SITES "/large/services.json"), "");
  EXPECT_EQ(lint(TALVO_TEST_DATA "/../docs/sites"), "");
  EXPECT_EQ(lint("/nowhere"), "/nowhere: error: the file cannot be read\nexit 1\n");
  EXPECT_THAT(lint(TALVO_TEST_DATA "/golden/images"), EndsWith("exit 1\n"));
}

// Each row replaces one text in one file of the shipped sites and gives the expected finding.
TEST(LintCommand, FindsEveryFault) {
  const fs::path copy = fs::path(::testing::TempDir()) / ("talvo-lint-" + std::to_string(getpid()));
  const auto table = tableOf<4>("lint/faults.txt");
  for (const auto& [file, from, to, finding] : table) {
    SCOPED_TRACE(finding);
    fs::remove_all(copy);
    fs::copy((TALVO_SHIPPED_SITES / fs::path(file)).parent_path(), copy);
    const fs::path document = copy / fs::path(file).filename();
    std::string text = contentOf(document);
    ASSERT_NE(text.find(from), std::string::npos) << from;
    std::ofstream(document) << text.replace(text.find(from), from.size(), to);

    const std::string printed = lint(copy);
    EXPECT_THAT(printed, HasSubstr((copy / finding).string()));
    EXPECT_EQ(printed.ends_with("exit 1\n"), printed.find(": error: ") != std::string::npos);
  }
  fs::remove_all(copy);
}

}  // namespace
}  // namespace TalvoConsentSDK::testing
