#pragma once

#include <QObject>
#include <QSignalSpy>
#include <QStringList>
#include <functional>
#include <memory>
#include <vector>

#include "VarkelCore/src/varkel_manager.h"
#include "simulator/src/simulated_sensor.h"

/// Every test object of the program; a test file registers its own.
std::vector<std::function<std::unique_ptr<QObject>()>>& TestObjects();

template <typename Test>
struct RegisterTest {
  RegisterTest() {
    TestObjects().push_back([] { return std::make_unique<Test>(); });
  }
};

/// A controller with model "Quenta" selected, the sensor that it is to connect to, and what it told the user.
struct Bench {
  explicit Bench(std::vector<std::string> misbehaviours = {});
  ~Bench();

  bool Connect();  ///< true when the connection stands
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
  QString Shown(const QString& var_name) const;
  void Edit(const QString& var_name, const QString& text, int type = 1);

  std::unique_ptr<varkel::sim::SimulatedSensor> sensor;
  std::unique_ptr<VarkelManager> manager;
  QStringList errors;
  QStringList successes;
  QStringList log;  ///< "TYPE text"
};
