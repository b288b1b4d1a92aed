#include "TalvoConsentSDK/core/SubmissionEnd.h"

#include <utility>
#include <vector>

#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/platform/Spawn.h"

namespace TalvoConsentSDK {

void announceEnd(Task<ConsentResponse> submission, BasicConsent consent,
                 std::shared_ptr<ConsentEventManager> eventManager, const Platform& platform,
                 std::function<void(Result<ConsentResponse>)> completion) {
  const auto tell = [consent = std::move(consent), eventManager = std::move(eventManager),
                     completion = std::move(completion)](Result<ConsentResponse> result) {
    if (result) {
      std::vector<ConsentEvent> events = consent.consentEvents();
      events.push_back(ConsentEvent::consentSent);
      eventManager->trigger(events);
    }
    if (completion) completion(std::move(result));
  };
  spawn<ConsentResponse>(platform.background, std::move(submission),
                         [tell, callbacks = platform.callbacks](Result<ConsentResponse> result) {
                           detail::postOrRun(callbacks, [tell, result = std::move(result)] { tell(result); });
                         });
}

Task<ConsentResponse> announcedEnd(Task<ConsentResponse> submission, BasicConsent consent,
                                   std::shared_ptr<ConsentEventManager> eventManager, Platform platform) {
  CallbackAwaiter<Result<ConsentResponse>> end(
      [&](const std::function<void(Result<ConsentResponse>)>& report) {
        announceEnd(std::move(submission), std::move(consent), std::move(eventManager), platform, report);
      });
  Result<ConsentResponse> result = co_await std::move(end);
  co_return std::move(result).value();
}

}  // namespace TalvoConsentSDK
