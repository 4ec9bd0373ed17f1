#include "app/src/keyboard_focus.h"

#include <QCoreApplication>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QWindow>
#include <utility>
#ifdef VARKEL_X11
#include <QX11Info>
#endif

namespace {

// An X server ignores a request with an older time than the last change of the focus, which Qt may not know
// of yet: its time is that of the last event it has read.
void SyncEventTime() {
#ifdef VARKEL_X11
  if (QX11Info::isPlatformX11()) {
    QX11Info::setAppTime(QX11Info::getTimestamp());
  }
#endif
}

bool IsKey(const QEvent& event) {
  return event.type() == QEvent::KeyPress || event.type() == QEvent::KeyRelease;
}

}  // namespace

KeyboardFocus::KeyboardFocus(QWindow& window, QWindow& view) : QObject(&view), window_(window), view_(view) {
  window.installEventFilter(this);
  view.installEventFilter(this);
  connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &KeyboardFocus::FocusWindowChanged);
}

bool KeyboardFocus::eventFilter(QObject* receiver, QEvent* event) {
  if (receiver == &view_ && event->type() == QEvent::FocusOut) {
    view_keeps_focus_ = QGuiApplication::focusWindow() == &window_;
    return view_keeps_focus_;
  }
  if (receiver == &window_ && IsKey(*event)) {
    QCoreApplication::sendEvent(&view_, event);
    return true;
  }
  return false;
}

void KeyboardFocus::FocusWindowChanged(const QWindow* focused) {
  if (focused == &window_) {
    if (!view_.isExposed()) {
      return;
    }
    if (!std::exchange(view_keeps_focus_, true)) {
      QFocusEvent in(QEvent::FocusIn, Qt::ActiveWindowFocusReason);
      QCoreApplication::sendEvent(&view_, &in);
    }
    SyncEventTime();
    view_.requestActivate();
  } else if (std::exchange(view_keeps_focus_, false) && focused != &view_) {
    QFocusEvent out(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QCoreApplication::sendEvent(&view_, &out);
  }
}
