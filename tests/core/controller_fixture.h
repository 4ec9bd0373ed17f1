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

/// A controller with a model selected, the simulated sensor that it connects to, and what it reported to the
/// user. Lives on one thread, whose events it runs; any number of them can exist at the same time.
struct ControllerFixture {
  explicit ControllerFixture(std::vector<std::string> faults = {}, const std::string& model = "Quenta");
  ~ControllerFixture() { CloseAll(); }
  ControllerFixture(const ControllerFixture&) = delete;
  ControllerFixture& operator=(const ControllerFixture&) = delete;

  /// Runs events until the condition holds; false on time-out.
  static bool Wait(const std::function<bool()>& condition, int seconds = 60);

  /// True once the connection is established. Retries if the sensor did not accept within 200 ms, which can
  /// happen on a busy machine.
  bool Connect();
  /// The same with that page shown; without a page only the test's own requests are on the wire.
  bool ConnectOn(int page = -1);
  /// Waits for the next error notice, removes and returns it.
  QString NextError() { return Next(errors); }
  QString NextSuccess() { return Next(successes); }

  void StartSensor();  ///< also gives the controller its port
  void StopSensor();
  void AddFault(const std::string& rule);
  void ClearFaults();

  /// Position of a variable on the pages: {page, group, index}.
  struct Place {
    int page = -1;
    int group = -1;
    int index = -1;
  };
  void EachVariable(const std::function<void(const Place&, const QVariantMap&)>& visit) const;
  Place Find(const QString& var_name) const;
  /// Maps of the page's variables, without those that the sensor itself keeps changing.
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
  /// A derived class calls this first in its destructor, because signals access its members.
  void CloseAll();

 private:
  static QString Next(QStringList& notices) {
    return Wait([&notices] { return !notices.isEmpty(); }) ? notices.takeFirst() : QString();
  }
  QVariantMap Map(const QString& var_name) const;

  bool reported_connected_ = false;
};
