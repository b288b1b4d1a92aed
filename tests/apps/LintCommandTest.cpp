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

// A copy of one of the shipped sites with one change.
class ChangedSite {
 public:
  // Replaces `from`, a text in a file, by `to`. If `from` is empty, `to` is the file's new content. If it is
  // "removed" or "renamed", the file is removed, or gets the name `to`.
  ChangedSite(const fs::path& file, const std::string& from, const std::string& to)
      : folder_(sites_ / file.parent_path()) {
    fs::remove_all(sites_);
    fs::create_directories(sites_);
    fs::copy(TALVO_SHIPPED_SITES / file.parent_path(), folder_);
    const fs::path path = sites_ / file;
    if (from == "removed") {
      fs::remove(path);
    } else if (from == "renamed") {
      fs::rename(path, folder_ / to);
    } else if (from.empty()) {
      std::ofstream(path) << to;
    } else {
      std::string text = contentOf(path);
      if (text.find(from) == std::string::npos) throw std::runtime_error("There is no text " + from);
      std::ofstream(path) << text.replace(text.find(from), from.size(), to);
    }
  }
  ~ChangedSite() { fs::remove_all(sites_); }

  // What the lint prints. Paths begin in the site's folder, which is called SITE.
  std::string findings() const {
    std::string printed = lint(folder_);
    const std::string folder = folder_.string();
    for (const auto& [path, name] : {std::pair(folder + "/", ""), std::pair(folder, "SITE")}) {
      for (auto at = printed.find(path); at != std::string::npos; at = printed.find(path)) {
        printed.replace(at, path.size(), name);
      }
    }
    return printed;
  }

 private:
  const fs::path sites_ = fs::path(::testing::TempDir()) / ("talvo-lint-" + std::to_string(getpid()));
  const fs::path folder_;
};

TEST(LintCommand, FindsEveryFault) {
  for (const auto& [file, from, to, finding] : tableOf<4>("lint/faults.txt")) {
    SCOPED_TRACE(finding);
    const std::string printed = "\n" + ChangedSite(file, from, to).findings();
    EXPECT_THAT(printed, HasSubstr("\n" + finding));
    EXPECT_EQ(printed.ends_with("exit 1\n"), printed.find(": error: ") != std::string::npos);
  }
}

TEST(LintCommand, SaysOneThingAboutATypicalMistake) {
  for (const auto& [file, from, to, finding] : tableOf<4>("lint/mistakes.txt")) {
    const bool isError = finding.find(": error: ") != std::string::npos;
    EXPECT_EQ(ChangedSite(file, from, unescaped(to)).findings(), finding + (isError ? "\nexit 1\n" : "\n"));
  }
}

TEST(LintCommand, EstimatesTheWidthsOfEveryScript) {
  for (const auto& [title, finding] : tableOf<2>("lint/scripts.txt")) {
    const std::string printed =
        ChangedSite("minimal/customization.en.json", "May we count your visits?", title).findings();
    EXPECT_EQ(printed.empty(), finding.empty()) << printed;
    EXPECT_THAT(printed, HasSubstr(finding));
  }
}

TEST(LintCommand, FindsTheSitesInAFolder) {
  const fs::path sites = fs::path(::testing::TempDir()) / ("talvo-sites-" + std::to_string(getpid()));
  fs::create_directories(sites / "pictures");
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
  fs::remove_all(sites);
}

}  // namespace
}  // namespace TalvoConsentSDK::testing
