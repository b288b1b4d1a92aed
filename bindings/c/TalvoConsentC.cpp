// The C interface of the clients.

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

#include "TalvoConsentSDK/TalvoConsentSDK.h"
#include "TalvoConsentSDK/models/JSONCoding.h"

#include "bindings/ConsentText.h"
#include "bindings/c/Boundary.h"

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::c;

namespace {

// A client's handle is its address, since clients live as long as the process.
CookiesSDK& cookies(talvo_cookies* client) {
  return required(reinterpret_cast<CookiesSDK*>(client), "client");
}

ConsentEvent eventOf(talvo_event event) {
  if (event < TALVO_ACCEPT_ALL || event > TALVO_IDENTIFICATION_COMPLETE) {
    throw Error(InvalidArgument("There is no event " + std::to_string(event)));
  }
  return static_cast<ConsentEvent>(event);
}
static_assert(static_cast<int>(ConsentEvent::identificationComplete) == TALVO_IDENTIFICATION_COMPLETE);
static_assert(static_cast<int>(ConsentEvent::consentSent) == TALVO_CONSENT_SENT);

ConsentCategory categoryOf(const char* name) {
  const std::string text = requiredText(name, "category");
  const auto category = fromRawValue<ConsentCategory>(text);
  if (!category || !ConsentGate::has(*category)) {
    throw Error(InvalidArgument("A gate has no category \"" + text + "\""));
  }
  return *category;
}

char* copied(const std::string& text) {
  char* const copy = static_cast<char*>(std::malloc(text.size() + 1));
  if (!copy) throw std::bad_alloc();
  std::memcpy(copy, text.c_str(), text.size() + 1);
  return copy;
}

void answer(talvo_reply_callback callback, void* userData, const Result<std::string>& json) {
  if (!callback) return;
  if (json) return callback(nullptr, json->c_str(), userData);
  const talvo_error error = describe(json.error());
  callback(&error, nullptr, userData);
}

// Gives a subscription to C, which frees it.
talvo_subscription* handed(Subscription subscription) {
  return reinterpret_cast<talvo_subscription*>(new Subscription(std::move(subscription)));
}

talvo_status whyNotShown() {
  const bool hasScene =
      platform::askHost(true, [] { return !Platform::current().application->connectedScenes().empty(); });
  return hasScene ? TALVO_NOT_SHOWN : TALVO_NO_SURFACE;
}

static_assert(std::string_view(TALVO_VERSION) == TALVO_CONSENT_SDK_VERSION_TEXT);

// The structure as version 1.0.0 has it, which is the least that a host gives.
constexpr std::size_t firstSize =
    offsetof(talvo_banner_callbacks, time_limit) + sizeof(talvo_banner_callbacks::time_limit);

// Without padding at the end, a field added there always makes the structure larger, and `size` shows it.
static_assert(sizeof(talvo_banner_callbacks) == firstSize);

}  // namespace

const char* talvo_version(void) {
  return version();
}

void talvo_subscription_end(talvo_subscription* subscription) {
  guarded([&] { delete reinterpret_cast<Subscription*>(subscription); });
}

void talvo_free(char* text) {
  std::free(text);
}

talvo_cookies* talvo_cookies_create(const char* api_url, const char* site_id) {
  CookiesSDK* client = nullptr;
  guarded([&] {
    client =
        CookiesSDK::createInstance(requiredText(api_url, "api_url"), requiredText(site_id, "site_id")).get();
  });
  return reinterpret_cast<talvo_cookies*>(client);
}

talvo_status talvo_cookies_set_language(talvo_cookies* client, const char* language) {
  return guarded([&] { cookies(client).setLanguage(requiredText(language, "language")); });
}

talvo_status talvo_cookies_get_consent(talvo_cookies* client, char** json) {
  return guarded([&] {
    required(json, "json") = nullptr;
    if (const auto consent = cookies(client).getConsent()) {
      *json = copied(*JSONEncoder().encode(*consent));
    } else {
      // Without a consent, a store that can be read returns an answer for any key.
      static_cast<void>(Platform::current().userDefaults->data("com.talvo.consent.basicConsent").value());
    }
  });
}

talvo_status talvo_cookies_submit_consent(talvo_cookies* client, const char* json,
                                          talvo_reply_callback callback, void* user_data) {
  return guarded([&] {
    const auto consent = consentOf(requiredText(json, "json"));
    cookies(client).submitConsent(*consent, [callback, user_data](const Result<ConsentResponse>& result) {
      answer(callback, user_data,
             result ? JSONEncoder().encode(*result) : Result<std::string>(result.error()));
    });
  });
}

talvo_status talvo_cookies_erase_consent(talvo_cookies* client) {
  return guarded([&] {
    if (!cookies(client).eraseConsent())
      throw Error(PlatformError("TalvoConsentSDK", -8, "The store has not removed the consent"));
  });
}

talvo_subscription* talvo_gate_on(talvo_cookies* client, const char* category, const char* vendor,
                                  talvo_callback start, talvo_callback stop, void* user_data,
                                  talvo_callback release) {
  talvo_subscription* subscription = nullptr;
  guarded([&] {
    const ConsentGate gate = cookies(client).gate();
    const ConsentCategory gated = categoryOf(category);
    const auto userData = owned(user_data, release);
    subscription = handed(vendor ? gate.on(gated, vendor, closure(start, userData), closure(stop, userData))
                                 : gate.on(gated, closure(start, userData), closure(stop, userData)));
  });
  return subscription;
}

talvo_status talvo_gate_is_allowed(talvo_cookies* client, const char* category, const char* vendor,
                                   int* allowed) {
  return guarded([&] {
    const ConsentGate gate = cookies(client).gate();
    const ConsentCategory gated = categoryOf(category);
    required(allowed, "allowed") = vendor ? gate.isAllowed(gated, vendor) : gate.isAllowed(gated);
  });
}

talvo_subscription* talvo_cookies_observe_consent(talvo_cookies* client, talvo_consent_callback callback,
                                                  void* user_data, talvo_callback release) {
  talvo_subscription* subscription = nullptr;
  guarded([&] {
    CookiesSDK& sdk = cookies(client);
    if (!callback) throw Error(InvalidArgument("callback is null"));
    subscription = handed(sdk.observeConsent(
        [callback, userData = owned(user_data, release)](const std::optional<BasicConsent>& consent) {
          callback(consent ? JSONEncoder().encode(*consent)->c_str() : nullptr, userData.get());
        }));
  });
  return subscription;
}

talvo_status talvo_cookies_identify(talvo_cookies* client, const char* user_id) {
  return guarded([&] { cookies(client).identify(requiredText(user_id, "user_id")); });
}

talvo_status talvo_cookies_remove_identity(talvo_cookies* client) {
  return guarded([&] { cookies(client).removeIdentity(); });
}

talvo_status talvo_cookies_show_banner(talvo_cookies* client, const talvo_banner_callbacks* callbacks) {
  return guarded([&] {
    CookiesSDK& sdk = cookies(client);
    const talvo_banner_callbacks host = copied(callbacks, firstSize, "callbacks");
    const auto userData = owned(host.user_data, host.release);
    const auto fail = [onError = host.on_error, userData](const Error& error) {
      const talvo_error described = describe(error);
      if (onError) onError(&described, userData.get());
    };
    BannerOptions options;
    options.timeLimit = timeLimit(host.time_limit);
    sdk.showBanner(BannerHandlers{.onAcceptAll = closure(host.on_accept_all, userData),
                                  .onRejectAll = closure(host.on_reject_all, userData),
                                  .onSaved = closure(host.on_saved, userData),
                                  .onClosed = closure(host.on_closed, userData),
                                  .onReplaced = closure(host.on_replaced, userData),
                                  .onNotShown = [fail] { fail(Error(NotShown(whyNotShown()))); },
                                  .onError = fail,
                                  .onManagePreferences = closure(host.on_manage_preferences, userData),
                                  .onShown = closure(host.on_shown, userData)},
                   options);
  });
}

talvo_status talvo_cookies_add_listener(talvo_cookies* client, talvo_event event,
                                        talvo_event_callback callback, void* user_data,
                                        talvo_callback release) {
  return guarded([&] {
    CookiesSDK& sdk = cookies(client);
    const ConsentEvent consentEvent = eventOf(event);
    if (!callback) throw Error(InvalidArgument("callback is null"));
    sdk.addEventListener(consentEvent, std::make_shared<ConsentEventClosureCallback>(
                                           [callback, event, userData = owned(user_data, release)] {
                                             callback(event, userData.get());
                                           },
                                           [] {}));
  });
}

talvo_status talvo_cookies_remove_listeners(talvo_cookies* client, talvo_event event) {
  return guarded([&] { cookies(client).removeEventListener(eventOf(event)); });
}

talvo_status talvo_cookies_remove_all_listeners(talvo_cookies* client) {
  return guarded([&] { cookies(client).removeAllEventListeners(); });
}

talvo_topics* talvo_topics_get(const char* tenant_id, const char* collection_point_id, const char* token,
                               const char* api_url) {
  TalvoConsent* client = nullptr;
  guarded([&] {
    const auto optional = [](const char* text) {
      return text ? std::optional<std::string>(text) : std::nullopt;
    };
    client = TalvoConsent::getInstance(requiredText(tenant_id, "tenant_id"),
                                       requiredText(collection_point_id, "collection_point_id"),
                                       optional(token), optional(api_url))
                 .get();
  });
  return reinterpret_cast<talvo_topics*>(client);
}

talvo_status talvo_topics_submit(talvo_topics* client, const char* email, const talvo_topic* topics,
                                 size_t count, talvo_reply_callback callback, void* user_data) {
  return guarded([&] {
    std::map<std::int64_t, bool> choices;
    if (count > 0) required(topics, "topics");
    for (size_t i = 0; i < count; ++i) choices[topics[i].number] = topics[i].selected != 0;
    required(reinterpret_cast<TalvoConsent*>(client), "client")
        .submitConsent(
            requiredText(email, "email"), choices, [callback, user_data](const Result<JSONObject>& reply) {
              answer(callback, user_data,
                     reply ? JSONEncoder().encode(JSONValue(*reply)) : Result<std::string>(reply.error()));
            });
  });
}
