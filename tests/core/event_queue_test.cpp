#include "VarkelCore/src/tasks/event_queue.h"

#include <numeric>
#include <thread>

#include "tests/core/core_test.h"

namespace {

class EventQueueTest : public QObject {
  Q_OBJECT
 private slots:
  void KeepsTheOrderOfTwoThreads() {
    varkel::EventQueue queue;
    std::vector<int> seen;
    std::thread([&] {
      for (int i = 0; i < 100; ++i) queue.Post([&seen, i] { seen.push_back(i); });
    }).join();
    // Called on the owner's thread, it runs at once, after those that are waiting.
    queue.Post([&seen] { seen.push_back(100); });
    std::vector<int> expected(101);
    std::iota(expected.begin(), expected.end(), 0);
    QCOMPARE(seen, expected);
  }

  void PostLaterNeverRunsInsideTheCallerAndNotAfterClosing() {
    varkel::EventQueue queue;
    int ran = 0;
    queue.PostLater([&ran] { ++ran; });
    QCOMPARE(ran, 0);
    QTRY_COMPARE(ran, 1);
    queue.PostLater([&ran] { ++ran; });
    queue.Close();
    queue.Post([&ran] { ++ran; });
    QCoreApplication::sendPostedEvents();
    QCOMPARE(ran, 1);
  }
};

const RegisterTest<EventQueueTest> register_event_queue_test;

}  // namespace

#include "event_queue_test.moc"
