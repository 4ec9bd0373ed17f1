#include "tests/core/core_test.h"

#include <QCoreApplication>

Bench::Bench(std::vector<std::string> misbehaviours)
    : sensor(std::make_unique<varkel::sim::SimulatedSensor>(varkel::sim::SensorOptions{
          .table_path = "./Config/varID/Quenta.csv", .misbehaviours = std::move(misbehaviours)})),
      manager(std::make_unique<VarkelManager>(true, "./Config/varID/Quenta.csv")) {
  sensor->Start();
  manager->set_ip_address(QStringLiteral("127.0.0.1"));
  manager->set_port(QString::number(sensor->port()));
  VarkelManager* const face = manager.get();
  QObject::connect(face, &VarkelManager::errorMessageChanged, face,
                   [this] { errors.append(manager->errorMessage()); });
  QObject::connect(face, &VarkelManager::successMessageChanged, face,
                   [this] { successes.append(manager->successMessage()); });
  QObject::connect(face, &VarkelManager::sendLogMessage, face,
                   [this](const QString& text, const QString& type) { log.append(type + ' ' + text); });
  manager->InitConfigFileParser();
}

Bench::~Bench() {
  manager.reset();
  sensor->Stop();
}

bool Bench::Connect() {
  QSignalSpy changed(manager.get(), &VarkelManager::isConnectedChanged);
  manager->ConnectLidar();
  return changed.wait(5000) && manager->IsConnected();
}

bool Bench::ConnectOn(int page) {
  manager->setModuleIndexUse(page);
  return Connect();
}

QString Bench::NextError() {
  return QTest::qWaitFor([this] { return !errors.isEmpty(); }, 15000) ? errors.takeFirst() : QString();
}

QString Bench::NextSuccess() {
  return QTest::qWaitFor([this] { return !successes.isEmpty(); }, 15000) ? successes.takeFirst() : QString();
}

Bench::Place Bench::Find(const QString& var_name) const {
  const QVariantList pages = manager->myMap();
  for (int page = 0; page < pages.size(); ++page) {
    const QVariantList groups = pages[page].toList();
    for (int group = 0; group < groups.size(); ++group) {
      const QVariantList vars = groups[group].toList();
      for (int index = 0; index < vars.size(); ++index) {
        if (vars[index].toMap().value(QStringLiteral("var_name")) == var_name) return {page, group, index};
      }
    }
  }
  return {};
}

QList<QVariantMap> Bench::Variables(int page) const {
  QList<QVariantMap> variables;
  const QVariantList groups = manager->myMap()[page].toList();
  for (int group = 0; group < groups.size(); ++group) {
    const QVariantList maps = groups[group].toList();
    for (int index = 0; index < maps.size(); ++index) {
      if (!manager->isTimerUpdate(page, group, index)) variables.append(maps[index].toMap());
    }
  }
  return variables;
}

QString Bench::Shown(const QString& var_name) const {
  const Place place = Find(var_name);
  return manager->variableMap(place.page, place.group, place.index)
      .value(QStringLiteral("current_val"))
      .toString();
}

void Bench::Edit(const QString& var_name, const QString& text, int type) {
  const Place place = Find(var_name);
  manager->SetText(type, place.page, place.group, place.index, text);
}

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  int failed = 0;
  for (const auto& make : TestObjects()) failed += QTest::qExec(make().get(), argc, argv);
  return failed == 0 ? 0 : 1;
}
