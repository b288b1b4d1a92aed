// Checks that a user's choice survives any order of events. Runs sequences of steps, with a new process after
// each restart, and compares the stored values and what gates run with a model. The steps: "decide:x" and
// "refused:x" submit x, which the service accepts or refuses; "ask:x" submits x and leaves the request
// unanswered; "identify:u", "forget", "erase" and "restart"; "yes:n" and "no:n" answer an open request, and
// "replies" accepts all open requests; "store:fine", "store:fixed" (cannot be written), "store:volatile"
// (cannot make anything durable) and "store:broken" set the state of the store; "die:n" ends the process at
// its n-th operation on the store after this step. Two words apply to the whole sequence: with "implicit" the
// site has implicit consent, and with "one-by-one" the store makes the changes of a commit one after the
// other.

#include <map>
#include <random>
#include <set>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/core/ClientTest.h"
#include "tests/support/Repetitions.h"

namespace TalvoConsentSDK {

namespace {

// The stored values. A consent is written as its vendor, "-" for none and "all" for an implicit one.
struct Kept {
  std::string consent = "-", original = "-", user = "-";

  std::string text() const { return consent + " " + original + " " + user; }
  // What the values are once a restore that is still due has been done.
  Kept restored() const { return user == "-" && original != "-" ? Kept{original, "-", "-"} : *this; }
  friend bool operator==(const Kept&, const Kept&) = default;
};

const Texts keys{"com.talvo.consent.basicConsent.s", "com.talvo.consent.originalConsent.s",
                 "com.talvo.consent.userId.s"};

const Texts vendors = words("n u x y z ann ben");

std::string consentOf(const std::string& vendor) {
  return R"({"marketing":[")" + vendor + R"("]})";
}

std::string nameOf(const std::optional<BasicConsent>& consent) {
  if (!consent) return "-";
  return consent->preferences ? "all" : consent->marketing->items().at(0);
}

// The memory that the processes share: what one process leaves for the next.
struct SharedMemory {
  char values[3][256] = {};
  char store[16] = "fine", fault[256] = {};
  std::size_t next = 0;  // the next step

  static SharedMemory& made() {
    static void* const memory =
        mmap(nullptr, sizeof(SharedMemory), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return *new (memory) SharedMemory();
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

// The service has a consent of these users.
bool isKnown(const std::string& user) {
  return user == "ann" || user == "ben";
}

enum class Kind { login, decision, implicit };

// A request to the service: its user ("-" for none), its decision, and the model's counters at that time.
struct Asked {
  Kind kind;
  std::string user = "-", consent = "-";
  int number = 0, identity = 0, decisions = 0, erasures = 0;
};

// The expected behaviour: the store holds the latest decision of the current user. A user without a decision
// inherits one when identified, implicit consent never replaces a decision, and the reply to a login counts
// only if no decision has taken effect and the identity has not changed since the request.
struct Model {
  Kept kept;
  bool isFine = true, isReadable = true, inherits = false;
  std::vector<std::string> unwritten;  // logins by user, logouts as "-" and erasures, not stored yet
  std::string user = "?";              // as known to the process, "?" if unknown
  std::vector<Asked> asked;
  int identity = 0, decisions = 0, number = 0, erasures = 0;
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
    question.erasures = erasures;
    asked.push_back(question);
  }
  void write() {
    for (const std::string& next : isFine ? std::exchange(unwritten, {}) : Texts{}) {
      if (next == "erased") kept = {};
      if (next == "-") kept = {kept.original != "-" ? kept.original : kept.consent, "-", "-"};
      const std::string identified = next == "erased" ? "-" : next;
      if (identified != "-" && kept.user == "-") kept.original = kept.consent, inherits = true;
      kept.user = identified;
    }
  }
  void change(const std::string& to) {
    unwritten.push_back(user = to);
    ++identity;
    write();
    if (to != "-") ask({Kind::login, to});
  }
  void erase() {
    unwritten.push_back("erased");
    user = "-";
    ++identity, ++decisions, ++erasures;
    latest.clear();
    write();
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
    if (question.erasures != erasures) return;
    const std::string& now = isReadable && user == "?" ? kept.user : user;
    if (question.user == "?") question.user = question.identity == identity && now != "?" ? now : "-";
    int& newest = latest[question.user];
    if ((question.user != "-" && question.user != now) || question.number < newest) return;
    newest = question.number, ++decisions;
    Model after = *this;
    after.isFine = true;
    after.write();
    after.file(question);
    // Values that are already stored are not written.
    if (!isFine && !(isReadable && after.kept == kept)) return;
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

class ClientProcess {
 public:
  ClientProcess(const Texts& steps, SharedMemory& shared) : steps_(steps), shared_(shared) {
    if (has("one-by-one")) platform_.userDefaults = std::make_shared<OneByOne>(platform_.store);
    platform_.install();
    replaceSeam(&Platform::urlSession, service_);
    for (std::size_t i = 0; i < 3; ++i) {
      const std::string value = shared.values[i];
      if (!value.empty())
        (i == 2 ? platform_.store->set(keys[i], value) : platform_.store->set(keys[i], Data(value))).value();
    }
    platform_.userDefaults->before = [this](std::string_view) {
      if (left_ > 0 && --left_ == 0) die();
    };
  }

  [[noreturn]] void run() {
    setStore(shared_.store);
    model_.begin(stored(), has("implicit"));
    client_ = CookiesSDK::createInstance("https://service.example/", "s");
    platform_.settle();
    answer(0, true);  // the site's configuration request
    for (const std::string& name : vendors)
      gates_.push_back(client_->gate().on(
          ConsentCategory::marketing, name, [this, name] { note(name, true); },
          [this, name] { note(name, false); }));
    check();
    for (; shared_.next < steps_.size(); ++shared_.next) {
      const std::string& step = steps_[shared_.next];
      if (step == "restart") {
        ++shared_.next;
        break;
      }
      take(step.substr(0, step.find(':')), step.substr(step.find(':') + 1));
      check();
    }
    leave();
  }

 private:
  bool has(const char* word) const { return std::ranges::count(steps_, word) > 0; }

  // Ends the process in the middle of a step. The last commit was made completely or not at all; in a store
  // without commits, the anonymous decision must be the old one or the new one.
  void die() {
    const Kept found = stored().restored();
    const auto anonymousConsent = [](const Kept& each) {
      return each.user == "-" ? each.consent : each.original;
    };
    const auto matches = [&](const Kept& each) {
      return has("one-by-one") ? anonymousConsent(found) == anonymousConsent(each) : found == each;
    };
    if (!matches(before_.kept) && !matches(written_.kept) && !matches(model_.kept))
      fail("left " + found.text());
    ++shared_.next;
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
    if (verb == "erase") {
      model_.erase();
      const bool isEmpty = model_.isReadable && before_.kept == Kept();
      const bool mayOweSynchronizing = isEmpty && has("store:volatile");
      const bool isRemoved = shared_.store != std::string("volatile") && (model_.isFine || isEmpty);
      if (client_->eraseConsent() != isRemoved && !mayOweSynchronizing) fail("erased");
    }
    if (verb == "decide" || verb == "ask" || verb == "refused") {
      model_.submit(object);
      client_->submitConsent(parsed<BasicConsent>(consentOf(object)), nullptr);
    }
    isWithdrawn_ = isWithdrawn_ || (!model_.isReadable && (verb == "forget" || verb == "erase"));
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
    if (index >= service_->requests.size()) return fail("sent no request");
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
    SharedMemory::put(shared_.store, how);
    platform_.userDefaults->failsToRead = how == "broken";
    platform_.userDefaults->failsToWrite = how == "broken" || how == "fixed";
    platform_.userDefaults->failsToSynchronize = how == "volatile";
    model_.isFine = how == "fine" || how == "volatile";
    model_.isReadable = how != "broken";
  }

  Kept stored() const {
    for (std::size_t i = 0; i < 3; ++i) {
      const auto data = platform_.store->data(keys[i]).value();
      SharedMemory::put(shared_.values[i],
                        data ? data->bytes : platform_.store->string(keys[i]).value().value_or(""));
    }
    return shared_.kept();
  }

  void check() {
    if (model_.isFine) model_.write();
    Model current = model_;  // what the client must return, even if the store cannot be written
    current.isFine = true;
    current.write();
    const std::string name = nameOf(client_->getConsent());
    if (name != (model_.isReadable ? current.kept.consent : "-")) fail("returns " + name);
    if (stored().restored() != model_.kept) fail("stored " + stored().text());
    if (service_->requests.size() != model_.asked.size()) fail("sent other requests");
    checkGates(current);
  }

  // What runs is the consent. While the store cannot be read, what runs stays, except that a logout or an
  // erasure stops it if the store has not taken it.
  void checkGates(const Model& current) {
    platform_.settle();
    const bool isUnwritten = !(current.kept == model_.kept);
    if (model_.isReadable) {
      if (!isUnwritten) model_.unwritten.clear();  // there was nothing to write
      allowed_ = current.kept.consent;
      isWithdrawn_ = isUnwritten && (std::ranges::count(model_.unwritten, "-") > 0 ||
                                     std::ranges::count(model_.unwritten, "erased") > 0);
    } else if (isWithdrawn_) {
      allowed_ = "-";
    }
    const std::string running = running_.size() == vendors.size() ? "all"
                                : running_.empty()                ? "-"
                                                                  : *running_.begin();
    if (running != allowed_ || (running_.size() > 1 && running != "all"))
      fail("runs " + running + " instead of " + allowed_);
  }
  void note(const std::string& name, bool isStarted) {
    if (running_.contains(name) == isStarted) fail("started or stopped " + name + " twice");
    isStarted ? (void)running_.insert(name) : (void)running_.erase(name);
  }

  void fail(const std::string& what) {
    SharedMemory::put(shared_.fault, what + " at step " + std::to_string(shared_.next) +
                                         ", where the model expects " + model_.kept.text());
    leave();
  }

  [[noreturn]] void leave() {
    stored();
    _exit(0);
  }

  const Texts& steps_;
  SharedMemory& shared_;
  MemoryPlatform platform_;
  std::shared_ptr<Unanswered> service_ = std::make_shared<Unanswered>();
  std::shared_ptr<CookiesSDK> client_;
  Model model_;
  Model before_, written_;  // the model before the current step, and the same with its pending writes done
  int left_ = 0;
  std::vector<Subscription> gates_;
  std::set<std::string> running_;
  std::string allowed_ = "-";  // what the gates should run
  bool isWithdrawn_ = false;   // a logout or an erasure has not been stored
};

// Runs the steps, with a new process after each restart. Returns the failure, or an empty text.
std::string play(const Texts& steps, SharedMemory& shared = SharedMemory::made()) {
  while (shared.next < steps.size() && !*shared.fault) {
    const pid_t child = fork();
    if (child == 0) ClientProcess(steps, shared).run();
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0) return "the process crashed";
  }
  return shared.fault;
}

Texts randomSteps(unsigned seed) {
  std::mt19937 random(seed);
  const auto any = [&](const Texts& of) { return of[random() % of.size()]; };
  const Texts verbs = words(
      "decide:x decide:y decide:z ask:x ask:y ask:z refused:z identify:ann identify:ben identify:new "
      "identify:ann forget forget erase yes:0 yes:1 yes:2 no:0 restart store:fine store:fine "
      "store:fixed store:broken store:volatile die:1 die:4 die:7 die:9");
  Texts steps;
  if (random() % 2) steps.push_back("implicit");
  if (random() % 2) steps.push_back("one-by-one");
  for (std::size_t length = steps.size() + 2 + random() % 14; steps.size() < length;)
    steps.push_back(any(verbs));
  return steps;
}

TEST(ChoicesTest, HoldInRandomOrders) {
  const int first = repetitions("TALVO_TEST_SEED", 1), count = repetitions("TALVO_TEST_SEQUENCES", 200);
  for (int seed = first; seed < first + count; ++seed) {
    Texts steps = randomSteps(static_cast<unsigned>(seed));
    std::string fault = play(steps);
    // Drop the steps that the failure does not need.
    for (std::size_t i = 0; !fault.empty() && i < steps.size();) {
      Texts fewer = steps;
      fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(i));
      const std::string same = play(fewer);
      if (same.empty()) ++i;
      if (!same.empty()) steps = fewer, fault = same, i = 0;
    }
    ASSERT_EQ(fault, "") << "seed " << seed << ": " << joined(steps, " ");
  }
}

TEST(ChoicesTest, HoldInEveryListedOrder) {
  for (const auto& [found, steps, left] : tableOf<3>("orders.txt")) {
    SharedMemory& shared = SharedMemory::made();
    const Texts values = words(found);
    for (std::size_t i = 0; i < 3; ++i) {
      if (values[i] != "-") SharedMemory::put(shared.values[i], i == 2 ? values[i] : consentOf(values[i]));
    }
    EXPECT_EQ(play(words(steps), shared), "") << found << " | " << steps;
    EXPECT_EQ(shared.kept().text(), left) << found << " | " << steps;
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
