#pragma once

#include <QSignalSpy>
#include <QStringList>
#include <memory>
#include <vector>

#include "VarkelCore/src/varkel_manager.h"
#include "simulator/src/simulated_sensor.h"
#include "tests/support/qt_test.h"

/// A controller with model "Quenta" selected, the sensor that it is to connect to, and what it told the user.
struct Bench {
  explicit Bench(std::vector<std::string> misbehaviours = {});
  ~Bench();

  bool Connect();  ///< true when the connection stands
  /// The same with that page shown; no page: nothing but the test's own requests is on the wire.
  bool ConnectOn(int page = -1);
  /// Waits for the next error notice and takes it.
  QString NextError();
  QString NextSuccess();
  /// Place of a variable of the pages: {page, group, index}.
  struct Place {
    int page = -1;
    int group = -1;
    int index = -1;
  };
  Place Find(const QString& var_name) const;
  /// Maps of the page's variables, but for those that the sensor itself keeps changing.
  QList<QVariantMap> Variables(int page) const;
  QString Shown(const QString& var_name) const;
  void Edit(const QString& var_name, const QString& text, int type = 1);

  std::unique_ptr<varkel::sim::SimulatedSensor> sensor;
  std::unique_ptr<VarkelManager> manager;
  QStringList errors;
  QStringList successes;
  QStringList log;  ///< "TYPE text"
};
