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

/// The program's window, a simulated sensor and a user who finds controls by name.
class Desk {
 public:
  explicit Desk(std::vector<std::string> misbehaviours = {}, const QString& start_model = {});
  ~Desk();

  /// The control of that name in the window or in a notice above it; fails the test when there is none.
  QQuickItem* Find(const QString& name) const;
  bool Has(const QString& name) const;
  /// Name of a variable's row without its prefix, "page_group_index", found by its label.
  QString Place(int page, const QString& label) const;
  QString Text(const QString& name) const { return Find(name)->property("text").toString(); }
  /// A notice window, which is no item; its `visible`, `message`, `waiting`.
  QObject* Notice(const QString& name) const;
  bool NoticeShows(const QString& name, const QString& text) const;

  void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const;
  void Click(const QString& name) const;
  /// Puts the text in place of what the field holds, without ending the edit.
  void Type(const QString& name, const QString& text) const;
  /// Type and Enter.
  void Enter(const QString& name, const QString& text) const;
  void ShowPage(int page) const;
  /// Types address and port, by default the sensor's, and presses Enter.
  void Dial(std::uint16_t port = 0) const;
  /// Dial, and wait for the first page.
  bool Connect() const;

  QQuickView& view() const { return *window->view(); }

  varkel::sim::SimulatedSensor sensor;
  VarkelManager* manager;  ///< the window's
  std::unique_ptr<MainWindow> window;
};
