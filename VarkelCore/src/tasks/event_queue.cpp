#include "VarkelCore/src/tasks/event_queue.h"

#include <QCoreApplication>
#include <QEvent>
#include <utility>

namespace varkel {

namespace {

QEvent::Type WakeType() {
  static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
  return type;
}

}  // namespace

EventQueue::EventQueue() : owner_(std::this_thread::get_id()) {}

void EventQueue::Post(Event event) {
  const bool on_owner = std::this_thread::get_id() == owner_;
  Wait(std::move(event), !on_owner);
  if (on_owner) RunWaiting();
}

void EventQueue::PostLater(Event event) {
  Wait(std::move(event), true);
}

void EventQueue::Wait(Event event, bool wake) {
  {
    const std::lock_guard lock(mutex_);
    if (closed_) return;
    waiting_.push_back(std::move(event));
    if (!wake || woken_) return;
    woken_ = true;
  }
  QCoreApplication::postEvent(this, new QEvent(WakeType()));  // Qt owns a posted event
}

void EventQueue::Close() {
  const std::lock_guard lock(mutex_);
  closed_ = true;
  waiting_.clear();
}

bool EventQueue::event(QEvent* wake) {
  if (wake->type() != WakeType()) return QObject::event(wake);
  {
    const std::lock_guard lock(mutex_);
    woken_ = false;
  }
  RunWaiting();
  return true;
}

void EventQueue::RunWaiting() {
  // One at a time: an event may open a nested event loop, which then continues with the next one.
  for (;;) {
    Event next;
    {
      const std::lock_guard lock(mutex_);
      if (waiting_.empty()) return;
      next = std::move(waiting_.front());
      waiting_.pop_front();
    }
    next();
  }
}

}  // namespace varkel
