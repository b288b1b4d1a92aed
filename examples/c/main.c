/* A host in C: submits a choice through the C interface, runs a vendor's code while the stored consent allows
 * it, and prints the events.
 *
 *   c-host URL [STORE]
 */

#include <stdatomic.h>
#include <stdio.h>
#include <talvo_consent.h>

/* The exit status; -1 until the reply arrives, on a background thread. */
static atomic_int status = -1;

static void on_start(void* user_data) {
  printf("%s: started\n", (const char*)user_data);
}

static void on_stop(void* user_data) {
  printf("%s: stopped\n", (const char*)user_data);
}

static void on_event(talvo_event event, void* user_data) {
  printf("event %d for %s\n", event, (const char*)user_data);
}

static void on_release(void* user_data) {
  printf("released %s\n", (const char*)user_data);
}

static void on_reply(const talvo_error* error, const char* json, void* user_data) {
  (void)user_data;
  if (error) printf("failed: %s\n", error->description);
  if (json) printf("submitted: %s\n", json);
  status = error ? 1 : 0;
}

static int print_consent(talvo_cookies* sdk) {
  char* json = NULL;
  if (talvo_cookies_get_consent(sdk, &json) != TALVO_OK) {
    fprintf(stderr, "%s\n", talvo_last_error());
    return 1;
  }
  printf("stored: %s\n", json ? json : "nothing");
  talvo_free(json);
  return 0;
}

int main(int count, char** arguments) {
  if (count < 2) return fprintf(stderr, "usage: c-host URL [STORE]\n"), 2;
  if (talvo_install(count > 2 ? arguments[2] : NULL, NULL, NULL) != TALVO_OK) {
    return fprintf(stderr, "%s\n", talvo_last_error()), 1;
  }
  talvo_cookies* const sdk = talvo_cookies_create(arguments[1], "demo");
  if (!sdk) return fprintf(stderr, "%s\n", talvo_last_error()), 1;
  if (print_consent(sdk) != 0) return 1;

  talvo_subscription* const ads =
      talvo_gate_on(sdk, "marketing", "Adlantern", on_start, on_stop, "Adlantern", NULL);
  if (!ads) return fprintf(stderr, "%s\n", talvo_last_error()), 1;

  for (talvo_event event = TALVO_ACCEPT_ALL; event <= TALVO_IDENTIFICATION_COMPLETE; ++event) {
    talvo_cookies_add_listener(sdk, event, on_event, "the demo",
                               event == TALVO_CONSENT_SENT ? on_release : NULL);
  }
  const char* const choice = "{\"preferences\":true,\"statistics\":false,\"marketing\":[\"Adlantern\"]}";
  if (talvo_cookies_submit_consent(sdk, choice, on_reply, NULL) != TALVO_OK) {
    return fprintf(stderr, "%s\n", talvo_last_error()), 1;
  }
  while (status < 0) {
    talvo_wait(100); /* a real host does its own work here */
    talvo_drain();
  }
  talvo_drain(); /* the last jobs may have arrived together with the reply */
  talvo_subscription_end(ads);
  talvo_cookies_remove_all_listeners(sdk);
  return print_consent(sdk) == 0 ? status : 1;
}
