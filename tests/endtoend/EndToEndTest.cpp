// Runs the sample host and the consent service as programs, and compares what the host prints and the service
// receives. Each file in tests/endtoend/visits is one visit: options, a script, and the expected output.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>

#include <unistd.h>

#include "tests/apps/ConsentServiceProcess.h"
#include "tests/support/Golden.h"

namespace TalvoConsentSDK::testing {
namespace {

namespace fs = std::filesystem;
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
  std::string file;
  std::string toolkit;  // draws the banner
};

// A separate folder for each test, with a store that its hosts share and the service's log.
class Visits : public TestWithParam<Visit> {
 protected:
  Visits() { fs::create_directory(folder); }
  ~Visits() override { fs::remove_all(folder); }

  // Runs a host until its script ends. Returns its output, and its exit status if that is not 0. If an option
  // is given twice, the last one counts. URL in an option stands for the service's URL.
  Texts run(const ConsentServiceProcess& service, const Texts& options, const std::string& script) const {
    std::ofstream(folder / "script") << script;
    std::string command = "cd '" + folder.string() + "'; '" TALVO_HOST "' --script script --store store";
    command += " --toolkit " + GetParam().toolkit;
    command += " --api-url " + service.url();
    for (const std::string& each : options) {
      command += " '" + (each.starts_with("URL") ? service.url() + each.substr(3) : each) + '\'';
    }
    Texts printed = split(printedBy(command), '\n');
    std::ranges::transform(printed, printed.begin(), inShort);
    std::erase(printed, "");
    return printed;
  }

  // The service's log, without requests for pictures, whose order varies. Consecutive requests without a body
  // are sorted, because some run concurrently. If a banner has failed, the services and configurations are
  // left out, because their requests may have been cancelled before the service received them.
  Texts requests(bool hasBannerFailed) const {
    Texts lines = split(inShort(contentOf(folder / "log")), '\n');
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

  const fs::path folder = fs::path(::testing::TempDir()) / ("talvo-visit-" + std::to_string(getpid()));
};

std::vector<Visit> visits() {
  std::vector<Visit> all;
  for (const auto& each : fs::directory_iterator(TALVO_TEST_DATA "/endtoend/visits")) {
    for (const std::string& toolkit : words(TALVO_TOOLKITS)) all.push_back({each.path(), toolkit});
  }
  return all;
}

INSTANTIATE_TEST_SUITE_P(All, Visits, ValuesIn(visits()), [](const auto& each) {
  const std::string name = fs::path(each.param.file).stem().string();
  return each.param.toolkit == "qt" ? name : name + "_on_" + each.param.toolkit;
});

TEST_P(Visits, PrintWhatIsRecorded) {
  std::string head = contentOf(GetParam().file);
  head.erase(head.find("\nprints:"));
  for (const char* sites : {TALVO_SHIPPED_SITES, TALVO_TEST_DATA "/../docs/sites"})
    fs::copy(sites, folder / "sites", fs::copy_options::recursive);
  Texts serviceOptions{"--log", folder / "log", "--sites", folder / "sites"};
  Texts hostOptions;
  Texts scripts;  // one after "script:", and one after each "restart", which starts the next host
  for (const std::string& line : split(head, '\n')) {
    const std::string value = line.substr(line.find(' ') + 1);
    if (line == "script:" || line == "restart") {
      scripts.emplace_back("settle\n");
    } else if (!scripts.empty()) {
      scripts.back() += line + '\n';
    } else if (line.starts_with("edit: ")) {  // SITE/FILE|FROM|TO
      const Texts edit = split(value, '|');
      std::string text = contentOf(folder / "sites" / edit.at(0));
      text.replace(text.find(edit.at(1)), edit.at(1).size(), edit.at(2));
      std::ofstream(folder / "sites" / edit.at(0)) << text;
    } else if (!line.starts_with('#')) {  // "host:" or "service:"
      std::ranges::copy(words(value), std::back_inserter(line[0] == 'h' ? hostOptions : serviceOptions));
    }
  }

  const ConsentServiceProcess service(serviceOptions);
  std::string actual = head + "\nprints:\n";
  for (const std::string& script : scripts) {
    for (const std::string& line : run(service, hostOptions, script)) actual += line + '\n';
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
