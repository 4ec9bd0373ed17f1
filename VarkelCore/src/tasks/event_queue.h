#pragma once

#include <QObject>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace varkel {

/// Hands what workers have to tell over to the thread that owns the queue (the user interface's thread):
/// events run there one after the other, in the order in which they were posted.
class EventQueue : public QObject {
 public:
  using Event = std::function<void()>;

  EventQueue();

  /// From any thread. On the owner's thread the event runs at once, after those that were posted before.
  void Post(Event event);
  /// The same, but never at once: for callers that hold what an event may ask for.
  void PostLater(Event event);

  /// Drops what is waiting and every later event.
  void Close();

 protected:
  bool event(QEvent* wake) override;

 private:
  void Wait(Event event, bool wake);
  void RunWaiting();

  const std::thread::id owner_;
  std::mutex mutex_;  // guards what follows
  std::deque<Event> waiting_;
  bool woken_ = false;
  bool closed_ = false;
};

}  // namespace varkel
