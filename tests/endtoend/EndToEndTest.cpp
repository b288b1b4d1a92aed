// Runs the sample host and the consent service as programs, and compares what the host prints and the service
// receives. Each file in tests/endtoend/visits is one visit: options, a script, and the expected output.

#include <regex>

#include "tests/endtoend/VisitFile.h"
#include "tests/support/Golden.h"

namespace TalvoConsentSDK::testing {
namespace {

using std::regex;

// Removes what differs between runs from a line, and reduces a view to its switches and their values. Returns
// an empty text for lines that only say that a command is done or that a banner has ended, which can come
// before or after its callback.
std::string inShort(const std::string& line) {
  static const regex done(R"re(\{"((settled|done|tapped)":[^:]*|focus":null.*))re");
  static const regex toggle(
      R"re("enabled":(\w+),"name":"([^"]*)","rect":\[[^\]]*\],"role":"switch","value":"(\w+)")re");
  static const regex time(R"re(,"time":"[^"]*"| after [0-9]+ ms)re");
  static const regex identifier("[0-9a-f]{8}-[0-9a-f-]{27}");
  if (std::regex_match(line, done)) return "";
  if (!line.starts_with("{\"view\"")) {
    return std::regex_replace(std::regex_replace(line, time, ""), identifier, "ID");
  }
  std::string view = "view:";
  for (std::sregex_iterator each(line.begin(), line.end(), toggle); each != std::sregex_iterator(); ++each) {
    view += each->format(" $2=$3") + ((*each)[1] == "true" ? ";" : " (disabled);");
  }
  return view;
}

struct Visit {
  fs::path file;
  std::string toolkit;  // draws the banner
};

class Visits : public TestWithParam<Visit> {
 protected:
  // The service's log, without requests for pictures, whose order varies. Consecutive requests without a body
  // are sorted, because some run concurrently. If a banner has failed, the services and configurations are
  // left out, because their requests may have been cancelled before the service received them.
  Texts requests(bool hasBannerFailed) const {
    Texts lines = split(inShort(contentOf(folder.path / "log")), '\n');
    std::erase_if(lines, [&](const std::string& line) {
      return line.find(".png") != std::string::npos ||
             (hasBannerFailed && line.find("/public/cookies/") != std::string::npos);
    });
    const auto isGet = [](const std::string& line) { return line.starts_with("{\"headers\""); };
    for (auto begin = lines.begin(); begin != lines.end();) {
      const auto end = std::find_if_not(begin, lines.end(), isGet);
      std::sort(begin, end);
      begin = std::find_if(end, lines.end(), isGet);
    }
    return lines;
  }

  const HostFolder folder;
};

std::vector<Visit> visits() {
  std::vector<Visit> all;
  for (const fs::path& file : VisitFile::all()) {
    for (const std::string& toolkit : words(TALVO_TOOLKITS)) all.push_back({file, toolkit});
  }
  return all;
}

INSTANTIATE_TEST_SUITE_P(All, Visits, ValuesIn(visits()), [](const auto& each) {
  const std::string name = each.param.file.stem().string();
  return each.param.toolkit == "qt" ? name : name + "_on_" + each.param.toolkit;
});

TEST_P(Visits, PrintWhatIsRecorded) {
  const VisitFile visit(GetParam().file);
  std::string actual = visit.head + "\nprints:\n";
  for (const std::string& line : visit.run(folder, GetParam().toolkit)) {
    const std::string shortened = inShort(line);
    if (!shortened.empty()) actual += shortened + '\n';
  }
  actual += "\nsends:\n";
  // A decision that failed also calls `onError`, but the command for it reports no error.
  static const regex failedBanner(R"re("callback":"onError"[^\n]*\n\{"error")re");
  const bool hasBannerFailed = std::regex_search(actual, failedBanner);
  for (const std::string& line : requests(hasBannerFailed)) actual += line + '\n';
  expectGolden(GetParam().file, actual);
}

}  // namespace
}  // namespace TalvoConsentSDK::testing
