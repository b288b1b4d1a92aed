#include "apps/host/Script.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <future>
#include <iostream>
#include <optional>
#include <sstream>
#include <thread>
#include <utility>

#include "TalvoConsentSDK/models/JSONCoding.h"

#include "apps/host/HostScreen.h"
#include "apps/host/Output.h"
#include "apps/host/Timing.h"

namespace TalvoConsentHost {

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using namespace TalvoConsentSDK::view;

namespace {

// A host's own coroutine type, to show that hosts need not use Task.
struct HostCoroutine {
  struct promise_type {
    HostCoroutine get_return_object() const noexcept { return {}; }
    std::suspend_never initial_suspend() const noexcept { return {}; }
    std::suspend_never final_suspend() const noexcept { return {}; }
    void return_void() const noexcept {}
    [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }
  };
};

JSONObject answer(const Result<ConsentResponse>& result) {
  if (!result) return {{"error", toJSON(result.error())}, {"thread", threadName()}};
  return {{"submitted", JSONObject{{"id", result->id}}}, {"thread", threadName()}};
}

HostCoroutine awaitSubmission(Task<ConsentResponse> submission, std::function<void(JSONObject)> done) {
  std::optional<Result<ConsentResponse>> result;
  try {
    ConsentResponse response = co_await std::move(submission);
    result.emplace(std::move(response));
  } catch (const Error& error) {
    result.emplace(error);
  }
  done(answer(*result));
}

JSONObject describe(const ShownElement& element, const std::string& bannersLanguage) {
  const Rect& f = element.frame;
  JSONObject object{{"role", std::string(rawValue(element.role))},
                    {"name", element.name},
                    {"enabled", element.isEnabled},
                    {"rect", JSONArray{f.x, f.y, f.width, f.height}}};
  if (!element.value.empty()) object["value"] = element.value;
  if (!element.description.empty()) object["description"] = element.description;
  if (element.language != bannersLanguage) object["language"] = element.language;
  return object;
}

std::function<void()> reporting(const char* callback) {
  return [callback] { printObject({{"callback", callback}, {"thread", threadName()}}); };
}

}  // namespace

Script::Script(std::shared_ptr<CookiesSDK> sdk, std::string apiUrl, const Activity& activity,
               HostDisplay& display)
    : sdk_(std::move(sdk)), apiUrl_(std::move(apiUrl)), activity_(activity), display_(display) {}

void Script::start(const std::string& file) {
  // Reads lines on a separate thread, so that events are handled while there is no input. The thread may
  // outlive everything in main().
  std::thread([self = weak_from_this(), turns = display_.turns(), file] {
    std::ifstream opened;
    if (file != "-") opened.open(file);
    std::istream& input = file == "-" ? std::cin : opened;
    for (std::string line; std::getline(input, line);) {
      const auto goesOn = std::make_shared<std::promise<bool>>();
      turns->post([self, line, goesOn] {
        const auto script = self.lock();
        if (script) script->run(line);
        goesOn->set_value(script && !script->isOver_);
      });
      if (!goesOn->get_future().get()) return;
    }
    const bool isMissing = file != "-" && !opened.is_open();
    turns->post([self, isMissing] {
      const auto script = self.lock();
      if (script && isMissing) script->fail("The script cannot be read");
      if (script) script->finish();
    });
  }).detach();
}

const std::map<std::string, Script::Command>& Script::commands() {
  static const std::map<std::string, Command> table{
      {"consent", &Script::consent},
      {"submit", &Script::submit},
      {"submit-async", &Script::submitAsync},
      {"identify", &Script::identify},
      {"remove-identity", &Script::removeIdentity},
      {"erase", &Script::erase},
      {"gate", &Script::gate},
      {"language", &Script::language},
      {"listen", &Script::listen},
      {"banner", &Script::banner},
      {"view", &Script::view},
      {"accessible", &Script::accessible},
      {"tap", &Script::tap},
      {"busy", &Script::busy},
      {"key", &Script::key},
      {"screenshot", &Script::screenshot},
      {"settle", &Script::settle},
      {"topics", &Script::topics},
      {"loaded", &Script::loaded},
      {"timing", &Script::timing},
      {"quit", &Script::quit},
  };
  return table;
}

void Script::run(std::string line) {
  if (line.ends_with('\r')) line.pop_back();
  const std::size_t end = line.find(' ');
  const std::string name = line.substr(0, end);
  if (name.empty() || name.starts_with('#')) return;
  const auto command = commands().find(name);
  if (command == commands().end()) return fail("Unknown command: " + name);
  (this->*command->second)(end == std::string::npos ? "" : line.substr(end + 1));
}

void Script::finish() {
  isOver_ = true;
  display_.quit(hasFailed_ ? 1 : 0);
}

void Script::consent(const std::string&) {
  printObject({{"consent", toJSON(sdk_->getConsent())}});
}

void Script::submit(const std::string& record) {
  submitRecord(record, [this](const BasicConsent& consent, Answer done) {
    sdk_->submitConsent(
        consent, [done = std::move(done)](const Result<ConsentResponse>& result) { done(answer(result)); });
  });
}

void Script::submitAsync(const std::string& record) {
  submitRecord(record, [this](const BasicConsent& consent, Answer done) {
    awaitSubmission(sdk_->submitConsent(consent), std::move(done));
  });
}

void Script::submitRecord(const std::string& record,
                          const std::function<void(const BasicConsent&, Answer)>& send) {
  const auto consent = JSONDecoder().decode<BasicConsent>(record);
  if (!consent) return fail(consent.error().what());
  waitForAnswer([&](const Answer& done) { send(*consent, done); });
}

void Script::waitForAnswer(const std::function<void(const Answer&)>& send) {
  const auto isDone = std::make_shared<std::atomic<int>>(0);
  send([isDone](const JSONObject& reply) {
    printObject(reply);
    *isDone = reply.contains("error") ? 2 : 1;
  });
  if (!display_.waitUntil([isDone] { return *isDone != 0; })) return fail("No answer arrived");
  hasFailed_ = hasFailed_ || *isDone != 1;
}

void Script::identify(const std::string& user) {
  sdk_->identify(user);
  printObject({{"done", "identify"}});
}

void Script::removeIdentity(const std::string&) {
  sdk_->removeIdentity();
  printObject({{"done", "remove-identity"}});
}

void Script::erase(const std::string&) {
  if (!sdk_->eraseConsent()) return fail("The store has not removed the consent");
  printObject({{"done", "erase"}});
}

// gate CATEGORY [VENDOR]
void Script::gate(const std::string& categoryAndVendor) {
  const std::size_t end = categoryAndVendor.find(' ');
  const auto category = fromRawValue<ConsentCategory>(categoryAndVendor.substr(0, end));
  if (!category || !ConsentGate::has(*category)) return fail("There is no gate for: " + categoryAndVendor);
  const auto printing = [&](const char* what) {
    return [what, categoryAndVendor] { printObject({{what, categoryAndVendor}, {"thread", threadName()}}); };
  };
  const ConsentGate gate = sdk_->gate();
  gates_.push_back(end == std::string::npos ? gate.on(*category, printing("started"), printing("stopped"))
                                            : gate.on(*category, categoryAndVendor.substr(end + 1),
                                                      printing("started"), printing("stopped")));
  printObject({{"done", "gate"}});
}

void Script::language(const std::string& code) {
  sdk_->setLanguage(code);
  printObject({{"done", "language"}});
}

void Script::listen(const std::string&) {
  for (const auto& [event, raw] : RawValues<ConsentEvent>::table) {
    const std::string name(raw);
    sdk_->addEventListener(event,
                           std::make_shared<ConsentEventClosureCallback>(
                               [name] { printObject({{"event", name}, {"thread", threadName()}}); }, [] {}));
  }
  printObject({{"done", "listen"}});
}

// banner [MILLISECONDS]
void Script::banner(const std::string& timeLimit) {
  BannerOptions options;
  if (!timeLimit.empty()) {
    std::int64_t limit = 0;
    if (!(std::istringstream(timeLimit) >> limit)) return fail("banner takes a time limit in milliseconds");
    options.timeLimit = std::chrono::milliseconds(limit);
  }
  const auto error = std::make_shared<std::optional<Error>>();
  Timing::bannerRequested();
  const auto reportError = [error](const Error& reason) {
    *error = reason;
    printObject({{"callback", "onError"}, {"error", toJSON(reason)}, {"thread", threadName()}});
  };
  sdk_->showBanner(BannerHandlers{.onAcceptAll = reporting("onAcceptAll"),
                                  .onRejectAll = reporting("onRejectAll"),
                                  .onSaved = reporting("onManagePreferences"),
                                  .onError = reportError,
                                  .onManagePreferences = reporting("onManagePreferences")},
                   options);
  if (!display_.waitUntil([this] { return isSettled(); })) return fail("The banner did not become idle");
  if (*error) {
    hasFailed_ = true;
    printObject({{"error", toJSON(**error)}});
  } else {
    printObject({{"banner", display_.isBannerShown() ? "shown" : "none"}});
  }
}

void Script::view(const std::string&) {
  const std::vector<ShownElement> elements = display_.elements();
  JSONArray objects;
  for (const ShownElement& each : elements) objects.push_back(describe(each, elements.front().language));
  printObject({{"view", objects}});
}

void Script::accessible(const std::string&) {
  JSONArray elements;
  for (const ShownElement& each : display_.accessibleElements()) {
    JSONObject object = describe(each, each.language);
    object["focused"] = each.isFocused;
    object["modal"] = each.isModal;
    object["activates"] = each.canBeActivated;
    elements.push_back(std::move(object));
  }
  printObject({{"accessible", elements}});
}

// tap [ROLE:]NAME
void Script::tap(const std::string& target) {
  std::optional<view::Role> role;
  std::string name = target;
  for (const view::Role each :
       {view::Role::button, view::Role::link, view::Role::toggle, view::Role::expander}) {
    const std::string prefix = std::string(rawValue(each)) + ":";
    if (!target.starts_with(prefix)) continue;
    role = each;
    name = target.substr(prefix.size());
  }
  if (!display_.tap(name, role)) return fail("No control is named: " + target);
  printObject({{"tapped", name}});
}

void Script::busy(const std::string&) {
  JSONArray names;
  for (const ShownElement& each : display_.hostElements()) {
    if (each.description == busyDescription) names.push_back(each.name);
  }
  printObject({{"busy", names}});
}

void Script::key(const std::string& name) {
  if (!display_.press(name)) return fail("Unknown key: " + name);
  const auto focus = display_.focus();
  printObject({{"key", name}, {"focus", focus ? JSONValue(*focus) : JSONValue()}});
}

void Script::screenshot(const std::string& file) {
  if (!display_.screenshot(file)) return fail("The picture cannot be written: " + file);
  printObject({{"screenshot", file}});
}

void Script::settle(const std::string&) {
  if (!display_.waitUntil([this] { return isSettled(); })) return fail("The SDK is still busy");
  printObject({{"settled", true}});
}

// topics POINT EMAIL TOKEN N=yes ...
void Script::topics(const std::string& arguments) {
  std::istringstream words(arguments);
  std::string point;
  std::string email;
  std::string token;
  if (!(words >> point >> email >> token)) return fail("topics takes POINT EMAIL TOKEN and N=yes or N=no");
  std::map<std::int64_t, bool> choices;
  for (std::string word; words >> word;) {
    std::int64_t number = 0;
    std::string choice;
    std::istringstream parts(word);
    char equals = 0;
    if (!(parts >> number >> equals >> choice) || equals != '=' || (choice != "yes" && choice != "no")) {
      return fail("A topic is N=yes or N=no, not " + word);
    }
    choices[number] = choice == "yes";
  }
  const auto client =
      TalvoConsent::getInstance("", point, token == "-" ? std::nullopt : std::optional(token), apiUrl_);
  waitForAnswer([&](const Answer& done) {
    client->submitConsent(email, choices, [done](const Result<JSONObject>& reply) {
      done(reply ? JSONObject{{"reply", *reply}} : JSONObject{{"error", toJSON(reply.error())}});
    });
  });
}

void Script::loaded(const std::string&) {
  JSONArray replies;
  for (const auto& [url, from] : activity_.loaded().take())
    replies.push_back(JSONObject{{"url", url}, {"from", from}});
  printObject({{"loaded", replies}});
}

void Script::timing(const std::string&) {
  printObject({{"timing", Timing::report()}});
}

void Script::quit(const std::string&) {
  finish();
}

void Script::fail(const std::string& description) {
  hasFailed_ = true;
  printObject({{"error", JSONObject{{"type", "script"}, {"description", description}}}});
}

bool Script::isSettled() const {
  return activity_.isIdle() && !display_.isMoving();
}

}  // namespace TalvoConsentHost
