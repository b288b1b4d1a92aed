#pragma once

// The consent service over HTTP: its endpoints, and how replies are delayed, spoiled and logged on their way.

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "TalvoConsentSDK/base/Result.h"

#include "Faults.h"

namespace TalvoConsentSDK::service {

struct ServerOptions {
  std::string host = "127.0.0.1";
  int port = 8787;    // 0: any that is free
  std::string store;  // file of the consents; empty: in memory
  std::filesystem::path sites;
  std::string certificate;  // PEM files; both empty: plain HTTP
  std::string privateKey;
  std::chrono::milliseconds delay{0};          // before every reply
  std::chrono::milliseconds patience{30'000};  // with clients, see Connection
  std::vector<Fault> faults;
  std::string log;  // file; empty: none
};

/// Endpoints, all with JSON bodies and replies; errors are {"error": reason}:
///   GET /                                       the sites' identifiers
///   GET /public/cookies/SITE/configurations     the site's configuration
///   GET /public/banner-customization/SITE       its banner, in the language ?lng=LANGUAGE
///   GET /public/cookies/SITE                    its catalogue of services, likewise
///   POST /public/cookie-consent/SITE            keeps a new consent; {"id": ...}
///   PUT /public/cookie-consent/SITE             updates the consent with the body's id, or keeps a new one
///   GET /public/cookie-consent/SITE/identified/USER
///                                               the user's newest consent at the site, or null
///   POST /public/consent                        takes choices on topics; {"receiptId": ...}
///   GET /sites/SITE/FILE                        a file of the site, such as its logo
/// In a site's documents the text {{base}} stands for the URL by which the client reached the service.
class Server {
 public:
  /// Opens the files and listens. The error's text names what could not be had.
  static Result<std::unique_ptr<Server>> open(ServerOptions options);

  ~Server();

  /// Where clients reach it, without a slash at the end.
  const std::string& url() const;

  /// Answers requests, each connection's on a thread, until `stop`. False when it ended for another reason.
  bool run();

  /// Lets `run` finish the requests that were read and return. Call it once, from any other thread; it waits
  /// for a `run` that is about to begin.
  void stop();

 private:
  struct State;
  explicit Server(std::unique_ptr<State> state);

  std::unique_ptr<State> state_;
};

}  // namespace TalvoConsentSDK::service
