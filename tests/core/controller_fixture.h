#pragma once

#include <QStringList>
#include <QVariantMap>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VarkelCore/src/varkel_manager.h"
#include "simulator/src/simulated_sensor.h"
#include "simulator/src/simulated_small_sensor.h"

/// A controller with a model selected, the simulated sensor that it is to connect to, and what it told the
/// user. Lives on one thread, whose events it runs; any number of them stand side by side.
struct ControllerFixture {
  explicit ControllerFixture(std::vector<std::string> faults = {}, const std::string& model = "Quenta");
  ~ControllerFixture() { CloseAll(); }
  ControllerFixture(const ControllerFixture&) = delete;
  ControllerFixture& operator=(const ControllerFixture&) = delete;

  /// Runs events until the condition holds; false when the time ran out.
  static bool Wait(const std::function<bool()>& condition, int seconds = 20);

  /// True when the connection is established. Tries again when the sensor did not accept within its 200 ms,
  /// which a busy machine may miss.
  bool Connect();
  /// The same with that page shown; no page: nothing but the test's own requests is on the wire.
  bool ConnectOn(int page = -1);
  /// Waits for the next error notice and takes it.
  QString NextError() { return Next(errors); }
  QString NextSuccess() { return Next(successes); }

  void StartSensor();  ///< and gives the controller its port
  void StopSensor();
  void AddFault(const std::string& rule);
  void ClearFaults();

  /// Place of a variable of the pages: {page, group, index}.
  struct Place {
    int page = -1;
    int group = -1;
    int index = -1;
  };
  void EachVariable(const std::function<void(const Place&, const QVariantMap&)>& visit) const;
  Place Find(const QString& var_name) const;
  /// Maps of the page's variables, but for those that the sensor itself keeps changing.
  QList<QVariantMap> Variables(int page) const;
  QString Shown(const QString& var_name) const;
  bool IsEdited(const QString& var_name) const;
  void Edit(const QString& var_name, const QString& text, int type = 1);

  std::unique_ptr<varkel::sim::SimulatedSensor> sensor;  ///< null for a sensor on serial lines
  std::unique_ptr<varkel::sim::SimulatedSmallSensor> on_lines;
  std::unique_ptr<VarkelManager> manager;
  QStringList errors;
  QStringList successes;
  QStringList log;  ///< "TYPE text"

 protected:
  /// Who derives from it calls this first when it ends: signals reach into it.
  void CloseAll();

 private:
  static QString Next(QStringList& notices) {
    return Wait([&notices] { return !notices.isEmpty(); }) ? notices.takeFirst() : QString();
  }
  QVariantMap Map(const QString& var_name) const;

  bool reported_connected_ = false;
};
