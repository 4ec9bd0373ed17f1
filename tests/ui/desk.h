#pragma once

#include <QQuickItem>
#include <QQuickView>
#include <QTemporaryDir>
#include <memory>

#include "VarkelCore/src/varkel_manager.h"
#include "app/src/main_window.h"
#include "simulator/src/simulated_sensor.h"
#include "simulator/src/simulated_small_sensor.h"
#include "tests/support/qt_test.h"

/// How long a test waits for what must come: long enough for a busy machine.
constexpr int kPatienceMs = 30000;

// Qt's macros with that patience. What they repeat must only look, never act.
#define EVENTUALLY_VERIFY(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, kPatienceMs)
#define EVENTUALLY_VERIFY2(condition, text) QTRY_VERIFY2_WITH_TIMEOUT(condition, text, kPatienceMs)
#define EVENTUALLY_COMPARE(actual, expected) QTRY_COMPARE_WITH_TIMEOUT(actual, expected, kPatienceMs)

/// The program's window, a simulated sensor and a user, who finds controls by name.
class Desk {
 public:
  /// With a start model the sensor is one of that model.
  explicit Desk(const QString& start_model = {});
  ~Desk();
  Desk(const Desk&) = delete;
  Desk& operator=(const Desk&) = delete;

  /// The visible control of that name in the view or in a notice above it; fails the test when there is none.
  QQuickItem* Find(const QString& name) const;
  bool Has(const QString& name) const;
  QVariant Property(const QString& name, const char* property) const {
    return Find(name)->property(property);
  }
  QString Text(const QString& name) const { return Property(name, "text").toString(); }
  /// Name of a variable's row without its prefix, "page_group_index", found by its label.
  QString Place(int page, const QString& label) const;
  /// The window that the user looks at.
  QQuickWindow& view() const { return *view_; }

  void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const;
  /// Clicks a control once it is ready for that.
  void Click(const QString& name) const;
  /// The same, scrolled into view.
  void Press(const QString& name) const;
  /// Steps by key to the combo box's entry.
  void Choose(const QString& name, int index) const;
  /// Puts the text in place of what the field holds, without ending the edit.
  void Type(const QString& name, const QString& text) const;
  /// Type and Enter.
  void Enter(const QString& name, const QString& text) const;
  /// Drops a firmware package of that content, which lies in the folder.
  void Drop(const QString& file_name, const QByteArray& content = {}) const;
  void ShowPage(int page) const;
  /// Opens the log window; from then on the user looks at that.
  void OpenLog();

  /// A notice window, which is no item; its `visible`, `opened`, `message`. May be null before its first
  /// notice.
  QObject* Notice(const QString& name) const { return root->findChild<QObject*>(name); }
  bool IsOpen(const QString& name) const;
  bool NoticeShows(const QString& name, const QString& text) const;
  /// NoticeShows, and the key ends it; false when a notice of that name is still open then.
  bool Dismiss(const QString& name, const QString& text, Qt::Key key = Qt::Key_Return) const;

  /// Types where the sensor is, or another port of this machine, and presses Enter.
  void Dial(std::uint16_t port = 0) const;
  /// Dial, and wait for the first page.
  bool Connect() const;

  varkel::sim::SimulatedSensor sensor;
  varkel::sim::SimulatedSmallSensor lines;  ///< that of model "Zelto"
  QTemporaryDir folder;
  VarkelManager* manager;  ///< the window's
  std::unique_ptr<MainWindow> window;
  QQuickItem* root = nullptr;  ///< the window's

 private:
  QQuickWindow* view_ = nullptr;
  const bool on_lines_;
};

/// How often QML has complained since the first desk. What it complains about is a fault, whichever test was
/// running.
int QmlWarnings();
