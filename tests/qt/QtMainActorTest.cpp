// Runs the conformance suite on QtMainActor: jobs run on the GUI thread, in order, and never inside `post`.

#include <QEventLoop>

#include "adapters/qt/QtMainActor.h"

#include "testing/ExecutorConformance.h"
#include "tests/qt/QtTesting.h"

namespace TalvoConsentSDK {
namespace {

struct QtDriver {
  static constexpr bool isBackground = false;
  QtMainActor executor;
  void settle() {
    for (int generation = 0; generation < 3; ++generation) QCoreApplication::processEvents();
  }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Qt, ExecutorConformance, QtDriver);

TEST(QtMainActor, RunsJobsInsideANestedEventLoop) {
  QtMainActor actor;
  Texts order;
  actor.post([&] {
    order.push_back("begun");
    QEventLoop nested;  // as a modal dialog of the host runs
    actor.post([&] { nested.quit(); });
    nested.exec();
    order.push_back("ended");
  });
  actor.post([&] { order.push_back("next"); });
  EXPECT_TRUE(spinUntil([&] { return order.size() == 3; }));
  EXPECT_THAT(order, ElementsAre("begun", "next", "ended"));
}

}  // namespace
}  // namespace TalvoConsentSDK
