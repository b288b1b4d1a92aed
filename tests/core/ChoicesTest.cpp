// A person's choice in any order of what can happen: sequences of steps, each life of a process in one of its
// own, against a model of what must be stored. The steps: "decide:x" and "refused:x" submit x, which the
// service takes or not; "ask:x" submits it and leaves it unanswered; "identify:u", "forget", "restart";
// "yes:n" and "no:n" answer what is unanswered, "replies" all of it; "store:fine", "store:fixed" (nothing can
// be written) and "store:broken"; "die:n" ends the process at the n-th operation on the store from then on.

#include <map>
#include <random>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/core/ClientTest.h"
#include "tests/support/Repetitions.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

// What is stored, consents by the vendor that they name: "-" for none, "all" for an implicit one.
struct Kept {
  std::string consent = "-", original = "-", user = "-";

  std::string text() const { return consent + " " + original + " " + user; }
  // As it is once what is owed has been restored.
  Kept restored() const { return user == "-" && original != "-" ? Kept{original, "-", "-"} : *this; }
  friend bool operator==(const Kept&, const Kept&) = default;
};

const Texts keys{"com.talvo.consent.basicConsent.s", "com.talvo.consent.originalConsent.s",
                 "com.talvo.consent.userId.s"};

std::string consentOf(const std::string& vendor) {
  return R"({"marketing":[")" + vendor + R"("]})";
}

std::string nameOf(const std::optional<BasicConsent>& consent) {
  if (!consent) return "-";
  return consent->preferences ? "all" : consent->marketing->items().at(0);
}

// What one process leaves to the next, in memory that they share.
struct Estate {
  char values[3][256] = {};
  char store[16] = "fine", fault[256] = {};
  std::size_t next = 0;  // step

  static Estate& made() {
    static void* const memory =
        mmap(nullptr, sizeof(Estate), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return *new (memory) Estate();
  }
  template <std::size_t size>
  static void put(char (&field)[size], const std::string& text) {
    field[text.copy(field, size - 1)] = '\0';
  }
  Kept kept() const {
    const auto name = [&](const char* json) { return *json ? nameOf(parsed<BasicConsent>(json)) : "-"; };
    return {name(values[0]), name(values[1]), *values[2] ? values[2] : "-"};
  }
};

// The service knows a consent of these users.
bool isKnown(const std::string& user) {
  return user == "ann" || user == "ben";
}

enum class Kind { login, decision, implicit };

// A question to the service: of whom ("-" for nobody), what was decided, and when.
struct Asked {
  Kind kind;
  std::string user = "-", consent = "-";
  int number = 0, identity = 0, decisions = 0;
};

// The law: what is stored is the latest decision of whoever it belongs to. A user without one inherits when
// they are identified, implicit consent replaces none, and a reply counts only while nothing was decided or
// changed since.
struct Model {
  Kept kept;
  bool isFine = true, isReadable = true, inherits = false;
  std::vector<std::string> unwritten;  // who has been identified, "-" for nobody
  std::string user = "?";              // as far as the process knows
  std::vector<Asked> asked;
  int identity = 0, decisions = 0, number = 0;
  std::map<std::string, int> latest;

  void begin(const Kept& found, bool isImplicit) {
    kept = found.restored();
    inherits = kept.consent == kept.original;
    learn();
    if (user != "-" && user != "?") ask({Kind::login, user});
    if (isImplicit && isReadable && kept.consent == "-") ask({Kind::implicit});
  }
  void learn() {
    if (user == "?" && isReadable) user = kept.user;
  }
  void ask(Asked question) {
    question.identity = identity;
    question.decisions = decisions;
    asked.push_back(question);
  }
  void write() {
    for (const std::string& next : isFine ? std::exchange(unwritten, {}) : Texts{}) {
      if (next == "-") kept = {kept.original != "-" ? kept.original : kept.consent, "-", "-"};
      if (next != "-" && kept.user == "-") kept.original = kept.consent, inherits = true;
      kept.user = next;
    }
  }
  void change(const std::string& to) {
    unwritten.push_back(user = to);
    ++identity;
    write();
    if (to != "-") ask({Kind::login, to});
  }
  void submit(const std::string& consent) {
    write();
    learn();
    ask({Kind::decision, user, consent, ++number});
  }
  void answer(const Asked& question, bool isYes) {
    if (!isYes || (question.kind == Kind::login && !isKnown(question.user))) return;
    write();
    const bool isVoid = question.decisions != decisions || !isFine;
    if (question.kind == Kind::decision) return decide(question);
    if (question.kind == Kind::implicit && !isVoid && kept.consent == "-") kept.consent = "all";
    if (question.kind == Kind::implicit || isVoid || question.identity != identity) return;
    kept.consent = question.user, inherits = false;
  }
  void decide(Asked question) {
    const std::string& now = isReadable && user == "?" ? kept.user : user;
    if (question.user == "?") question.user = question.identity == identity && now != "?" ? now : "-";
    int& newest = latest[question.user];
    if ((question.user != "-" && question.user != now) || question.number < newest) return;
    newest = question.number, ++decisions;
    Model after = *this;
    after.isFine = true;
    after.write();
    after.file(question);
    if (!isFine && !(isReadable && after.kept == kept)) return;  // what stands there already is not written
    after.isFine = isFine;
    *this = after;
  }
  void file(const Asked& decision) {
    if (decision.user == "-" && kept.user != "-") kept.original = decision.consent;
    if (decision.user == kept.user || inherits) kept.consent = decision.consent;
    if (decision.user == kept.user) inherits = false;
  }
};

struct OneByOne : FailingUserDefaults {
  using FailingUserDefaults::FailingUserDefaults;
  Result<void> commit(const std::vector<StoreChange>& changes) override {
    return UserDefaults::commit(changes);
  }
};

struct Unanswered : URLSession {
  void run(URLRequest request, Completion completion) override { requests.emplace_back(request, completion); }

  std::vector<std::pair<URLRequest, Completion>> requests;
};

class Life {
 public:
  Life(const Texts& steps, Estate& estate) : steps_(steps), estate_(estate) {
    if (has("one-by-one")) platform_.userDefaults = std::make_shared<OneByOne>(platform_.store);
    platform_.install();
    Platform installed = Platform::current();
    installed.urlSession = service_;
    Platform::install(installed);
    for (std::size_t i = 0; i < 3; ++i) {
      const std::string value = estate.values[i];
      if (!value.empty())
        (i == 2 ? platform_.store->set(keys[i], value) : platform_.store->set(keys[i], Data(value))).value();
    }
    platform_.userDefaults->before = [this](std::string_view) {
      if (left_ > 0 && --left_ == 0) die();
    };
  }

  [[noreturn]] void live() {
    setStore(estate_.store);
    model_.begin(stored(), has("implicit"));
    client_ = CookiesSDK::createInstance("https://service.example/", "s");
    platform_.settle();
    answer(0, true);  // the site's configuration
    check();
    for (; estate_.next < steps_.size(); ++estate_.next) {
      const std::string& step = steps_[estate_.next];
      if (step == "restart") {
        ++estate_.next;
        break;
      }
      take(step.substr(0, step.find(':')), step.substr(step.find(':') + 1));
      check();
    }
    leave();
  }

 private:
  bool has(const char* word) const { return std::ranges::count(steps_, word) > 0; }

  // In the midst of a step: one commit is made or not; without commits nobody's decision is the old or the
  // new one.
  void die() {
    const Kept found = stored().restored();
    const auto nobodys = [](const Kept& each) { return each.user == "-" ? each.consent : each.original; };
    const auto isLike = [&](const Kept& each) {
      return has("one-by-one") ? nobodys(found) == nobodys(each) : found == each;
    };
    if (!isLike(before_.kept) && !isLike(written_.kept) && !isLike(model_.kept)) fail("left " + found.text());
    ++estate_.next;
    leave();
  }

  void take(const std::string& verb, const std::string& object) {
    before_ = written_ = model_;
    written_.write();
    if (verb == "store") setStore(object);
    if (verb == "die") left_ = std::stoi(object);
    if (verb == "identify" || verb == "forget") {
      model_.change(verb == "forget" ? "-" : object);
      verb == "forget" ? client_->removeIdentity() : client_->identify(object);
    }
    if (verb == "decide" || verb == "ask" || verb == "refused") {
      model_.submit(object);
      client_->submitConsent(parsed<BasicConsent>(consentOf(object)), nullptr);
    }
    platform_.settle();
    if (verb == "decide" || verb == "refused") reply(model_.asked.size() - 1, verb == "decide");
    if (verb == "replies")
      while (!model_.asked.empty()) reply(0, true);
    if ((verb == "yes" || verb == "no") && !model_.asked.empty())
      reply(std::stoul(object) % model_.asked.size(), verb == "yes");
  }

  void reply(std::size_t index, bool isYes) {
    const Asked question = model_.asked[index];
    model_.asked.erase(model_.asked.begin() + static_cast<std::ptrdiff_t>(index));
    model_.answer(question, isYes);
    answer(index, isYes);
  }

  void answer(std::size_t index, bool isYes) {
    if (index >= service_->requests.size()) return fail("asked nothing");
    const auto [request, completion] = service_->requests[index];
    service_->requests.erase(service_->requests.begin() + static_cast<std::ptrdiff_t>(index));
    const std::string path = request.url.text(), user = path.substr(path.rfind('/') + 1);
    URLResponse response;
    response.statusCode = isYes ? 200 : 500;
    response.body = path.ends_with("configurations") ? has("implicit") ? R"({"implicitConsent":true})" : "{}"
                    : request.method != "GET"        ? R"({"id":"n"})"
                    : isKnown(user)                  ? R"({"categories":)" + consentOf(user) + "}"
                                                     : "null";
    completion(response);
    platform_.settle();
  }

  void setStore(const std::string& how) {
    Estate::put(estate_.store, how);
    platform_.userDefaults->failsToWrite = how != "fine";
    platform_.userDefaults->failsToRead = how == "broken";
    model_.isFine = how == "fine";
    model_.isReadable = how != "broken";
  }

  Kept stored() const {
    for (std::size_t i = 0; i < 3; ++i) {
      const auto data = platform_.store->data(keys[i]).value();
      Estate::put(estate_.values[i],
                  data ? data->bytes : platform_.store->string(keys[i]).value().value_or(""));
    }
    return estate_.kept();
  }

  void check() {
    if (model_.isFine) model_.write();
    Model told = model_;  // as this process goes by it, also while nothing can be written
    told.isFine = true;
    told.write();
    const std::string name = nameOf(client_->getConsent());
    if (name != (model_.isReadable ? told.kept.consent : "-")) fail("tells of " + name);
    if (stored().restored() != model_.kept) fail("stored " + stored().text());
    if (service_->requests.size() != model_.asked.size()) fail("asked otherwise");
  }

  void fail(const std::string& what) {
    Estate::put(estate_.fault, what + " at step " + std::to_string(estate_.next) + ", where the law says " +
                                   model_.kept.text());
    leave();
  }

  [[noreturn]] void leave() {
    stored();
    _exit(0);
  }

  const Texts& steps_;
  Estate& estate_;
  MemoryPlatform platform_;
  std::shared_ptr<Unanswered> service_ = std::make_shared<Unanswered>();
  std::shared_ptr<CookiesSDK> client_;
  Model model_;
  Model before_, written_;  // by the step under way, and by it once it has repeated what is unwritten
  int left_ = 0;
};

// Plays the steps, each life in a process of its own; tells the fault, if any.
std::string play(const Texts& steps, Estate& estate = Estate::made()) {
  while (estate.next < steps.size() && !*estate.fault) {
    const pid_t child = fork();
    if (child == 0) Life(steps, estate).live();
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0) return "the process crashed";
  }
  return estate.fault;
}

Texts randomSteps(unsigned seed) {
  std::mt19937 random(seed);
  const auto any = [&](const Texts& of) { return of[random() % of.size()]; };
  const Texts verbs = words(
      "decide:x decide:y decide:z ask:x ask:y ask:z refused:z identify:ann identify:ben identify:new "
      "identify:ann forget forget yes:0 yes:1 yes:2 no:0 restart store:fine store:fine "
      "store:fixed store:broken die:1 die:4 die:7 die:9");
  Texts steps;
  if (random() % 2) steps.push_back("implicit");
  if (random() % 2) steps.push_back("one-by-one");
  for (std::size_t length = steps.size() + 2 + random() % 14; steps.size() < length;)
    steps.push_back(any(verbs));
  return steps;
}

TEST(ChoicesTest, HoldInAnyOrder) {
  const int first = repetitions("TALVO_TEST_SEED", 1), count = repetitions("TALVO_TEST_SEQUENCES", 200);
  for (int seed = first; seed < first + count; ++seed) {
    Texts steps = randomSteps(static_cast<unsigned>(seed));
    std::string fault = play(steps);
    for (std::size_t i = 0; !fault.empty() && i < steps.size();) {  // what is not needed goes
      Texts fewer = steps;
      fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(i));
      const std::string same = play(fewer);
      if (same.empty()) ++i;
      if (!same.empty()) steps = fewer, fault = same, i = 0;
    }
    ASSERT_EQ(fault, "") << "seed " << seed << ": " << joined(steps, " ");
  }
}

TEST(ChoicesTest, HoldInEveryOrder) {
  for (const auto& [found, steps, left] : tableOf<3>("orders.txt")) {
    Estate& estate = Estate::made();
    const Texts values = words(found);
    for (std::size_t i = 0; i < 3; ++i) {
      if (values[i] != "-") Estate::put(estate.values[i], i == 2 ? values[i] : consentOf(values[i]));
    }
    EXPECT_EQ(play(words(steps), estate), "") << found << " | " << steps;
    EXPECT_EQ(estate.kept().text(), left) << found << " | " << steps;
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
