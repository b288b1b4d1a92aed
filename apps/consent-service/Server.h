#pragma once

// The consent service over HTTP: routes requests to endpoints, and delays, replaces and logs replies as
// configured.

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
  int port = 8787;    // 0: any free port
  std::string store;  // file for consents; empty: in memory
  std::filesystem::path sites;
  std::string certificate;  // PEM files; both empty: plain HTTP
  std::string privateKey;
  std::chrono::milliseconds delay{0};               // before every reply
  std::chrono::milliseconds clientTimeout{30'000};  // see Connection
  std::vector<Fault> faults;
  std::string log;  // file; empty: no log
};

/// The endpoints. Bodies and replies are JSON, except the files of a site; errors are {"error": reason}:
///   GET /                                       the sites' identifiers
///   GET /public/cookies/SITE/configurations     the site's configuration
///   GET /public/banner-customization/SITE       its banner, in the language ?lng=LANGUAGE
///   GET /public/cookies/SITE                    its catalogue of services, likewise
///   POST /public/cookie-consent/SITE            stores a new consent; {"id": ...}
///   PUT /public/cookie-consent/SITE             updates the consent with the body's id, or stores a new one
///   GET /public/cookie-consent/SITE/identified/USER
///                                               the user's latest consent at the site, or null
///   POST /public/consent                        accepts choices on topics; {"receiptId": ...}
///   GET /sites/SITE/FILE                        a file of the site, such as its logo
/// In a site's documents, the text {{base}} is replaced by the URL at which the client reached the service.
/// If another server in front of the service terminates TLS, it must pass on the header Host and add the
/// header "X-Forwarded-Proto: https".
///
/// Documents and files have an ETag. If a request's If-None-Match names it, the reply is a 304. Documents and
/// files have the Cache-Control "no-cache", or "max-age=SECONDS" if site.json has keepFor. The reply to a
/// consent or to topics, and the consent of a user, have "no-store".
class Server {
 public:
  /// Opens the files and listens. An error's text names the file or address that failed.
  static Result<std::unique_ptr<Server>> open(ServerOptions options);

  ~Server();

  /// The URL of the service, without a trailing slash.
  const std::string& url() const;

  /// Answers requests until `stop`, each connection on its own thread. Returns false if it ended for another
  /// reason.
  bool run();

  /// Makes `run` finish the requests already read and return. Call it once, on any other thread; if `run` has
  /// not started yet, this waits for it.
  void stop();

 private:
  struct State;
  explicit Server(std::unique_ptr<State> state);

  std::unique_ptr<State> state_;
};

}  // namespace TalvoConsentSDK::service
