#ifndef TALVO_CONSENT_H
#define TALVO_CONSENT_H

/*
 * The flat interface: for hosts in C, and for other languages to bind to. It runs on libcurl, SQLite and a
 * main loop of the host's own.
 *
 * Text is UTF-8 and ends with NUL. Text handed in is copied. Text handed out through a `char**` is the
 * caller's, who frees it with talvo_free; text and errors handed to a callback are valid until it returns.
 * Clients are one a process, made on first use and never freed.
 *
 * The main thread is the one that calls talvo_drain. Call everything on it, except for what says otherwise.
 * Callbacks must not throw or jump out. A `user_data` must stay valid until its callback has been called, or,
 * where there is a `release`, until that has; both may be called on another thread, and `release` may be
 * null. Of a call that does not return TALVO_OK, neither is called. Once the process has begun to exit,
 * callbacks may no longer be called.
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

/* What came of an operation. Numbers never change; new ones may be added. */
typedef int talvo_status;
enum {
  TALVO_OK = 0,
  TALVO_HTTP_ERROR = 1,       /* the service answered with a status outside 200 to 299 */
  TALVO_DECODING_ERROR = 2,   /* a document is not what was expected */
  TALVO_NETWORK_ERROR = 3,    /* no reply arrived, or the request could not be formed */
  TALVO_INVALID_URL = 4,      /* nothing was sent */
  TALVO_INVALID_RESPONSE = 5, /* the answer was no HTTP response */
  TALVO_PLATFORM_ERROR = 6,   /* the device failed: see domain and code */
  TALVO_INVALID_ARGUMENT = 7  /* a null pointer, a number that is no event, or text that is no record */
};

/* Later versions may add fields at its end. */
typedef struct talvo_error {
  talvo_status status;
  int http_status;    /* of TALVO_HTTP_ERROR, else 0 */
  const char* domain; /* of TALVO_PLATFORM_ERROR, else empty; so is the code */
  int code;
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

/* Called once: with a null error and the service's answer as JSON, or with an error and null. */
typedef void (*talvo_reply_callback)(const talvo_error* error, const char* json, void* user_data);

/* Why the last call on this thread failed; never null, empty when it did not. Valid until the next call. */
TALVO_API const char* talvo_last_error(void);

TALVO_API void talvo_free(char* text);

/*
 * Call it once, before anything else. Consents are kept in the SQLite file `store`; null: "consent.sqlite" in
 * a folder named after the program, where the person's programs keep their data. `wake`, which may be null,
 * is called on any thread when there is something to drain, and must not call back.
 */
TALVO_API talvo_status talvo_install(const char* store, talvo_callback wake, void* user_data);

/* Runs what is due on the main thread, where callbacks of the banner come from; tells how much it was. */
TALVO_API size_t talvo_drain(void);

/* Waits at most so long for something to drain; 1 when there is something, else 0. */
TALVO_API int talvo_wait(unsigned milliseconds);

/* The process's client, made by the first call, whose arguments count. Null after a failure. Any thread. */
TALVO_API talvo_cookies* talvo_cookies_create(const char* api_url, const char* site_id);

/* The language of the banner from now on; "en" at first. */
TALVO_API talvo_status talvo_cookies_set_language(talvo_cookies* client, const char* language);

/* The consent stored now, as JSON, or null when there is none. */
TALVO_API talvo_status talvo_cookies_get_consent(talvo_cookies* client, char** json);

/*
 * Sends a consent such as {"preferences":true,"statistics":false,"marketing":["vendor"]}, stores it once the
 * service has it, and raises its events; `callback`, which may be null, hears of it. Both come in order on a
 * thread of the library's for callbacks, which may block.
 */
TALVO_API talvo_status talvo_cookies_submit_consent(talvo_cookies* client, const char* json,
                                                    talvo_reply_callback callback, void* user_data);

/* Ties the consent to a user; TALVO_IDENTIFICATION_COMPLETE tells when that is done. The second unties it. */
TALVO_API talvo_status talvo_cookies_identify(talvo_cookies* client, const char* user_id);
TALVO_API talvo_status talvo_cookies_remove_identity(talvo_cookies* client);

/* What to call, on the main thread, when the person has decided. Any of them may be null. */
typedef struct talvo_banner_callbacks {
  talvo_callback on_accept_all;
  talvo_callback on_reject_all;
  talvo_callback on_manage_preferences;
  talvo_error_callback on_error;
  void* user_data;
  talvo_callback release; /* none of them will be called any more */
} talvo_banner_callbacks;

/*
 * Fetches what the banner needs and shows it. Only where a C++ part of the host has installed a platform with
 * windows, instead of talvo_install, is there something to show it on; elsewhere no decision is ever
 * reported.
 */
TALVO_API talvo_status talvo_cookies_show_banner(talvo_cookies* client,
                                                 const talvo_banner_callbacks* callbacks);

/* Listeners. Of a submission they are called on the thread for callbacks, of an identity on the main one. */
TALVO_API talvo_status talvo_cookies_add_listener(talvo_cookies* client, talvo_event event,
                                                  talvo_event_callback callback, void* user_data,
                                                  talvo_callback release);
TALVO_API talvo_status talvo_cookies_remove_listeners(talvo_cookies* client, talvo_event event);
TALVO_API talvo_status talvo_cookies_remove_all_listeners(talvo_cookies* client);

/* The process's client, made by the first call. `token` and `api_url` may be null. Any thread. */
TALVO_API talvo_topics* talvo_topics_get(const char* tenant_id, const char* collection_point_id,
                                         const char* token, const char* api_url);

typedef struct talvo_topic {
  int64_t number;
  int selected; /* 0: no, else yes */
} talvo_topic;

/*
 * Sends the choices of the person with this address. `callback`, which may be null, is called on the thread
 * for callbacks, or, when there is nothing that could be sent, before this returns.
 */
TALVO_API talvo_status talvo_topics_submit(talvo_topics* client, const char* email, const talvo_topic* topics,
                                           size_t count, talvo_reply_callback callback, void* user_data);

#ifdef __cplusplus
}
#endif

#endif
