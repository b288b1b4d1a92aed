// QtMainActor as the main actor that the library expects: on the GUI thread, in order, never inside `post`.

#include <QEventLoop>
#include <stdexcept>
#include <thread>

#include "adapters/qt/QtMainActor.h"

#include "tests/qt/QtTesting.h"

namespace TalvoConsentSDK {
namespace {

TEST(QtMainActor, RunsEveryJobOnceInOrderOnTheGuiThread) {
  QtMainActor actor;
  const auto guiThread = std::this_thread::get_id();
  std::vector<int> ran(4);  // by poster
  std::vector<std::thread> posters;
  for (int& mine : ran) {
    posters.emplace_back([&, guiThread] {
      for (int job = 0; job < 500; ++job) {
        actor.post(
            [&mine, job, guiThread] { mine += mine == job && std::this_thread::get_id() == guiThread; });
      }
    });
  }
  for (std::thread& each : posters) each.join();
  EXPECT_THAT(ran, Each(0)) << "nothing runs before the event loop does";
  QCoreApplication::processEvents();
  EXPECT_THAT(ran, Each(500));
}

TEST(QtMainActor, TakesJobsFromJobsWhateverTheyDo) {
  MemoryPlatform platform;
  platform.install();
  QtMainActor actor;
  Texts order;
  actor.post([&] {
    actor.post([&] { order.push_back("posted"); });
    order.push_back("begun");
    QEventLoop nested;  // a dialog of the host's, say
    actor.post([&] { nested.quit(); });
    nested.exec();
    order.push_back("ended");
    throw std::runtime_error("no");
  });
  actor.post([&] { order.push_back("next"); });
  EXPECT_TRUE(spinUntil([&] { return order.size() == 4; }));
  EXPECT_THAT(order, ElementsAre("begun", "next", "posted", "ended"));
  EXPECT_THAT(platform.printer->take(), ElementsAre("⚠️ A callback threw: no"));
}

}  // namespace
}  // namespace TalvoConsentSDK
