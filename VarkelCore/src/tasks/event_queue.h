#pragma once

#include <QObject>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace varkel {

/// Passes events from workers to the thread that owns the queue (the user interface's thread), where they run
/// one after the other, in the order in which they were posted.
class EventQueue : public QObject {
 public:
  using Event = std::function<void()>;

  EventQueue();

  /// Callable from any thread. On the owner's thread the event runs at once, after all events posted before.
  void Post(Event event);
  /// The same, but never runs the event at once: for callers that hold a lock that an event may need.
  void PostLater(Event event);

  /// Drops all waiting and all later events.
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
