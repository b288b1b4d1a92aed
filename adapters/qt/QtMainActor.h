#pragma once

// The main actor on Qt's event loop.

#include <memory>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Executor.h"

class QObject;

namespace TalvoConsentSDK TALVO_EXPORT {

/// Runs jobs from the event loop of the QGuiApplication's thread, in the order posted. Create it on that
/// thread.
class QtMainActor : public platform::Executor {
 public:
  QtMainActor();
  ~QtMainActor() override;

  void post(std::function<void()> job) override;

 private:
  const std::unique_ptr<QObject> receiver_;
};

}  // namespace TalvoConsentSDK
