#include "tests/faults/fault_bench.h"

#include <QDir>
#include <QFile>
#include <algorithm>
#include <utility>

namespace varkel::test {

FaultBench::FaultBench(const std::string& model_name)
    : Bench({}, model_name,
            [this](const sim::Exchange& exchange) {
              const std::lock_guard lock(mutex_);
              answered_.push_back(exchange.reply_size);
            }),
      model(model_name) {
  VarkelManager* const face = manager.get();
  face->setModuleIndexUse(-1);  // the live refresh asks for nothing
  const auto on = [face](auto signal, auto slot) { QObject::connect(face, signal, face, slot); };
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

bool FaultBench::Connect() {
  for (int attempt = 0; attempt < 3 && !manager->IsConnected(); ++attempt) {
    Forget();
    Bench::Connect();
  }
  // What a small sensor is asked in the background at first is not to mix with an operation.
  const auto informed = [this] { return HasSerialNumber() && (model == "Marvo-KTC" || pbl_queries > 0); };
  return manager->IsConnected() && (model == "Quenta" || Wait(informed));
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

bool FaultBench::ShowsWhatTheSensorHas(int page) const {
  const QList<QVariantMap> variables = Variables(page);
  return std::all_of(variables.begin(), variables.end(), [this](const QVariantMap& var) {
    const std::string name = var["var_name"].toString().toStdString();
    return var["current_val"].toString().toStdString() == sensor->ValueText(name);
  });
}

Lines FaultBench::Told() const {
  Lines told;
  for (const QString& text : errors) told.push_back("error: " + text.toStdString());
  for (const QString& text : successes) told.push_back("success: " + text.toStdString());
  for (const QString& line : log) {
    // All the controllers of this program share one settings file, which is another test's matter.
    const bool is_about_settings = line.contains(QLatin1String("The connection settings can't be saved"));
    if (!line.startsWith(QLatin1String("INFO")) && !is_about_settings) told.push_back(line.toStdString());
  }
  return told;
}

void FaultBench::Forget() {
  ended = 0;
  rounds = 0;
  alive = false;
  for (QStringList* const told : {&errors, &successes, &log}) told->clear();
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

std::vector<std::size_t> FaultBench::TakeAnswered() {
  const std::lock_guard lock(mutex_);
  return std::exchange(answered_, {});
}

}  // namespace varkel::test
