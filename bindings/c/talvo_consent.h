#ifndef TALVO_CONSENT_H
#define TALVO_CONSENT_H

/*
 * The C interface: for hosts in C, and for bindings in other languages. It runs on libcurl, SQLite and the
 * host's own main loop.
 *
 * Text is UTF-8 and ends with NUL. Text passed to a function is copied. Text returned through a `char**`
 * belongs to the caller, who frees it with talvo_free; text and errors passed to a callback are valid until
 * it returns. There is one client of each kind per process, created on first use and never freed.
 *
 * The main thread is the one that calls talvo_drain. Call every function on it, unless its comment says
 * otherwise. Callbacks must not throw or jump out. If a function takes a `release`, `user_data` must stay
 * valid until `release` has been called, otherwise until the callback has been called. Both may be called on
 * another thread, and `release` may be null. If a function does not return TALVO_OK, it calls neither. Once
 * the process has begun to exit, callbacks may no longer be called.
 */

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define TALVO_API __attribute__((visibility("default")))
#else
#define TALVO_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The result of an operation. The numbers never change; new ones may be added. */
typedef int talvo_status;
enum {
  TALVO_OK = 0,
  TALVO_HTTP_ERROR = 1,       /* the service answered with a status outside 200 to 299 */
  TALVO_DECODING_ERROR = 2,   /* the reply is not the document that was expected */
  TALVO_NETWORK_ERROR = 3,    /* no reply arrived, or the request could not be formed */
  TALVO_INVALID_URL = 4,      /* the URL cannot be used; nothing was sent */
  TALVO_INVALID_RESPONSE = 5, /* the answer was not an HTTP response */
  TALVO_PLATFORM_ERROR = 6,   /* any other failure, mostly of the device: see domain and code */
  TALVO_INVALID_ARGUMENT = 7, /* a null pointer, an unknown event or category, or text that is not a record */
  TALVO_NOT_SHOWN = 8,        /* the host is not in the foreground, so the banner was not shown */
  TALVO_NO_SURFACE = 9        /* the platform has neither a surface nor a window for the banner */
};

/* Describes an error. Later versions may add fields at the end. */
typedef struct talvo_error {
  talvo_status status;
  int http_status;         /* for TALVO_HTTP_ERROR, otherwise 0 */
  const char* domain;      /* for TALVO_PLATFORM_ERROR, otherwise empty */
  int code;                /* for TALVO_PLATFORM_ERROR, otherwise 0 */
  const char* description; /* a sentence for people */
} talvo_error;

typedef int talvo_event;
enum {
  TALVO_ACCEPT_ALL = 0,
  TALVO_REJECT_ALL = 1,
  TALVO_MARKETING_ACCEPTED = 2,
  TALVO_STATISTICS_ACCEPTED = 3,
  TALVO_PREFERENCE_ACCEPTED = 4,
  TALVO_CONSENT_SENT = 5,
  TALVO_IDENTIFICATION_COMPLETE = 6
};

typedef struct talvo_cookies talvo_cookies; /* one site's cookie consent */
typedef struct talvo_topics talvo_topics;   /* one person's choices on numbered topics */

typedef void (*talvo_callback)(void* user_data);
typedef void (*talvo_event_callback)(talvo_event event, void* user_data);
typedef void (*talvo_error_callback)(const talvo_error* error, void* user_data);

/* Called once: with a null error and the service's answer as JSON, or with an error and null JSON. */
typedef void (*talvo_reply_callback)(const talvo_error* error, const char* json, void* user_data);

/* Called with the consent as JSON, or with null if there is none. */
typedef void (*talvo_consent_callback)(const char* json, void* user_data);

/* The version of this header; talvo_version returns the library's. */
#define TALVO_VERSION "1.0.0"
TALVO_API const char* talvo_version(void);

/* Why the last call on this thread failed; empty if it succeeded, never null. Valid until the next call. */
TALVO_API const char* talvo_last_error(void);

TALVO_API void talvo_free(char* text);

/*
 * Call it once, before anything else. Consents are kept in the SQLite file `store`. If `store` is null, the
 * file is "consent.sqlite" in a folder named after the program, where the user's programs keep their data.
 * `wake`, which may be null, is called on any thread when there is something to drain. It must not call any
 * of these functions.
 */
TALVO_API talvo_status talvo_install(const char* store, talvo_callback wake, void* user_data);

/*
 * Call it before talvo_install. Replies of the service are kept, as far as their headers allow, in a file
 * beside the store whose name ends in ".cache". The file takes at most `bytes`. Without this call it takes at
 * most 10000000 bytes. 0 switches the cache off.
 */
TALVO_API talvo_status talvo_set_cache_size(size_t bytes);

/*
 * Call it before talvo_install. A request ends with TALVO_NETWORK_ERROR after these times in milliseconds:
 * without progress, and in total. Without this call, and for 0 or less, these are 60 seconds and no limit.
 */
TALVO_API talvo_status talvo_set_time_limits(long without_progress, long total);

/* Receives a text, which is valid until it returns. */
typedef void (*talvo_text_receiver)(const char* text, void* user_data);

/*
 * Call it once a platform is installed. `print` receives every line that the library would print on standard
 * output, such as why an identification has failed: these lines are the only report of work in the background
 * that has failed. It is called on any thread, and must not create a client. If it is null, lines are printed
 * on standard output again.
 */
TALVO_API talvo_status talvo_set_printer(talvo_text_receiver print, void* user_data, talvo_callback release);

/* Returns the host's text for a key, or null. The text must stay valid until the next call. */
typedef const char* (*talvo_text_callback)(const char* key, void* user_data);

/*
 * Translates the banner's own texts, such as "Back", into the banner's language; otherwise they are in
 * English. Call it once a platform is installed. `own`, which may be null, is called on the main thread and
 * may replace each text. The guide lists the keys.
 */
TALVO_API talvo_status talvo_translate_texts(talvo_text_callback own, void* user_data,
                                             talvo_callback release);

/*
 * Runs the jobs that wait for the main thread, among them the callbacks of gates and of the banner. Returns
 * how many it ran. What these jobs post waits for the next call: before a program prints its state or ends,
 * it calls this until it returns 0.
 */
TALVO_API size_t talvo_drain(void);

/* Waits at most this long for something to drain. Returns 1 if there is something, otherwise 0. */
TALVO_API int talvo_wait(unsigned milliseconds);

/*
 * Returns the process's client. The first call creates it; the arguments of later calls are ignored. Returns
 * null on failure. Any thread.
 */
TALVO_API talvo_cookies* talvo_cookies_create(const char* api_url, const char* site_id);

/* Sets the language of the banner from now on; initially "en". */
TALVO_API talvo_status talvo_cookies_set_language(talvo_cookies* client, const char* language);

/*
 * Keeps a registration alive. talvo_subscription_end ends it and frees the handle; null is ignored. The
 * registration's `release` is called then, or after a callback that is running. A registration that is never
 * ended lasts as long as the process.
 */
typedef struct talvo_subscription talvo_subscription;
TALVO_API void talvo_subscription_end(talvo_subscription* subscription);

/*
 * The gate starts and stops what needs consent. `category` is "necessary", "preferences", "statistics" or
 * "marketing", and `vendor` one of its vendors as the site's services document names it, or null for the
 * whole category. talvo_gate_on calls `start` on the main thread if the stored consent allows that, and from
 * then on, whenever this changes, `stop` and `start` in turn; either may be null. A consent counts once the
 * service has accepted it and it is stored, whoever gave it. talvo_gate_on returns null on failure.
 */
TALVO_API talvo_subscription* talvo_gate_on(talvo_cookies* client, const char* category, const char* vendor,
                                            talvo_callback start, talvo_callback stop, void* user_data,
                                            talvo_callback release);

/* Sets `allowed` to 1 or 0. Does not read the store. Any thread. */
TALVO_API talvo_status talvo_gate_is_allowed(talvo_cookies* client, const char* category, const char* vendor,
                                             int* allowed);

/* Calls `callback` on the main thread after each change of the stored consent. Returns null on failure. */
TALVO_API talvo_subscription* talvo_cookies_observe_consent(talvo_cookies* client,
                                                            talvo_consent_callback callback, void* user_data,
                                                            talvo_callback release);

/*
 * Sets `json` to the consent stored now, or to null if there is none. If the store cannot be read, returns
 * TALVO_PLATFORM_ERROR, and sets `json` to null.
 */
TALVO_API talvo_status talvo_cookies_get_consent(talvo_cookies* client, char** json);

/*
 * Sends a consent such as {"preferences":true,"statistics":false,"marketing":["vendor"]}, stores it once the
 * service has accepted it, and raises its events. `callback`, which may be null, then receives the result.
 * Listeners and `callback` are called on a thread that the library keeps for callbacks, one submission after
 * the other; they may block.
 */
TALVO_API talvo_status talvo_cookies_submit_consent(talvo_cookies* client, const char* json,
                                                    talvo_reply_callback callback, void* user_data);

/*
 * Removes everything that is stored on the device about the person, and closes the gates. Sends nothing.
 * Returns TALVO_PLATFORM_ERROR if the store has not removed it yet; later operations then try again.
 */
TALVO_API talvo_status talvo_cookies_erase_consent(talvo_cookies* client);

/*
 * talvo_cookies_identify ties the consent to a user, and talvo_cookies_remove_identity unties it. If nothing
 * was stored before the login, the user's consent stays: talvo_cookies_erase_consent removes it, too.
 * TALVO_IDENTIFICATION_COMPLETE is raised when the identification has ended. If it has failed, one line is
 * printed before that (talvo_set_printer).
 */
TALVO_API talvo_status talvo_cookies_identify(talvo_cookies* client, const char* user_id);
TALVO_API talvo_status talvo_cookies_remove_identity(talvo_cookies* client);

/*
 * How a banner ends: exactly one of the first six functions is called, once, on the main thread. The first
 * three are called when the service has accepted the user's decision. Any function may be null. Later
 * versions may add fields at the end; `size` says which fields the host knows.
 */
typedef struct talvo_banner_callbacks {
  size_t size; /* sizeof(talvo_banner_callbacks) */
  talvo_callback on_accept_all;
  talvo_callback on_reject_all;
  talvo_callback on_saved;
  talvo_callback on_closed;      /* without a decision, also because the surface was destroyed */
  talvo_callback on_replaced;    /* by another banner */
  talvo_error_callback on_error; /* the banner could not be shown, or the decision could not be submitted */
  /* Called besides those: the user asks for preferences that the host must show itself. */
  talvo_callback on_manage_preferences;
  talvo_callback on_shown; /* called besides those, too: the banner is on screen and begins to fade in */
  void* user_data;
  talvo_callback release; /* called when none of the others will be called any more */

  /* Milliseconds within which the banner must be shown, otherwise `on_error` receives TALVO_NETWORK_ERROR and
   * it is not shown; 0 or less for no limit. */
  long time_limit;
} talvo_banner_callbacks;

/*
 * Fetches what the banner needs and shows it, on the surface that talvo_surface_create (talvo_surface.h) has
 * made, or in a window of the toolkit if a C++ part of the host has installed a platform with windows instead
 * of calling talvo_install. Once everything has been fetched, `on_error` receives TALVO_NO_SURFACE if there
 * is neither, and TALVO_NOT_SHOWN if the host is not in the foreground. A host that cannot draw asks the user
 * in its own way, and calls talvo_cookies_submit_consent.
 */
TALVO_API talvo_status talvo_cookies_show_banner(talvo_cookies* client,
                                                 const talvo_banner_callbacks* callbacks);

/*
 * Listeners. For a submission's events, they are called on the thread for callbacks; for
 * TALVO_IDENTIFICATION_COMPLETE, on the main thread.
 */
TALVO_API talvo_status talvo_cookies_add_listener(talvo_cookies* client, talvo_event event,
                                                  talvo_event_callback callback, void* user_data,
                                                  talvo_callback release);
TALVO_API talvo_status talvo_cookies_remove_listeners(talvo_cookies* client, talvo_event event);
TALVO_API talvo_status talvo_cookies_remove_all_listeners(talvo_cookies* client);

/* Returns the process's client; the first call creates it. `token` and `api_url` may be null. Any thread. */
TALVO_API talvo_topics* talvo_topics_get(const char* tenant_id, const char* collection_point_id,
                                         const char* token, const char* api_url);

typedef struct talvo_topic {
  int64_t number;
  int selected; /* 0: no; anything else: yes */
} talvo_topic;

/*
 * Sends the choices of the person with this e-mail address. `callback`, which may be null, is called on the
 * thread for callbacks, or before this function returns if the request could not be made.
 */
TALVO_API talvo_status talvo_topics_submit(talvo_topics* client, const char* email, const talvo_topic* topics,
                                           size_t count, talvo_reply_callback callback, void* user_data);

#ifdef __cplusplus
}
#endif

#endif
