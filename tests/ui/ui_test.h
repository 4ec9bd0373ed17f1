#pragma once

#include <QQuickItem>
#include <QQuickView>
#include <memory>
#include <string>
#include <vector>

#include "VarkelCore/src/varkel_manager.h"
#include "app/src/main_window.h"
#include "simulator/src/simulated_sensor.h"
#include "tests/support/qt_test.h"

/// A user of a view, who finds controls by name.
class User {
 public:
  /// The visible control of that name in the view or in a notice above it; fails the test when there is none.
  QQuickItem* Find(const QString& name) const;
  bool Has(const QString& name) const;
  QVariant Property(const QString& name, const char* property) const {
    return Find(name)->property(property);
  }
  QString Text(const QString& name) const { return Property(name, "text").toString(); }

  void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const;
  void Click(const QString& name) const;
  /// Scrolls the button into view and clicks it, once it is ready for that.
  void Press(const QString& name) const;
  /// Steps by key to the combo box's entry.
  void Choose(const QString& name, int index) const;
  /// Puts the text in place of what the field holds, without ending the edit.
  void Type(const QString& name, const QString& text) const;
  /// Type and Enter.
  void Enter(const QString& name, const QString& text) const;
  /// Drops a firmware package.
  void Drop(const QUrl& file) const;

  QQuickView& view() const { return *view_; }

 protected:
  /// Waits until the view takes keys.
  void Use(QQuickView& view);

 private:
  QQuickView* view_ = nullptr;
};

/// The program's window with its first page, a simulated sensor and a user.
class Desk : public User {
 public:
  explicit Desk(std::vector<std::string> misbehaviours = {}, const QString& start_model = {});
  ~Desk();

  /// Name of a variable's row without its prefix, "page_group_index", found by its label.
  QString Place(int page, const QString& label) const;
  /// A notice window, which is no item; its `visible`, `message`, `waiting`. Null before its first notice.
  QObject* Notice(const QString& name) const;
  bool IsOpen(const QString& name) const;
  bool NoticeShows(const QString& name, const QString& text) const;
  /// Presses the key; true when no notice of that name shows any more.
  bool Dismiss(const QString& name, Qt::Key key = Qt::Key_Return) const;

  void ShowPage(int page) const;
  /// Types address and port, by default the sensor's, and presses Enter.
  void Dial(std::uint16_t port = 0) const;
  /// Dial, and wait for the first page.
  bool Connect() const;

  varkel::sim::SimulatedSensor sensor;
  VarkelManager* manager;  ///< the window's
  std::unique_ptr<MainWindow> window;
};
