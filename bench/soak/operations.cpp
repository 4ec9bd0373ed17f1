#include "bench/soak/operations.h"

#include "VarkelCore/src/small_sensor/background_functions.h"

std::vector<Operation> OperationsOf(const QString& model, const QString& folder) {
  const auto in_folder = [folder](const char* name) { return QUrl::fromLocalFile(folder + '/' + name); };
  const QUrl package = in_folder("package");
  const Operation console = {"console", [](auto& manager) { manager.SendCommandInBackground("07", ""); }};
  if (model == "Quenta") {
    const auto save = [](VarkelManager& manager) {
      manager.SetText(1, 4, 3, 0, "77");
      manager.RunInBackground(4);
    };
    return {console,
            {"page", [](auto& manager) { manager.ReadPageInBackground(2); }},
            {"refresh", [](auto& manager) { manager.setModuleIndexUse(1); }},
            {"save", save},
            {"restart", [](auto& manager) { manager.RestartInBackground(); }},
            {"reset", [](auto& manager) { manager.ResetInBackground(); }},
            {"operation-log", [=](auto& manager) { manager.DownloadOperationLog(in_folder("log.tar")); }},
            {"log", [=](auto& manager) { manager.DownloadLog(in_folder("logs"), "Fault Log"); }},
            {"upgrade", [=](auto& manager) { manager.UpgradeLidar(package, 6, 1, 0); }}};
  }
  const auto functions = [folder](VarkelManager& manager) {
    auto* const sensor = qobject_cast<varkel::BackgroundFunctions*>(manager.smallSensor());
    sensor->readSafety();
    sensor->setStandby(1);
    sensor->setSpinRate(1);
    sensor->setReturnMode(1);
    sensor->readBaudRate();
    sensor->setBaudRate("3000000");
    sensor->setImuRange(1, 1);
    sensor->readCorrection(folder + "/correction.bin");
    sensor->readDestination(false);
    sensor->setDestination("1.2.3.4", 5);
  };
  const auto box_upgrade = [package](VarkelManager& manager) {
    manager.ZeltoSetUpgradeMode(2);
    manager.ZeltoUpgradeLidar(package);
  };
  const bool is_marvo = model == "Marvo-KTC";
  const auto upgrade = [=](VarkelManager& manager) {
    is_marvo ? manager.MarvoUpgradeLidar(package) : manager.ZeltoUpgradeLidar(package);
  };
  if (model == "Zelto") return {console, {"functions", functions}, {"upgrade", upgrade}};
  return {console, {"functions", functions}, {"upgrade", upgrade}, {"box-upgrade", box_upgrade}};
}
