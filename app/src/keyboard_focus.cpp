#include "app/src/keyboard_focus.h"

#include <QGuiApplication>
#include <QWindow>
#ifdef VARKEL_X11
#include <QX11Info>
#endif

namespace {

// An X server ignores a request that carries an older time than the last change of the focus, and that change
// may be news to Qt, whose time is that of the last event it has read.
void BringClockUpToDate() {
#ifdef VARKEL_X11
  if (QX11Info::isPlatformX11()) {
    QX11Info::setAppTime(QX11Info::getTimestamp());
  }
#endif
}

}  // namespace

void PassKeyboardOn(QWindow& window, QWindow& view) {
  QObject::connect(qGuiApp, &QGuiApplication::focusWindowChanged, &view, [&](const QWindow* focused) {
    if (focused == &window && view.isExposed()) {
      BringClockUpToDate();
      view.requestActivate();
    }
  });
}
