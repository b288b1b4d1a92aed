#include "TalvoConsentSDK/core/SubmissionEnd.h"

#include <utility>
#include <vector>

#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/platform/Spawn.h"

namespace TalvoConsentSDK {

void announceEnd(const SitePointer& site, Task<ConsentResponse> submission, BasicConsent consent,
                 std::function<void(Result<ConsentResponse>)> completion) {
  const auto announce = [site, consent = std::move(consent),
                         completion = std::move(completion)](Result<ConsentResponse> result) {
    if (result) {
      std::vector<ConsentEvent> events = consent.consentEvents();
      events.push_back(ConsentEvent::consentSent);
      site->eventManager->trigger(events);
    }
    if (completion) completion(std::move(result));
  };
  spawn<ConsentResponse>(site->background, std::move(submission),
                         [announce, callbacks = site->callbacks](Result<ConsentResponse> result) {
                           platform::postOrRun(callbacks,
                                               [announce, result = std::move(result)] { announce(result); });
                         });
}

Task<ConsentResponse> announcedEnd(SitePointer site, Task<ConsentResponse> submission, BasicConsent consent) {
  CallbackAwaiter<Result<ConsentResponse>> end(
      [&](const std::function<void(Result<ConsentResponse>)>& report) {
        announceEnd(site, std::move(submission), std::move(consent), report);
      });
  Result<ConsentResponse> result = co_await std::move(end);
  co_return std::move(result).value();
}

}  // namespace TalvoConsentSDK
