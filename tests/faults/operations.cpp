#include "tests/faults/operations.h"

#include <QFile>

#include "VarkelCore/src/small_sensor/background_functions.h"
#include "tests/core/marvo_sample.h"

namespace varkel::test {
namespace {

using Fixture = FaultFixture;
using Start = std::function<void(Fixture&)>;

const std::vector<std::uint8_t> kFirmware(2500, 0x5A);  // three pieces
const char kTunnelled[] = "0x0002244C";                 // the beginning of every serial command inside KTC

Start Save(int page, const char* var_name, const char* text) {
  return [=](auto& fixture) {
    fixture.Edit(var_name, text);
    fixture.manager->RunInBackground(page);
  };
}

Start Console(const char* code, const char* payload) {
  return [=](auto& fixture) { fixture.manager->SendCommandInBackground(code, payload); };
}

/// A function of the small sensor.
template <typename Function, typename... Arguments>
Start Call(Function function, Arguments... arguments) {
  return [=](auto& fixture) {
    (qobject_cast<BackgroundFunctions*>(fixture.manager->smallSensor())->*function)(arguments...);
  };
}

void UpgradeSmallSensor(Fixture& fixture) {
  fixture.manager->ZeltoUpgradeLidar(fixture.File("package", kFirmware));
}

}  // namespace

FaultFixture::FaultFixture(const std::string& model_name)
    : ControllerFixture({}, model_name), model(model_name) {
  VarkelManager* const face = manager.get();
  face->setModuleIndexUse(-1);  // turns the live refresh off
  const auto on = [face](auto signal, auto slot) { QObject::connect(face, signal, face, slot); };
  on(&VarkelManager::pageReadFinished, [this] { ++ended; });
  on(&VarkelManager::downloadFinished, [this] { ++ended; });
  on(&VarkelManager::isWorkingChanged, [this] { ended += manager->isWorking() ? 0 : 1; });
  on(&VarkelManager::isUpgradingChanged, [this] { ended += manager->IsUpgrading() ? 0 : 1; });
}

bool FaultFixture::Connect() {
  const auto has_serial_number = [this] {
    return manager->ZeltoLidarInfo().value(0).toMap()["value"] != QLatin1String("xxxxxxxx");
  };
  return ControllerFixture::Connect() && (model == "Quenta" || Wait(has_serial_number));
}

bool FaultFixture::ShowsTheSensor() {
  if (model != "Quenta") return true;  // Connect has seen its serial number
  ended = 0;
  manager->ReadPageInBackground(0);
  return Wait([this] { return ended > 0; }) && manager->getLidarSN().toStdString() == sensor->ValueText("SN");
}

bool FaultFixture::IsBusy() const {
  return manager->IsUpgrading() || manager->IsDownloadLog() || manager->GetIsConnectingLidar() ||
         manager->isWorking() || manager->isReadingPage() || manager->isGetPBLVersion();
}

void FaultFixture::Forget() {
  ended = 0;
  errors.clear();
  successes.clear();
  log.clear();
}

QUrl FaultFixture::File(const QString& name, const std::vector<std::uint8_t>& content) const {
  const QString path = folder.filePath(name);
  if (!content.empty()) {
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(reinterpret_cast<const char*>(content.data()), static_cast<qint64>(content.size()));
  }
  return QUrl::fromLocalFile(path);
}

std::vector<Operation> Operations() {
  const auto connect = [](auto& fixture) { fixture.manager->ConnectLidar(); };
  const auto download = [](auto& fixture) {
    fixture.manager->DownloadLog(fixture.File(""), QStringLiteral("Fault Log"));
  };
  const auto upgrade = [](auto& fixture) {
    fixture.manager->UpgradeLidar(fixture.File("package", kFirmware), 6, 1, 0);
  };
  const auto box_upgrade = [](auto& fixture) {
    fixture.manager->ZeltoSetUpgradeMode(2);
    UpgradeSmallSensor(fixture);
  };
  const auto marvo_upgrade = [](auto& fixture) {
    fixture.manager->MarvoUpgradeLidar(fixture.File("package", FullMarvoPackage()));
  };
  return {
      {"connect", "Quenta", connect, {{"*", ""}, {"0x07", ""}}, 1, false, true},
      {"page", "Quenta", [](auto& fixture) { fixture.manager->ReadPageInBackground(2); }, {{"*", ""}}, 0},
      {"save", "Quenta", Save(4, "Sync Angle", "77"), {{"*", "#1"}, {"0x45", ""}}, 2},
      {"save address", "Quenta", Save(2, "Destination Port", "3000"), {{"0x21", ""}}, 2},
      {"console", "Quenta", Console("0x07", ""), {{"*", ""}}, 1, true},
      {"restart",
       "Quenta",
       [](auto& fixture) { fixture.manager->RestartInBackground(); },
       {{"*", ""}},
       1,
       true,
       false,
       true},
      {"reset", "Quenta", [](auto& fixture) { fixture.manager->ResetInBackground(); }, {{"*", ""}}, 1, true},
      {"download", "Quenta", download, {{"*", ""}}, 1, true},
      {"upgrade", "Quenta", upgrade, {{"*", "#1"}, {"*", "#3"}}, 1, true},
      {"connect", "Marvo-KTC", connect, {{"*", "#1"}}, 1, false, true},
      {"console", "Zelto-KTC", Console("02", "08"), {{"ldcmd-get:8", ""}}},
      {"safety",
       "Marvo-KTC",
       Call(&BackgroundFunctions::readSafety),
       {{"ldcmd-get:8", ""}, {kTunnelled, ""}},
       1,
       true},
      {"standby", "Zelto-KTC", Call(&BackgroundFunctions::setStandby, 1), {{"ldcmd-set:11", ""}}, 1, true},
      {"upgrade", "Zelto-KTC", UpgradeSmallSensor, {{"ota:1", ""}, {"ota:2", "#2"}, {kTunnelled, ""}}},
      {"box upgrade", "Marvo-KTC", box_upgrade, {{"0x83", "#1"}, {"0x83", "#3"}}, 1, true, false, true},
      {"marvo upgrade", "Marvo-KTC", marvo_upgrade, {{"ldcmd-set:12", ""}, {"ota:18", "#2"}, {"ota:19", ""}}},
      {"upgrade", "Zelto", UpgradeSmallSensor, {{"ota:1", ""}, {"ota:2", "#2"}, {"ota:3", ""}}},
  };
}

}  // namespace varkel::test
