#pragma once

#include <QObject>

class QWindow;

/// Keeps the keyboard in a view that another window contains, for as long as the view lives.
///
/// A window manager gives the keyboard to the outer window: on each click, and when the user comes back from
/// another window. This asks for it on the view's behalf. Until the request has made its way through the
/// windowing system, a matter of milliseconds, the keys still come to the outer window: they go on to the
/// view, and what has the focus in the view keeps it.
class KeyboardFocus : public QObject {
  Q_OBJECT

 public:
  /// `view` becomes the parent.
  KeyboardFocus(QWindow& window, QWindow& view);

  bool eventFilter(QObject* receiver, QEvent* event) override;

 private:
  void FocusWindowChanged(const QWindow* focused);

  QWindow& window_;
  QWindow& view_;
  bool view_keeps_focus_ = false;  // although the outer window has the keyboard
};
