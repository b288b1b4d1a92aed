// talvo-consent-service: a consent service on this machine, to develop and to test against.

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
Serves the documents of consent sites and keeps the consents that it is sent.

  --port N              port to listen on (8787); 0 picks a free one
  --host NAME           address to listen on (127.0.0.1)
  --store FILE          keep the consents in this SQLite database; without it, in memory
  --sites DIR           folder of sites; without it, the sites that come with the program
  --tls CERT KEY        serve HTTPS with this certificate and private key (PEM files)
  --delay MS            wait so many milliseconds before every reply
  --patience MS         give a client so long to send the head of a request, its body, and to take the
                        reply (30000)
  --fail PATHPART=KIND  spoil the replies to requests whose "METHOD PATH?QUERY" contains PATHPART;
                        may be given several times, the first that fits counts. KIND is a status
                        (200 to 599), reset, stall, truncated, empty, null, array, notutf8,
                        html500, or STATUS:KIND
  --log FILE            append one line of JSON per request to this file
  --help                print this text

"lint" reads documents, or all those of a site's folder or of a folder of sites, and prints what is
wrong with them, one "FILE: error|warning: KEY: SENTENCE" a line. The exit status is 1 when an error is
among them.

Prints "listening on URL" once it is ready, and ends on SIGINT and SIGTERM. The exit status is 2 for
wrong usage and 1 for whatever else prevents it from running.
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

// The sites beside an installed program, or else those it was built with.
fs::path shippedSites(const char* program) {
  std::error_code error;
  fs::path executable = fs::canonical("/proc/self/exe", error);
  if (error) executable = fs::canonical(program, error);
  const fs::path installed = executable.parent_path() / TALVO_INSTALLED_SITES;
  return fs::is_directory(installed, error) ? installed : fs::path(TALVO_SOURCE_SITES);
}

// Nothing when help was asked for. Throws a UsageError.
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
    } else if (option == "--patience") {
      options.patience = std::chrono::milliseconds(number(option, value(), 3'600'000));
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
  // Blocked in every thread that is started from here on; one of them waits for these signals.
  sigset_t endings;
  sigemptyset(&endings);
  sigaddset(&endings, SIGINT);
  sigaddset(&endings, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &endings, nullptr);

  auto opened = Server::open(std::move(options));
  if (!opened) {
    std::fprintf(stderr, "talvo-consent-service: %s\n", opened.error().what());
    return 1;
  }
  Server& server = **opened;
  std::thread stopper([&] {
    int signal = 0;
    sigwait(&endings, &signal);
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
