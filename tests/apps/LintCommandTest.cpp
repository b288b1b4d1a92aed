// Tests the lint command, which checks the documents of sites and prints findings.

#include <fstream>

#include "tests/apps/ConsentServiceProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace TalvoConsentSDK::testing {
namespace {

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

// What the lint prints about a copy of one of the shipped sites with one change: `from`, a text in the file,
// is replaced by `to`. If `from` is empty, `to` is the file's new content. If it is "removed" or "renamed",
// the file is removed, or gets the name `to`. Paths begin in the site's folder, which is called SITE.
std::string findings(const fs::path& file, const std::string& from, const std::string& to) {
  const TemporaryFolder sites;
  const fs::path path = sites.path / file, folder = path.parent_path();
  fs::copy(TALVO_SHIPPED_SITES / file.parent_path(), folder);
  std::string text = contentOf(path);
  if (from == "removed") {
    fs::remove(path);
  } else if (from == "renamed") {
    fs::rename(path, folder / to);
  } else if (from.empty()) {
    std::ofstream(path) << to;
  } else if (text.find(from) == std::string::npos) {
    throw std::runtime_error("There is no text " + from);
  } else {
    std::ofstream(path) << text.replace(text.find(from), from.size(), to);
  }
  return filled(filled(lint(folder), {{folder / "", ""}}), {{folder, "SITE"}});
}

TEST(LintCommand, FindsEveryFault) {
  for (const auto& [file, from, to, finding] : tableOf<4>("lint/faults.txt")) {
    SCOPED_TRACE(finding);
    const std::string printed = "\n" + findings(file, from, to);
    EXPECT_THAT(printed, HasSubstr("\n" + finding));
    EXPECT_EQ(printed.ends_with("exit 1\n"), printed.find(": error: ") != std::string::npos);
  }
}

TEST(LintCommand, SaysOneThingAboutATypicalMistake) {
  for (const auto& [file, from, to, finding] : tableOf<4>("lint/mistakes.txt")) {
    const bool isError = finding.find(": error: ") != std::string::npos;
    EXPECT_EQ(findings(file, from, unescaped(to)), finding + (isError ? "\nexit 1\n" : "\n"));
  }
}

TEST(LintCommand, EstimatesTheWidthsOfEveryScript) {
  for (const auto& [title, finding] : tableOf<2>("lint/scripts.txt")) {
    const std::string printed = findings("minimal/customization.en.json", "May we count your visits?", title);
    EXPECT_EQ(printed.empty(), finding.empty()) << printed;
    EXPECT_THAT(printed, HasSubstr(finding));
  }
}

TEST(LintCommand, FindsTheSitesInAFolder) {
  const TemporaryFolder folder;
  const fs::path& sites = folder.path;
  fs::create_directory(sites / "pictures");
  EXPECT_EQ(lint(sites),
            sites.string() +
                ": error: the folder contains no documents of a site: add a customization.en.json\nexit 1\n");
  fs::copy(TALVO_SHIPPED_SITES "/minimal", sites / "minimal");
  EXPECT_EQ(lint(sites), "");
  fs::copy(TALVO_SHIPPED_SITES "/minimal", sites / "other");
  fs::remove(sites / "other/configuration.json");
  fs::rename(sites / "other/customization.en.json", sites / "other/customization-en.json");
  EXPECT_EQ(lint(sites), (sites / "other/customization-en.json").string() +
                             ": error: the service does not read a file of this name: did you mean "
                             "\"customization.en.json\"?\nexit 1\n");
}

}  // namespace
}  // namespace TalvoConsentSDK::testing
