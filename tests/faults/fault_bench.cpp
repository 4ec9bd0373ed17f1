#include "tests/faults/fault_bench.h"

#include <QDir>
#include <QFile>
#include <QVariantMap>
#include <chrono>
#include <thread>
#include <utility>

namespace varkel::test {

FaultBench::FaultBench(const std::string& model_name)
    : model(model_name), manager(std::make_unique<VarkelManager>(true, "")) {
  if (model == "Zelto") {
    on_lines = std::make_unique<sim::SimulatedSmallSensor>();
  } else {
    sensor = std::make_unique<sim::SimulatedSensor>(sim::SensorOptions{
        .table_path = "./Config/varID/" + model + ".csv", .watcher = [this](const auto& exchange) {
          const std::lock_guard lock(mutex_);
          answered_.push_back({exchange.request.command, exchange.reply_size});
        }});
  }
  Listen();
  manager->set_ip_address(QStringLiteral("127.0.0.1"));
  manager->InitConfigFileParser(QString::fromStdString(model));
  manager->setModuleIndexUse(-1);  // the live refresh asks for nothing
  StartSensor();
}

FaultBench::~FaultBench() {
  manager.reset();
  StopSensor();
}

void FaultBench::Listen() {
  VarkelManager* const face = manager.get();
  const auto on = [face](auto signal, auto slot) { QObject::connect(face, signal, face, slot); };
  on(&VarkelManager::errorMessageChanged,
     [this] { told.push_back("error: " + manager->errorMessage().toStdString()); });
  on(&VarkelManager::successMessageChanged,
     [this] { told.push_back("success: " + manager->successMessage().toStdString()); });
  on(&VarkelManager::sendLogMessage, [this](const QString& text, const QString& type) {
    if (type != QLatin1String("INFO")) told.push_back((type + ' ' + text).toStdString());
  });
  on(&VarkelManager::connectionCheckFinished, [this](bool answer) {
    alive = answer;
    ++ended;
  });
  on(&VarkelManager::pageReadFinished, [this] { ++ended; });
  on(&VarkelManager::downloadFinished, [this] { ++ended; });
  on(&VarkelManager::downloadOperationLogFinished, [this] { ++ended; });
  on(&VarkelManager::isWorkingChanged, [this] { ended += manager->isWorking() ? 0 : 1; });
  on(&VarkelManager::isUpgradingChanged, [this] { ended += manager->IsUpgrading() ? 0 : 1; });
  on(&VarkelManager::myTimerMapChanged, [this] { ++rounds; });
  on(&VarkelManager::isGetPBLVersionChanged, [this] { pbl_queries += manager->isGetPBLVersion() ? 0 : 1; });
}

bool FaultBench::Wait(const std::function<bool()>& condition, int seconds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  for (;;) {
    loop_.processEvents();
    if (condition()) return true;
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

bool FaultBench::Connect() {
  for (int attempt = 0; attempt < 3 && !manager->IsConnected(); ++attempt) {
    told.clear();
    manager->ConnectLidar();
    Wait([this] { return manager->IsConnected() || !told.empty(); });
    Wait([this] { return !manager->GetIsConnectingLidar(); });
  }
  // What a small sensor is asked in the background at first is not to mix with an operation.
  const bool small = model != "Quenta";
  const auto informed = [this] { return HasSerialNumber() && (model == "Marvo-KTC" || pbl_queries > 0); };
  return manager->IsConnected() && (!small || Wait(informed));
}

bool FaultBench::AwaitPause() {
  if (!sensor || model == "Quenta") return true;
  constexpr std::uint8_t kLastOfARound = 0x08;
  sensor->ClearReceived();
  return Wait([this] { return !sensor->Received(kLastOfARound).empty(); });
}

bool FaultBench::HasSerialNumber() const {
  return manager->ZeltoLidarInfo().value(0).toMap()["value"] != QLatin1String("xxxxxxxx");
}

bool FaultBench::ReadsAPage() {
  if (model != "Quenta") return HasSerialNumber();  // fresh, or Connect had not ended well
  ended = 0;
  manager->ReadPageInBackground(0);
  return Wait([this] { return ended > 0; }) && manager->getLidarSN().toStdString() == sensor->ValueText("SN");
}

void FaultBench::Misbehave(const std::string& rule) {
  sensor ? sensor->Misbehave(rule) : on_lines->Misbehave(rule);
}

void FaultBench::Behave() {
  sensor ? sensor->Behave() : on_lines->Behave();
}

void FaultBench::StopSensor() {
  sensor ? sensor->Stop() : on_lines->Stop();
}

void FaultBench::StartSensor() {
  if (sensor) {
    sensor->Start();
    manager->set_port(QString::number(sensor->port()));
  } else {
    on_lines->Start();
    manager->set_serial_port_485(QString::fromStdString(on_lines->rs485_path()));
    manager->set_serial_port_232(QString::fromStdString(on_lines->uart_path()));
  }
}

void FaultBench::EachVariable(const Visit& visit) const {
  const QVariantList pages = manager->myMap();
  for (int page = 0; page < pages.size(); ++page) {
    const QVariantList groups = pages[page].toList();
    for (int group = 0; group < groups.size(); ++group) {
      const QVariantList vars = groups[group].toList();
      for (int index = 0; index < vars.size(); ++index) visit({page, group, index}, vars[index].toMap());
    }
  }
}

void FaultBench::Edit(const QString& var_name, const QString& text) {
  EachVariable([&](const Place& at, const QVariantMap& var) {
    if (var["var_name"] == var_name) manager->SetText(1, at.page, at.group, at.index, text);
  });
}

bool FaultBench::IsEdited(const QString& var_name) const {
  bool edited = false;
  EachVariable([&](auto&, auto& var) { edited |= var["var_name"] == var_name && var["edited"].toBool(); });
  return edited;
}

bool FaultBench::ShowsWhatTheSensorHas(int page) const {
  bool same = true;
  EachVariable([&](const Place& at, const QVariantMap& var) {
    if (at.page != page || manager->isTimerUpdate(at.page, at.group, at.index)) return;
    same &= var["current_val"].toString().toStdString() ==
            sensor->ValueText(var["var_name"].toString().toStdString());
  });
  return same;
}

void FaultBench::Forget() {
  ended = 0;
  rounds = 0;
  alive = false;
  told.clear();
  TakeAnswered();
}

bool FaultBench::IsBusy() const {
  return manager->IsUpgrading() || manager->IsDownloadLog() || manager->GetIsConnectingLidar() ||
         manager->isWorking() || manager->isReadingPage() || manager->isGetPBLVersion();
}

QUrl FaultBench::Package(const std::vector<std::uint8_t>& content) const {
  QFile file(folder.filePath(QStringLiteral("package")));
  if (file.open(QIODevice::WriteOnly)) {
    file.write(reinterpret_cast<const char*>(content.data()), static_cast<qint64>(content.size()));
  }
  return QUrl::fromLocalFile(file.fileName());
}

std::size_t FaultBench::files() const {
  return static_cast<std::size_t>(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size());
}

std::vector<FaultBench::Answered> FaultBench::TakeAnswered() {
  const std::lock_guard lock(mutex_);
  return std::exchange(answered_, {});
}

}  // namespace varkel::test
