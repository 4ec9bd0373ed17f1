#pragma once

#include <QObject>

class QWindow;

/// Keeps the keyboard focus in a view that is embedded in another window, for as long as the view exists.
///
/// A window manager gives the focus to the outer window on each click, and when the user returns from another
/// window. This class requests it for the view. For some milliseconds, until the windowing system has handled
/// the request, the outer window still receives the keys: they are forwarded to the view, whose focused
/// control keeps the focus.
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
