#include "VarkelCore/src/controller_parts.h"

#include <exception>
#include <iostream>
#include <utility>

#include "VarkelCore/src/actions/sensor_restart.h"

using varkel::ConfigParser;
using varkel::VarInfo;

namespace {

QString Text(const std::string& text) {
  return QString::fromStdString(text);
}

}  // namespace

VarkelManager::Private::Private(VarkelManager* face_in, bool flag, std::string config_path)
    : face(face_in),
      creation_flag(flag),
      config_file_path(std::move(config_path)),
      settings(settings_file.Load(&settings_fault)),
      connection(*this, {[this] { refresher.Start(); },
                         [this] {
                           Emit(&VarkelManager::myMapChanged);
                           Emit(&VarkelManager::isConnectedChanged);
                         }}),
      serial(*this, {[this] { info.Start(); }, [this] { info.ReadMarvoVersions(); },
                     [this] { Emit(&VarkelManager::isConnectedChanged); }}),
      reader({*this, [this] { Emit(&VarkelManager::fovConfigChanged); }}),
      refresher([this](const std::stop_token& stop) { RefreshRound(stop); }),
      page_reads(
          workers,
          [this](int module, const std::function<bool()>& replaced) {
            if (ReadPage(module, replaced)) Emit(&VarkelManager::myMapChanged);
          },
          [this](int module) {
            events.Post([this, module] {
              emit face->isReadingPageChanged();
              emit face->pageReadFinished(module);
            });
          }) {}

void VarkelManager::Private::Log(const std::string& text, const std::string& type) {
  events.Post([this, text = Text(text), type = Text(type)] { emit face->sendLogMessage(text, type); });
}

void VarkelManager::Private::Bytes(const std::string& line) {
  events.PostLater([this, text = Text(line)] { emit face->sendLogMessage(text, QStringLiteral("BYTES")); });
}

void VarkelManager::Private::Error(const std::string& text) {
  events.Post([this, text = Text(text)] { face->setErrorMsg(text); });
}

void VarkelManager::Private::Success(const std::string& text) {
  events.Post([this, text = Text(text)] { face->setSuccessMsg(text); });
}

void VarkelManager::Private::Emit(void (VarkelManager::*notify)()) {
  events.Post([target = face, notify] { std::invoke(notify, *target); });
}

bool VarkelManager::Private::ReadPage(int module, const std::function<bool()>& replaced) {
  const auto client = connection.usable_client();
  const auto model = selection.model();
  if (connect_type != varkel::kNetwork || !client || IsBusy() || !model) return false;
  if (module < 0 || static_cast<std::size_t>(module) >= model->catalogue->module_vars().size()) return false;
  const auto groups = varkel::GroupByGetCommand(varkel::ReadableVars(*model->catalogue, module));
  // Who waits for another page need not wait for each time-out of a silent sensor.
  const auto go_on = [&](bool answered) { return connection.is_connected() && (answered || !replaced()); };
  reader.ReadGroups(*model, *client, groups, "VarkelManager::GetLidarModuleInfo", go_on);
  return true;
}

void VarkelManager::Private::RefreshRound(const std::stop_token& stop) {
  const auto client = connection.client();
  const auto model = selection.model();
  if (!client || !model || IsBusy()) return;
  std::vector<VarInfo*> live;
  for (VarInfo* var : varkel::ReadableVars(*model->catalogue, module_index_use)) {
    if (var->timer_update) live.push_back(var);
  }
  const auto groups = varkel::GroupByGetCommand(live);
  const std::size_t read = reader.ReadGroups(*model, *client, groups, "VarkelManager::updatePagesTimer",
                                             [&stop](bool) { return !stop.stop_requested(); });
  if (read > 0) Emit(&VarkelManager::myTimerMapChanged);
}

VarInfo* VarkelManager::Private::searchVarPtr(const ConfigParser& catalogue, const QString& key,
                                              const QString& search_type) const {
  if (search_type == QLatin1String("var_id") || search_type == QLatin1String("id")) {
    return catalogue.FindById(key.toStdString());
  }
  if (search_type == QLatin1String("var_name") || search_type == QLatin1String("name")) {
    return catalogue.FindByName(key.toStdString());
  }
  std::cout << "VarkelManager::searchVarPtr"
            << "(): unknown search type" << std::endl;
  return nullptr;
}

QString VarkelManager::Private::PageValue(const std::string& var_name) const {
  const auto catalogue = selection.catalogue();
  if (!catalogue) return {};
  for (const auto& module : catalogue->module_vars()) {
    for (const auto& group : module) {
      for (const VarInfo* var : group) {
        if (var->var_name == var_name) return Text(catalogue->CurrentValue(*var));
      }
    }
  }
  return {};
}

/// Ends whatever connection stands: a host may have selected another kind of model meanwhile.
void VarkelManager::Private::EndConnections() {
  connection.Interrupt();  // whoever waits for the sensor returns, so that the joins are short
  serial.Interrupt();
  refresher.Stop();
  info.Stop();
  if (const auto model = selection.model()) {
    if (connect_type != varkel::kSerialLines) model->values.SerialNumberUnknown();
    connect_type == varkel::kNetwork ? model->values.Disconnected() : model->values.SensorChanged();
  }
  info.Reset();
  connection.Drop();
  serial.Drop();
}

bool VarkelManager::Private::CanUpgradeSmallSensor() const {
  return connect_type != varkel::kNetwork && link.is_connected() && !upgrade.is_upgrading() &&
         link.Exchange();
}

bool VarkelManager::Private::StartUpgrade(const std::shared_ptr<QFile>& package, const SendPackage& send) {
  const qint64 size = package->size();
  if (!upgrade.Begin(static_cast<std::size_t>(size))) return false;
  workers.Start([this, package, size, send](const std::stop_token& stop) {
    const QByteArray content = package->readAll();
    if (content.size() != size) {  // half a package must not reach the sensor
      upgrade.Run().end();
      const std::string text = "The upgrade package can't be read whole, so nothing was sent.";
      Error(text);
      Log(text, "INFO");
      return;
    }
    send(stop, {content.begin(), content.end()});
  });
  return true;
}

void VarkelManager::Private::UpgradeSmallSensor(const std::stop_token& stop,
                                                const std::vector<std::uint8_t>& package) {
  static constexpr int kJunctionBox = 2;
  static constexpr char kJunctionBoxCommand[] = "0x83";
  const auto over_ktc = link.KtcExchange();
  if (over_ktc && upgrade_mode == kJunctionBox) {
    if (const auto client = serial.ktc_client()) {
      upgrade.SendOverNetwork(stop, *client, package, kJunctionBoxCommand);
    } else {
      upgrade.Run().end();
    }
    return;
  }
  const auto exchange = over_ktc ? over_ktc : link.LineExchange();
  if (!exchange) {
    upgrade.Run().end();
    return;
  }
  varkel::SendOverSerial(stop, *exchange, package, upgrade_mode, *this, upgrade.Run());
}

std::optional<varkel::CommandConsole::Road> VarkelManager::Private::ConsoleRoad() {
  if (connect_type == varkel::kNetwork) {
    auto client = IdleClient();
    return client ? std::optional(varkel::CommandConsole::OverKtc(std::move(client))) : std::nullopt;
  }
  // By what stands: a function that was refused over the lines has made the controller a KTC one.
  auto exchange = link.Exchange();
  const bool over_ktc = exchange && exchange != link.LineExchange();
  if (!link.is_connected() || upgrade.is_upgrading() || !exchange) {
    Error("lidar is not connected, or lidar is upgrade");
    return std::nullopt;
  }
  return varkel::CommandConsole::OverSerial(std::move(exchange), over_ktc);
}

std::shared_ptr<quarn::lidar::KtcClient> VarkelManager::Private::IdleClient() const {
  return IsBusy() ? nullptr : connection.usable_client();
}

std::shared_ptr<quarn::lidar::KtcClient> VarkelManager::Private::ClientToRestart() const {
  if (IsBusy() || !serial.is_connected()) return IdleClient();
  auto client = serial.ktc_client();
  return client && client->IsOpen() ? client : nullptr;
}

std::shared_ptr<quarn::lidar::KtcClient> VarkelManager::Private::ClientForWriting() {
  auto client = connection.usable_client();
  if (!client) {
    Error("Please connect to lidar first");
  } else if (upgrade.is_upgrading()) {
    Error("Please wait for the lidar to upgrade completely");
  } else if (downloading_log) {
    Error("Please wait for the operation log to download completely");
  } else {
    return client;
  }
  return nullptr;
}

bool VarkelManager::Private::CanWrite(int module) const {
  const auto catalogue = selection.catalogue();
  return catalogue && module >= 0 && static_cast<std::size_t>(module) < catalogue->module_vars().size();
}

void VarkelManager::Private::ShowChanges() {
  const auto model = selection.model();
  if (!model) return;
  const auto changes = model->values.TakeChanges();
  for (const auto& [module, rows] : page_models) rows->ShowChanges(changes);
}

void VarkelManager::Private::Refuse(const VarInfo& var, const std::string& verdict) {
  events.Post([this, model = selection.model(), &var, verdict = Text(verdict)] {
    emit face->someVarOutOfRange(Text(var.var_name));
    if (model != selection.model()) return;
    for (const auto& [module, rows] : page_models) rows->SetVerdict(var, verdict);
  });
}

varkel::PageModel* VarkelManager::Private::PageModelOf(int module) {
  if (!CanWrite(module)) return nullptr;
  varkel::PageModel*& rows = page_models[module];
  // A parent keeps QML from deleting it.
  if (rows == nullptr) rows = new varkel::PageModel(selection.model(), module, face);
  return rows;
}

void VarkelManager::Private::DropPageModels() {
  for (const auto& [module, rows] : page_models) rows->deleteLater();
  page_models.clear();
}

void VarkelManager::Private::Write(quarn::lidar::KtcClient& client, int module) {
  writer.Run(*selection.model(), client, module);
  Emit(&VarkelManager::editsChanged);
  Emit(&VarkelManager::myMapChanged);
}

void VarkelManager::Private::Send(const std::string& command, const std::string& payload) {
  static constexpr std::uint8_t kRestartCommand = 0x10;
  static constexpr std::uint8_t kResetCommand = 0x25;
  const auto road = ConsoleRoad();
  if (!road) return;
  std::uint8_t code = 0;
  const auto outcome = console.Send(*road, command, payload, code);
  if (outcome == varkel::CommandConsole::Outcome::kRefused) return;
  Emit(&VarkelManager::sendCommandHistoryChanged);
  if (outcome != varkel::CommandConsole::Outcome::kSent) return;
  if (code == kRestartCommand || code == kResetCommand) {
    events.Post([this] { face->Stop(); });
    Success(code == kRestartCommand ? "Lidar restart." : "Lidar reset.");
  }
}

void VarkelManager::Private::FetchOperationLog(quarn::lidar::KtcClient& client, const ConfigParser& catalogue,
                                               const QString& archive) {
  const bool whole = logs.DownloadOperationLog(catalogue, client, archive);
  events.Post([this, whole] { emit face->downloadOperationLogFinished(whole); });
}

int VarkelManager::Private::RestartNow() {
  const auto client = ClientToRestart();
  const auto catalogue = selection.catalogue();
  if (!client || !catalogue) return -1;
  const varkel::ByteLog::Quiet quiet(connection.byte_log());
  const varkel::ByteLog::Quiet quiet_behind_ktc(serial.byte_log());
  const int code = varkel::RestartSensor(*catalogue, *client, *this);
  if (code == 0) events.Post([this] { face->Stop(); });
  return code;
}

int VarkelManager::Private::ResetNow() {
  const auto client = ClientToRestart();
  const auto catalogue = selection.catalogue();
  if (!client || !catalogue) return -1;
  const varkel::ByteLog::Quiet quiet(connection.byte_log());
  const varkel::ByteLog::Quiet quiet_behind_ktc(serial.byte_log());
  return varkel::ResetSensor(*catalogue, *client, *this);
}

void VarkelManager::Private::SetDownloading(bool running) {
  if (downloading_log.exchange(running) != running) Emit(&VarkelManager::isDownloadLogChanged);
}

int VarkelManager::Private::Download(
    std::function<void(quarn::lidar::KtcClient&, const ConfigParser&)> work) {
  auto client = IdleClient();
  auto catalogue = selection.catalogue();
  if (!client || !catalogue) return -1;
  SetDownloading(true);  // at once, so that a second click is refused
  workers.Start([client = std::move(client), catalogue = std::move(catalogue),
                 work = std::move(work)](const std::stop_token&) { work(*client, *catalogue); });
  return 0;
}

void VarkelManager::Private::InBackground(std::function<void()> work, std::function<void()> finished) {
  ++works_running;
  emit face->isWorkingChanged();
  workers.Start([this, work = std::move(work), finished = std::move(finished)](const std::stop_token&) {
    work();
    events.Post([this, finished] {
      --works_running;
      emit face->isWorkingChanged();
      finished();
    });
  });
}

/// An exception must not pass through Qt: its words become a notice and a log line.
void VarkelManager::Private::ReportConversion(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const std::exception& error) {
    Error(error.what());
    Log(error.what(), "ERROR");
  }
}
