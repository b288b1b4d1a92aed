#pragma once

// Runs scripts: reads commands and prints one JSON object per line.

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TalvoConsentSDK/TalvoConsentSDK.h"

#include "apps/host/Activity.h"
#include "apps/host/HostDisplay.h"

namespace TalvoConsentHost {

/// Runs commands one after another on the main thread. A command ends when its answer has been printed.
/// Events and host callbacks are printed as they arrive.
class Script : public std::enable_shared_from_this<Script> {
 public:
  Script(std::shared_ptr<TalvoConsentSDK::CookiesSDK> sdk, std::string apiUrl, const Activity& activity,
         HostDisplay& display);

  /// Runs the commands in a file, or from standard input for "-", then ends the application. The exit status
  /// is 1 if a command failed or was unknown.
  void start(const std::string& file);

 private:
  using Answer = std::function<void(TalvoConsentSDK::JSONObject)>;
  using Command = void (Script::*)(const std::string& arguments);

  void run(std::string line);
  void finish();

  void consent(const std::string&);
  void submit(const std::string& record);
  void submitAsync(const std::string& record);
  void identify(const std::string& user);
  void removeIdentity(const std::string&);
  void erase(const std::string&);
  void gate(const std::string& categoryAndVendor);
  void language(const std::string& code);
  void listen(const std::string&);
  void banner(const std::string& timeLimit);
  void view(const std::string&);
  void accessible(const std::string&);
  void tap(const std::string& target);
  void busy(const std::string&);
  void key(const std::string& name);
  void screenshot(const std::string& file);
  void settle(const std::string&);
  void topics(const std::string& arguments);
  void loaded(const std::string&);
  void timing(const std::string&);
  void quit(const std::string&);

  void fail(const std::string& description);
  void submitRecord(const std::string& record,
                    const std::function<void(const TalvoConsentSDK::BasicConsent&, Answer)>& send);
  void waitForAnswer(const std::function<void(const Answer&)>& send);
  bool isSettled() const;

  static const std::map<std::string, Command>& commands();

  const std::shared_ptr<TalvoConsentSDK::CookiesSDK> sdk_;
  const std::string apiUrl_;
  const Activity& activity_;
  HostDisplay& display_;
  bool hasFailed_ = false;
  bool isOver_ = false;
  std::vector<TalvoConsentSDK::Subscription> gates_;
};

}  // namespace TalvoConsentHost
