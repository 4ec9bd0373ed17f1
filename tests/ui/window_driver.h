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

/// How long a test waits for an expected event: long enough for a busy machine.
constexpr int kPatienceMs = 30000;

// Qt's macros with that time-out. They evaluate the condition repeatedly, so it must have no side effects.
#define EVENTUALLY_VERIFY(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, kPatienceMs)
#define EVENTUALLY_VERIFY2(condition, text) QTRY_VERIFY2_WITH_TIMEOUT(condition, text, kPatienceMs)
#define EVENTUALLY_COMPARE(actual, expected) QTRY_COMPARE_WITH_TIMEOUT(actual, expected, kPatienceMs)

/// Drives the program's window as a user would, finding controls by name, with a simulated sensor to connect
/// to.
class WindowDriver {
 public:
  /// With a start model, the sensor is of that model.
  explicit WindowDriver(const QString& start_model = {});
  ~WindowDriver();
  WindowDriver(const WindowDriver&) = delete;
  WindowDriver& operator=(const WindowDriver&) = delete;

  /// The visible control with that name in the view or in a notice above it; fails the test if there is none.
  QQuickItem* Find(const QString& name) const;
  bool Has(const QString& name) const;
  QVariant Property(const QString& name, const char* property) const {
    return Find(name)->property(property);
  }
  QString Text(const QString& name) const { return Property(name, "text").toString(); }
  /// The name of a variable's row without its prefix, "page_group_index", found by the row's label.
  QString Place(int page, const QString& label) const;
  /// The window that receives the input.
  QQuickWindow& view() const { return *view_; }

  void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const;
  /// Clicks a control as soon as it is enabled.
  void Click(const QString& name) const;
  /// Scrolls a control into view and clicks it.
  void Press(const QString& name) const;
  /// Selects the combo box's entry by arrow keys.
  void Choose(const QString& name, int index) const;
  /// Replaces the field's text, without finishing the edit.
  void Type(const QString& name, const QString& text) const;
  /// Type and Enter.
  void Enter(const QString& name, const QString& text) const;
  /// Creates a firmware package with that content in `folder` and drops it on the window.
  void Drop(const QString& file_name, const QByteArray& content = {}) const;
  void ShowPage(int page) const;
  /// Opens the log window, which receives the input from then on.
  void OpenLog();

  /// A notice window, which is not an item, with `visible`, `opened` and `message`. May be null before its
  /// first notice.
  QObject* Notice(const QString& name) const { return root->findChild<QObject*>(name); }
  bool IsOpen(const QString& name) const;
  bool NoticeShows(const QString& name, const QString& text) const;
  /// NoticeShows, and closes the notice with the key; false if a notice with that name is still open.
  bool Dismiss(const QString& name, const QString& text, Qt::Key key = Qt::Key_Return) const;

  /// Types the sensor's address, or another port of this machine, and presses Enter.
  void Dial(std::uint16_t port = 0) const;
  /// Dial, and waits for the first page.
  bool Connect() const;

  varkel::sim::SimulatedSensor sensor;
  varkel::sim::SimulatedSmallSensor lines;  ///< the sensor of model "Zelto"
  QTemporaryDir folder;
  VarkelManager* manager;  ///< the window's
  std::unique_ptr<MainWindow> window;
  QQuickItem* root = nullptr;  ///< the window's

 private:
  QQuickWindow* view_ = nullptr;
  const bool on_lines_;
};

/// The number of QML warnings since the first driver was created. Each of them is a fault, whichever test was
/// running.
int QmlWarnings();
