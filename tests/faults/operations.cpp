#include "tests/faults/operations.h"

#include <QFile>

#include "VarkelCore/src/small_sensor/background_functions.h"
#include "tests/core/marvo_sample.h"

namespace varkel::test {
namespace {

using Fixture = FaultFixture;
const std::vector<std::uint8_t> kFirmware(2500, 0x5A);  // three pieces
const char kTunnelled[] = "0x0002244C";                 // the beginning of every serial command inside KTC

void Save(Fixture& fixture, int page, const char* var_name, const char* text) {
  fixture.Edit(var_name, text);
  fixture.manager->RunInBackground(page);
}

BackgroundFunctions& Functions(const Fixture& fixture) {
  return *qobject_cast<BackgroundFunctions*>(fixture.manager->smallSensor());
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
  const auto connect = [](Fixture& fixture) { fixture.manager->ConnectLidar(); };
  return {
      {.name = "connect",
       .model = "Quenta",
       .start = connect,
       .points = {{"*", ""}, {"0x07", ""}},
       .connects = true},
      {.name = "page",
       .model = "Quenta",
       .start = [](Fixture& fixture) { fixture.manager->ReadPageInBackground(2); },
       .points = {{"*", ""}},
       .errors = 0},
      {.name = "save",
       .model = "Quenta",
       .start = [](Fixture& fixture) { Save(fixture, 4, "Sync Angle", "77"); },
       .points = {{"*", "#1"}, {"0x45", ""}},
       .errors = 2},
      {.name = "save address",
       .model = "Quenta",
       .start = [](Fixture& fixture) { Save(fixture, 2, "Destination Port", "3000"); },
       .points = {{"0x21", ""}},
       .errors = 2},
      {.name = "console",
       .model = "Quenta",
       .start = [](Fixture& fixture) { fixture.manager->SendCommandInBackground("0x07", ""); },
       .points = {{"*", ""}},
       .is_single = true},
      {.name = "restart",
       .model = "Quenta",
       .start = [](Fixture& fixture) { fixture.manager->RestartInBackground(); },
       .points = {{"*", ""}},
       .is_single = true,
       .restarts = true},
      {.name = "reset",
       .model = "Quenta",
       .start = [](Fixture& fixture) { fixture.manager->ResetInBackground(); },
       .points = {{"*", ""}},
       .is_single = true},
      {.name = "download",
       .model = "Quenta",
       .start =
           [](Fixture& fixture) {
             fixture.manager->DownloadLog(fixture.File(""), QStringLiteral("Fault Log"));
           },
       .points = {{"*", ""}},
       .is_single = true},
      {.name = "upgrade",
       .model = "Quenta",
       .start =
           [](Fixture& fixture) {
             fixture.manager->UpgradeLidar(fixture.File("package", kFirmware), 6, 1, 0);
           },
       .points = {{"*", "#1"}, {"*", "#3"}},
       .is_single = true},
      {.name = "connect", .model = "Marvo-KTC", .start = connect, .connects = true},
      {.name = "console",
       .model = "Zelto-KTC",
       .start = [](Fixture& fixture) { fixture.manager->SendCommandInBackground("02", "08"); },
       .points = {{"ldcmd-get:8", ""}}},
      {.name = "safety",
       .model = "Marvo-KTC",
       .start = [](Fixture& fixture) { Functions(fixture).readSafety(); },
       .points = {{"ldcmd-get:8", ""}, {kTunnelled, ""}},
       .is_single = true},
      {.name = "standby",
       .model = "Zelto-KTC",
       .start = [](Fixture& fixture) { Functions(fixture).setStandby(1); },
       .points = {{"ldcmd-set:11", ""}},
       .is_single = true},
      {.name = "upgrade",
       .model = "Zelto-KTC",
       .start = UpgradeSmallSensor,
       .points = {{"ota:1", ""}, {"ota:2", "#2"}, {kTunnelled, ""}}},
      {.name = "box upgrade",
       .model = "Marvo-KTC",
       .start =
           [](Fixture& fixture) {
             fixture.manager->ZeltoSetUpgradeMode(2);
             UpgradeSmallSensor(fixture);
           },
       .points = {{"0x83", "#1"}, {"0x83", "#3"}},
       .is_single = true,
       .restarts = true},
      {.name = "marvo upgrade",
       .model = "Marvo-KTC",
       .start =
           [](Fixture& fixture) {
             fixture.manager->MarvoUpgradeLidar(fixture.File("package", FullMarvoPackage()));
           },
       .points = {{"ldcmd-set:12", ""}, {"ota:18", "#2"}, {"ota:19", ""}}},
      {.name = "upgrade",
       .model = "Zelto",
       .start = UpgradeSmallSensor,
       .points = {{"ota:1", ""}, {"ota:2", "#2"}, {"ota:3", ""}}},
  };
}

}  // namespace varkel::test
