// talvo-consent-service: a local consent service for development and tests.

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <pthread.h>
#include <signal.h>

#include "LintCommand.h"
#include "Server.h"

namespace {

using namespace TalvoConsentSDK::service;
namespace fs = std::filesystem;

constexpr const char* usage = R"(Usage: talvo-consent-service [OPTION]...
       talvo-consent-service lint FILE...
Serves the documents of consent sites and stores the consents that clients submit.

  --port N              port to listen on (8787); 0 picks a free one
  --host NAME           address to listen on (127.0.0.1)
  --store FILE          keep the consents in this SQLite database (default: in memory)
  --sites DIR           folder of sites (default: the sites that come with the program)
  --tls CERT KEY        serve HTTPS with this certificate and private key (PEM files)
  --delay MS            wait this many milliseconds before every reply
  --client-timeout MS   time that a client has to send the head of a request, again to send its
                        body, and again to receive the reply (30000)
  --fail PATHPART=KIND  simulate a failure of requests whose "METHOD PATH?QUERY" contains PATHPART;
                        may be given several times, the first match counts. KIND is a status
                        (200 to 599), reset, stall, truncated, empty, null, array, notutf8,
                        html500, or STATUS:KIND
  --log FILE            append one line of JSON per request to this file
  --help                print this text

"lint" checks documents, folders of sites, and folders that contain such folders, and prints each
problem as a line "FILE:LINE: error|warning: KEY: SENTENCE". The exit status is 1 if there are errors.

Prints "listening on URL" once it is ready, and ends on SIGINT and SIGTERM. The exit status is 2 for
wrong usage and 1 for any other problem that prevents it from running.
)";

class UsageError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

int number(std::string_view option, std::string_view text, int largest) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < 0 || value > largest) {
    throw UsageError(std::string(option) + " takes a number from 0 to " + std::to_string(largest) +
                     ", not \"" + std::string(text) + "\"");
  }
  return value;
}

// The sites installed with the program or, if it is not installed, those in the source tree.
fs::path shippedSites(const char* program) {
  std::error_code error;
  fs::path executable = fs::canonical("/proc/self/exe", error);
  if (error) executable = fs::canonical(program, error);
  const fs::path installed = executable.parent_path() / TALVO_INSTALLED_SITES;
  return fs::is_directory(installed, error) ? installed : fs::path(TALVO_SOURCE_SITES);
}

// Returns nothing if the user asked for help. Throws a UsageError.
std::optional<ServerOptions> parseOptions(int count, char** arguments) {
  ServerOptions options;
  options.sites = shippedSites(arguments[0]);
  for (int at = 1; at < count; ++at) {
    const std::string_view option = arguments[at];
    const auto value = [&]() -> std::string {
      if (at + 1 >= count) throw UsageError(std::string(option) + " needs a value");
      return arguments[++at];
    };
    if (option == "--help") return std::nullopt;
    if (option == "--port") {
      options.port = number(option, value(), 65535);
    } else if (option == "--host") {
      options.host = value();
    } else if (option == "--store") {
      options.store = value();
    } else if (option == "--sites") {
      options.sites = value();
    } else if (option == "--tls") {
      options.certificate = value();
      options.privateKey = value();
    } else if (option == "--delay") {
      options.delay = std::chrono::milliseconds(number(option, value(), 3'600'000));
    } else if (option == "--client-timeout") {
      options.clientTimeout = std::chrono::milliseconds(number(option, value(), 3'600'000));
    } else if (option == "--fail") {
      auto fault = Fault::parse(value());
      if (!fault) throw UsageError(std::string("--fail ") + fault.error().what());
      options.faults.push_back(*std::move(fault));
    } else if (option == "--log") {
      options.log = value();
    } else {
      throw UsageError("unknown option " + std::string(option));
    }
  }
  return options;
}

int serve(ServerOptions options) {
  // Block these signals in every thread started from here on; the stopper thread waits for them.
  sigset_t stopSignals;
  sigemptyset(&stopSignals);
  sigaddset(&stopSignals, SIGINT);
  sigaddset(&stopSignals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

  auto opened = Server::open(std::move(options));
  if (!opened) {
    std::fprintf(stderr, "talvo-consent-service: %s\n", opened.error().what());
    return 1;
  }
  Server& server = **opened;
  std::thread stopper([&] {
    int signal = 0;
    sigwait(&stopSignals, &signal);
    server.stop();
  });
  std::printf("listening on %s\n", server.url().c_str());
  std::fflush(stdout);

  const bool wasStopped = server.run();
  if (!wasStopped) {
    std::fprintf(stderr, "talvo-consent-service: the listening socket failed\n");
    pthread_kill(stopper.native_handle(), SIGTERM);
  }
  stopper.join();
  return wasStopped ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
  try {
    if (count > 1 && std::string_view(arguments[1]) == "lint") {
      if (count == 2) throw UsageError("lint needs a file or a folder");
      return lint(std::vector<fs::path>(arguments + 2, arguments + count)) ? 0 : 1;
    }
    auto options = parseOptions(count, arguments);
    if (!options) return std::fputs(usage, stdout) < 0 ? 1 : 0;
    return serve(*std::move(options));
  } catch (const UsageError& error) {
    std::fprintf(stderr, "talvo-consent-service: %s\nTry --help.\n", error.what());
    return 2;
  }
}
