#include "VarkelCore/src/event_queue.h"

#include <QTest>
#include <atomic>
#include <thread>
#include <vector>

#include "tests/core/core_test.h"

namespace {

class EventQueueTest : public QObject {
  Q_OBJECT
 private slots:
  void KeepsTheOrderOfTwoThreads();
  void PostLaterNeverRunsInsideTheCaller();
  void ClosedQueueDropsEverything();
};

void EventQueueTest::KeepsTheOrderOfTwoThreads() {
  varkel::EventQueue queue;
  std::vector<int> seen;
  std::thread([&] {
    for (int i = 0; i < 100; ++i) queue.Post([&seen, i] { seen.push_back(i); });
  }).join();
  queue.Post([&seen] { seen.push_back(100); });  // on the owner's thread: behind the waiting ones, at once
  QCOMPARE(seen.size(), std::size_t{101});
  for (int i = 0; i <= 100; ++i) QCOMPARE(seen[static_cast<std::size_t>(i)], i);
}

void EventQueueTest::PostLaterNeverRunsInsideTheCaller() {
  varkel::EventQueue queue;
  bool ran = false;
  queue.PostLater([&ran] { ran = true; });
  QVERIFY(!ran);
  QTRY_VERIFY(ran);
}

void EventQueueTest::ClosedQueueDropsEverything() {
  varkel::EventQueue queue;
  std::atomic<int> ran = 0;
  queue.PostLater([&ran] { ++ran; });
  queue.Close();
  queue.Post([&ran] { ++ran; });
  QCoreApplication::sendPostedEvents();
  QCOMPARE(ran.load(), 0);
}

const RegisterTest<EventQueueTest> registered;

}  // namespace

#include "event_queue_test.moc"
