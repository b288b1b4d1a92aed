#pragma once

// Runs the sample host and the consent service as programs, each test in a folder of its own.

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tests/apps/ConsentServiceProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace TalvoConsentSDK::testing {

namespace fs = std::filesystem;

/// A folder with a store that the test's hosts share, the service's log, and the shipped sites.
class HostFolder {
  const TemporaryFolder folder_;

 public:
  HostFolder() {
    for (const char* sites :
         {TALVO_SHIPPED_SITES, TALVO_TEST_DATA "/../docs/sites", TALVO_TEST_DATA "/endtoend/sites"})
      fs::copy(sites, path / "sites", fs::copy_options::recursive);
  }

  /// Options for the service.
  Texts serviceOptions() const { return {"--log", path / "log", "--sites", path / "sites"}; }

  /// Runs a host until its script ends. Returns its output, and its exit status if that is not 0. If an
  /// option is given twice, the last one counts. URL in an option stands for the service's URL.
  Texts run(const ConsentServiceProcess& service, const Texts& options, const std::string& script) const {
    std::ofstream(path / "script") << script;
    std::string command = "cd '" + path.string() + "'; '" TALVO_HOST "' --script script --store store";
    command += " --api-url " + service.url();
    for (const std::string& each : options) {
      command += " '" + (each.starts_with("URL") ? service.url() + each.substr(3) : each) + '\'';
    }
    return split(printedBy(command), '\n');
  }

  const fs::path& path = folder_.path;
};

/// A file in tests/endtoend/visits: options, scripts, and the expected output.
struct VisitFile {
  explicit VisitFile(const fs::path& file) : head(contentOf(file)) {
    head.erase(head.find("\nprints:"));
    for (const std::string& line : split(head, '\n')) {
      const std::string value = line.substr(line.find(' ') + 1);
      if (line == "script:" || line == "restart") {
        scripts.emplace_back("settle\n");
      } else if (!scripts.empty()) {
        scripts.back() += line + '\n';
      } else if (line.starts_with("edit: ")) {
        edits.push_back(value);
      } else if (!line.starts_with('#')) {  // "host:" or "service:"
        std::ranges::copy(words(value), std::back_inserter(line[0] == 'h' ? hostOptions : serviceOptions));
      }
    }
  }

  /// Changes the sites as the file says, runs the service and the hosts, and returns what the hosts print.
  /// After each line of a script, the host is given `afterEach`.
  Texts run(const HostFolder& folder, const std::string& toolkit, const std::string& afterEach = {}) const {
    edit(folder);
    Texts ofService = folder.serviceOptions();
    std::ranges::copy(serviceOptions, std::back_inserter(ofService));
    Texts ofHost{"--toolkit", toolkit};
    std::ranges::copy(hostOptions, std::back_inserter(ofHost));
    const ConsentServiceProcess service(ofService);
    Texts all;
    for (const std::string& script : scripts) {
      std::string lines;
      for (const std::string& line : split(script, '\n')) lines += line + '\n' + afterEach;
      std::ranges::copy(folder.run(service, ofHost, lines), std::back_inserter(all));
    }
    return all;
  }

  /// Changes the sites as the file says.
  void edit(const HostFolder& folder) const {
    for (const std::string& each : edits) {  // SITE/FILE|FROM|TO
      const Texts edit = split(each, '|');
      const fs::path file = folder.path / "sites" / edit.at(0);
      std::string text = contentOf(file);
      text.replace(text.find(edit.at(1)), edit.at(1).size(), edit.at(2));
      std::ofstream(file) << text;
    }
  }

  static std::vector<fs::path> all() {
    std::vector<fs::path> files;
    for (const auto& each : fs::directory_iterator(TALVO_TEST_DATA "/endtoend/visits"))
      files.push_back(each.path());
    return files;
  }

  std::string head;  // the file without the expected output
  Texts serviceOptions;
  Texts hostOptions;
  Texts edits;
  Texts scripts;  // one after "script:", and one after each "restart", which starts the next host
};

}  // namespace TalvoConsentSDK::testing
