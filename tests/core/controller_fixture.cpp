#include "tests/core/controller_fixture.h"

#include <QEventLoop>
#include <chrono>
#include <thread>

ControllerFixture::ControllerFixture(std::vector<std::string> faults, const std::string& model)
    : manager(std::make_unique<VarkelManager>(true, "")) {
  if (model == "Zelto") {
    on_lines = std::make_unique<varkel::sim::SimulatedSmallSensor>(
        varkel::sim::SmallSensorOptions{.faults = std::move(faults)});
  } else {
    sensor = std::make_unique<varkel::sim::SimulatedSensor>(varkel::sim::SensorOptions{
        .table_path = "./Config/varID/" + model + ".csv", .faults = std::move(faults)});
  }
  StartSensor();
  manager->set_ip_address(QStringLiteral("127.0.0.1"));
  VarkelManager* const face = manager.get();
  const auto on = [face](auto signal, auto slot) { QObject::connect(face, signal, face, slot); };
  on(&VarkelManager::errorMessageChanged, [this] { errors.append(manager->errorMessage()); });
  on(&VarkelManager::successMessageChanged, [this] { successes.append(manager->successMessage()); });
  on(&VarkelManager::sendLogMessage,
     [this](const QString& text, const QString& type) { log.append(type + ' ' + text); });
  on(&VarkelManager::isConnectedChanged, [this] { reported_connected_ = manager->IsConnected(); });
  manager->InitConfigFileParser(QString::fromStdString(model));
}

void ControllerFixture::CloseAll() {
  manager.reset();
  StopSensor();
}

bool ControllerFixture::Wait(const std::function<bool()>& condition, int seconds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  QEventLoop loop;
  for (;;) {
    loop.processEvents();
    if (condition()) return true;
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

bool ControllerFixture::Connect() {
  const QString missed = QStringLiteral("ERROR Connection Error: TCP connection failed.");
  for (int attempt = 0; attempt < 3; ++attempt) {
    reported_connected_ = false;
    const int before = log.filter("ERROR Connection Error").size();
    manager->ConnectLidar();
    Wait([&] { return reported_connected_ || log.filter("ERROR Connection Error").size() > before; });
    if (reported_connected_ || log.removeAll(missed) == 0) break;
    errors.removeLast();  // the notice with the same text
  }
  return Wait([this] { return !manager->GetIsConnectingLidar(); }) && reported_connected_;
}

bool ControllerFixture::ConnectOn(int page) {
  manager->setModuleIndexUse(page);
  return Connect();
}

void ControllerFixture::StartSensor() {
  if (sensor) {
    sensor->Start();
    manager->set_port(QString::number(sensor->port()));
  } else {
    on_lines->Start();
    manager->set_serial_port_485(QString::fromStdString(on_lines->rs485_path()));
    manager->set_serial_port_232(QString::fromStdString(on_lines->uart_path()));
  }
}

void ControllerFixture::StopSensor() {
  sensor ? sensor->Stop() : on_lines->Stop();
}

void ControllerFixture::AddFault(const std::string& rule) {
  sensor ? sensor->AddFault(rule) : on_lines->AddFault(rule);
}

void ControllerFixture::ClearFaults() {
  sensor ? sensor->ClearFaults() : on_lines->ClearFaults();
}

void ControllerFixture::EachVariable(
    const std::function<void(const Place&, const QVariantMap&)>& visit) const {
  const QVariantList pages = manager->myMap();
  for (int page = 0; page < pages.size(); ++page) {
    const QVariantList groups = pages[page].toList();
    for (int group = 0; group < groups.size(); ++group) {
      const QVariantList vars = groups[group].toList();
      for (int index = 0; index < vars.size(); ++index) visit({page, group, index}, vars[index].toMap());
    }
  }
}

ControllerFixture::Place ControllerFixture::Find(const QString& var_name) const {
  Place place;
  EachVariable([&](const Place& at, const QVariantMap& var) {
    if (var["var_name"] == var_name) place = at;
  });
  return place;
}

QList<QVariantMap> ControllerFixture::Variables(int page) const {
  QList<QVariantMap> variables;
  EachVariable([&](const Place& at, const QVariantMap& var) {
    const bool is_live = manager->isTimerUpdate(at.page, at.group, at.index);
    if (at.page == page && !is_live) variables.append(var);
  });
  return variables;
}

QVariantMap ControllerFixture::Map(const QString& var_name) const {
  const Place place = Find(var_name);
  return manager->variableMap(place.page, place.group, place.index);
}

QString ControllerFixture::Shown(const QString& var_name) const {
  return Map(var_name)["current_val"].toString();
}

bool ControllerFixture::IsEdited(const QString& var_name) const {
  return Map(var_name)["edited"].toBool();
}

void ControllerFixture::Edit(const QString& var_name, const QString& text, int type) {
  const Place place = Find(var_name);
  manager->SetText(type, place.page, place.group, place.index, text);
}
