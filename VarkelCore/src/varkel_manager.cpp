#include "VarkelCore/src/varkel_manager.h"

#include <QDebug>
#include <QFile>
#include <atomic>
#include <exception>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "VarkelCore/src/command_console.h"
#include "VarkelCore/src/connection_settings.h"
#include "VarkelCore/src/either_link.h"
#include "VarkelCore/src/event_queue.h"
#include "VarkelCore/src/firmware_upgrade.h"
#include "VarkelCore/src/fov_table.h"
#include "VarkelCore/src/lidar_connection.h"
#include "VarkelCore/src/log_download.h"
#include "VarkelCore/src/marvo_package.h"
#include "VarkelCore/src/marvo_upgrade.h"
#include "VarkelCore/src/model_selection.h"
#include "VarkelCore/src/named_command.h"
#include "VarkelCore/src/page_description.h"
#include "VarkelCore/src/page_read_queue.h"
#include "VarkelCore/src/page_reader.h"
#include "VarkelCore/src/page_refresher.h"
#include "VarkelCore/src/page_writer.h"
#include "VarkelCore/src/pending_edits.h"
#include "VarkelCore/src/range_check.h"
#include "VarkelCore/src/sensor_restart.h"
#include "VarkelCore/src/serial_connection.h"
#include "VarkelCore/src/small_sensor.h"
#include "VarkelCore/src/small_sensor_info.h"
#include "VarkelCore/src/table_check.h"
#include "VarkelCore/src/user_report.h"
#include "VarkelCore/src/value_editor.h"
#include "VarkelCore/src/worker_threads.h"
#include "libquarn/Platform/src/text_number.h"

using varkel::ConfigParser;
using varkel::VarInfo;

namespace {

constexpr std::uint8_t kConfigFileCommand = 116;
constexpr char kUnknownSerialNumber[] = "xxxxxxxx";

QString Text(const std::string& text) {
  return QString::fromStdString(text);
}

/// Two spellings under which tables may carry a name: words with a capital first letter, and lower case.
std::vector<std::string> CaseForms(const QString& name) {
  QString capitalised = name;
  for (int i = 0; i < capitalised.size(); ++i) {
    if (i == 0 || capitalised[i - 1].isSpace()) capitalised[i] = capitalised[i].toUpper();
  }
  return {capitalised.toStdString(), name.toLower().toStdString()};
}

QVariantList TextList(const std::vector<std::string>& texts) {
  QVariantList list;
  for (const std::string& text : texts) list.append(Text(text));
  return list;
}

QVariantList RowMaps(const std::vector<varkel::InfoRow>& rows) {
  QVariantList maps;
  for (const varkel::InfoRow& row : rows) {
    maps.append(
        QVariantMap{{QStringLiteral("label"), Text(row.label)}, {QStringLiteral("value"), Text(row.value)}});
  }
  return maps;
}

/// A whole file; nothing when it can't be opened.
std::optional<std::vector<std::uint8_t>> ReadPackage(const QUrl& file_url) {
  QFile file(file_url.toLocalFile());
  if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
  const QByteArray content = file.readAll();
  return std::vector<std::uint8_t>(content.begin(), content.end());
}

using BackgroundCall = std::function<QVariant(VarkelManager&, const QVariantList&)>;

/// The small sensors' functions that may run on a worker, by name.
const std::map<QString, BackgroundCall>& BackgroundCalls() {
  static const auto done = [](auto&& call) {
    call();
    return QVariant(true);
  };
  static const std::map<QString, BackgroundCall> calls = {
      {QStringLiteral("ZeltoSetStandby"),
       [](auto& m, auto& a) { return done([&] { m.ZeltoSetStandby(a.value(0).toInt()); }); }},
      {QStringLiteral("ZeltoSetSpinRate"),
       [](auto& m, auto& a) { return done([&] { m.ZeltoSetSpinRate(a.value(0).toInt()); }); }},
      {QStringLiteral("ZeltoSetReturnMode"),
       [](auto& m, auto& a) { return done([&] { m.ZeltoSetReturnMode(a.value(0).toInt()); }); }},
      {QStringLiteral("ZeltoSetBaudRateFromUI"),
       [](auto& m, auto& a) { return done([&] { m.ZeltoSetBaudRateFromUI(a.value(0).toString()); }); }},
      {QStringLiteral("MarvoSetIMURange"),
       [](auto& m, auto& a) {
         return done([&] { m.MarvoSetIMURange(a.value(0).toInt(), a.value(1).toInt()); });
       }},
      {QStringLiteral("ZeltoGetCorrection"),
       [](auto& m, auto& a) { return QVariant(m.ZeltoGetCorrection(a.value(0).toString())); }},
      {QStringLiteral("ZeltoGetLidarFunctionSafety"),
       [](auto& m, auto&) { return QVariant(m.ZeltoGetLidarFunctionSafety()); }},
      {QStringLiteral("ZeltoGetBaudRate"), [](auto& m, auto&) { return QVariant(m.ZeltoGetBaudRate()); }},
      {QStringLiteral("ZeltoGetDestinationConfig"),
       [](auto& m, auto& a) { return QVariant(m.ZeltoGetDestinationConfig(a.value(0).toBool())); }},
      {QStringLiteral("ZeltoSetDestinationIPandPort"), [](auto& m, auto& a) {
         return QVariant(m.ZeltoSetDestinationIPandPort(a.value(0).toString(), a.value(1).toInt()));
       }}};
  return calls;
}

}  // namespace

struct VarkelManager::Private : varkel::UserReport {
  Private(VarkelManager* face_in, bool flag, std::string config_path);

  // UserReport: from any thread.
  void Log(const std::string& text, const std::string& type) override;
  void Bytes(const std::string& line) override;
  void Error(const std::string& text) override;
  void Success(const std::string& text) override;

  /// Raises a signal on the user interface's thread.
  void Emit(void (VarkelManager::*notify)());
  /// Reads a page; false when a guard forbids it.
  bool ReadPage(int module);
  void RefreshRound(const std::stop_token& stop);
  bool IsBusy() const { return upgrade.is_upgrading() || downloading_log; }
  /// The client for an operation that must not meet an upgrade or a download; null when it is refused.
  std::shared_ptr<quarn::lidar::KtcClient> IdleClient() const;
  /// The client for saving; a refusal is reported.
  std::shared_ptr<quarn::lidar::KtcClient> ClientForWriting();
  bool CanWrite(int module) const;
  void Write(quarn::lidar::KtcClient& client, int module);
  void Send(const std::string& command, const std::string& payload);
  void ReportRangeFault(const ConfigParser& catalogue, const VarInfo& var, varkel::RangeFault fault);
  void FetchOperationLog(quarn::lidar::KtcClient& client, const ConfigParser& catalogue,
                         const QString& archive);
  int RestartNow();
  int ResetNow();
  void SetDownloading(bool running);
  int Download(std::function<void(quarn::lidar::KtcClient&, const ConfigParser&)> work);
  /// Runs `work` on a worker, with isWorking raised; `finished` follows on the user interface's thread.
  void InBackground(std::function<void()> work, std::function<void()> finished);
  void ReportConversion(const std::function<void()>& operation);
  VarInfo* searchVarPtr(const ConfigParser& catalogue, const QString& key, const QString& search_type) const;
  /// The value of the first variable on the pages with that name.
  QString PageValue(const std::string& var_name) const;
  void SetSerialNumberUnknown();
  void EndConnections();
  bool CanUpgradeSmallSensor() const;
  void UpgradeSmallSensor(const std::stop_token& stop, const std::vector<std::uint8_t>& package);
  std::optional<varkel::CommandConsole::Road> ConsoleRoad();

  VarkelManager* const face;

  // Constant after construction.
  const bool creation_flag;
  const std::string config_file_path;
  const varkel::SettingsFile settings_file;

  // The user interface's thread only.
  varkel::ConnectionSettings settings;
  QString error_message;
  QString success_message;
  std::string vm_now_name;

  // Shared with workers: atomics and classes that guard themselves.
  std::atomic<int> module_index_use = 0;
  std::atomic<int> connect_type = varkel::kNetwork;
  std::atomic<bool> downloading_log = false;
  varkel::ModelSelection selection;
  varkel::PendingEdits edits;
  varkel::FovTable fov;
  varkel::EventQueue events;
  varkel::LidarConnection connection;
  varkel::SerialConnection serial;
  varkel::EitherLink link{connection, serial};
  varkel::SmallSensor small{
      *this,
      link,
      {[this] { return upgrade.is_upgrading(); }, [this] { return connect_type.load(); },
       [this](int type) { connect_type = type; }}};
  varkel::MarvoUpgrade marvo{*this, link};
  std::atomic<int> upgrade_mode = 0;
  const varkel::PageReader reader;
  const varkel::ValueEditor editor{edits, *this};
  const varkel::PageWriter writer{{reader, edits, fov, *this}};
  varkel::CommandConsole console{*this};
  const varkel::LogDownload logs{*this, [this](bool running) { SetDownloading(running); }};
  varkel::FirmwareUpgrade upgrade{
      *this,
      {[this] { Emit(&VarkelManager::isUpgradingChanged); }, [this] { return RestartNow(); },
       [this] { events.Post([this] { face->Stop(); }); }}};
  int works_running = 0;  ///< the user interface's thread only

  // Threads, last: they use everything above.
  varkel::WorkerThreads workers;
  varkel::PageRefresher refresher;
  varkel::SmallSensorInfo info{
      *this,
      link,
      {[this] { return upgrade.is_upgrading(); }, [this] { Emit(&VarkelManager::zeltoLidarInfoChanged); },
       [this] { Emit(&VarkelManager::isGetPBLVersionChanged); }}};
  varkel::PageReadQueue page_reads;
  std::atomic<bool> checking = false;
};

VarkelManager::Private::Private(VarkelManager* face_in, bool flag, std::string config_path)
    : face(face_in),
      creation_flag(flag),
      config_file_path(std::move(config_path)),
      settings(settings_file.Load()),
      connection(*this, {[this] { refresher.Start(); },
                         [this] {
                           Emit(&VarkelManager::myMapChanged);
                           Emit(&VarkelManager::isConnectedChanged);
                         }}),
      serial(*this, {[this] { info.Start(); }, [this] { info.ReadMarvoVersions(); },
                     [this] { Emit(&VarkelManager::isConnectedChanged); }}),
      reader({*this, edits, fov, [this] { Emit(&VarkelManager::fovConfigChanged); }}),
      refresher([this](const std::stop_token& stop) { RefreshRound(stop); }),
      page_reads(
          workers,
          [this](int module) {
            if (ReadPage(module)) Emit(&VarkelManager::myMapChanged);
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

bool VarkelManager::Private::ReadPage(int module) {
  const auto client = connection.usable_client();
  const auto catalogue = selection.catalogue();
  if (connect_type != varkel::kNetwork || !client || IsBusy() || !catalogue) return false;
  if (module < 0 || static_cast<std::size_t>(module) >= catalogue->module_vars().size()) return false;
  const auto groups = varkel::GroupByGetCommand(varkel::ReadableVars(*catalogue, module));
  reader.ReadGroups(*catalogue, *client, groups, "VarkelManager::GetLidarModuleInfo",
                    [this] { return connection.is_connected(); });
  return true;
}

void VarkelManager::Private::RefreshRound(const std::stop_token& stop) {
  const auto client = connection.client();
  const auto catalogue = selection.catalogue();
  if (!client || !catalogue || IsBusy()) return;
  std::vector<VarInfo*> live;
  for (VarInfo* var : varkel::ReadableVars(*catalogue, module_index_use)) {
    if (var->timer_update) live.push_back(var);
  }
  const auto groups = varkel::GroupByGetCommand(live);
  const std::size_t read = reader.ReadGroups(*catalogue, *client, groups, "VarkelManager::updatePagesTimer",
                                             [&stop] { return !stop.stop_requested(); });
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

void VarkelManager::Private::SetSerialNumberUnknown() {
  const auto catalogue = selection.catalogue();
  if (!catalogue) return;
  for (const auto& [var_id, var] : catalogue->var_map()) {
    if (var->var_name == "SN") catalogue->SetCurrentValue(*var, kUnknownSerialNumber);
  }
}

/// Ends whatever connection stands: a host may have selected another kind of model meanwhile.
void VarkelManager::Private::EndConnections() {
  connection.Interrupt();  // whoever waits for the sensor returns, so that the joins are short
  serial.Interrupt();
  refresher.Stop();
  info.Stop();
  if (connect_type != varkel::kSerialLines) SetSerialNumberUnknown();
  info.Reset();
  connection.Drop();
  serial.Drop();
}

bool VarkelManager::Private::CanUpgradeSmallSensor() const {
  const bool over_lines = connect_type == varkel::kSerialLines && link.LineExchange();
  const bool over_ktc = connect_type == varkel::kKtcToSmallSensor && link.KtcExchange();
  return link.is_connected() && !upgrade.is_upgrading() && (over_lines || over_ktc);
}

void VarkelManager::Private::UpgradeSmallSensor(const std::stop_token& stop,
                                                const std::vector<std::uint8_t>& package) {
  static constexpr int kJunctionBox = 2;
  static constexpr char kJunctionBoxCommand[] = "0x83";
  const bool over_ktc = connect_type == varkel::kKtcToSmallSensor;
  if (over_ktc && upgrade_mode == kJunctionBox) {
    if (const auto client = serial.ktc_client()) {
      upgrade.SendOverNetwork(stop, *client, package, kJunctionBoxCommand);
    } else {
      upgrade.Run().end();
    }
    return;
  }
  const auto exchange = over_ktc ? link.KtcExchange() : link.LineExchange();
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
  const bool over_ktc = connect_type == varkel::kKtcToSmallSensor;
  auto exchange = over_ktc ? link.KtcExchange() : link.LineExchange();
  if (!link.is_connected() || upgrade.is_upgrading() || !exchange) {
    Error("lidar is not connected, or lidar is upgrade");
    return std::nullopt;
  }
  return varkel::CommandConsole::OverSerial(std::move(exchange), over_ktc);
}

std::shared_ptr<quarn::lidar::KtcClient> VarkelManager::Private::IdleClient() const {
  return IsBusy() ? nullptr : connection.usable_client();
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

void VarkelManager::Private::Write(quarn::lidar::KtcClient& client, int module) {
  const auto catalogue = selection.catalogue();
  writer.Run(*catalogue, client, module);
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

void VarkelManager::Private::ReportRangeFault(const ConfigParser& catalogue, const VarInfo& var,
                                              varkel::RangeFault fault) {
  static constexpr char kOperation[] = "VarkelManager::CheckModuleVarsWithinRange";
  const QString name = Text(var.var_name);
  const auto warn = [&](const char* ending) {
    Log("Detected that the user set " + var.var_name + ending, "WARNING");
    events.Post([this, name] { emit face->someVarOutOfRange(name); });
  };
  switch (fault) {
    case varkel::RangeFault::kOutOfRange:
      warn(" is out of range");
      qDebug() << kOperation << ": detected that" << name << "is out of range";
      break;
    case varkel::RangeFault::kIpFormat:
      warn(" has invalid IP format");
      qDebug() << kOperation << ": detected that" << name
               << "has invalid IP format:" << Text(catalogue.CurrentValue(var));
      break;
    case varkel::RangeFault::kMacFormat:
      warn(" has invalid MAC format");
      qDebug() << kOperation << ": detected that" << name
               << "has invalid MAC format:" << Text(catalogue.CurrentValue(var));
      break;
    case varkel::RangeFault::kNotANumber:  // the check has written why
    case varkel::RangeFault::kNone:
      break;
  }
}

void VarkelManager::Private::FetchOperationLog(quarn::lidar::KtcClient& client, const ConfigParser& catalogue,
                                               const QString& archive) {
  const bool whole = logs.DownloadOperationLog(catalogue, client, archive);
  events.Post([this, whole] { emit face->downloadOperationLogFinished(whole); });
}

int VarkelManager::Private::RestartNow() {
  const auto client = IdleClient();
  const auto catalogue = selection.catalogue();
  if (!client || !catalogue) return -1;
  const varkel::LidarConnection::Quiet quiet(connection);
  const int code = varkel::RestartSensor(*catalogue, *client, *this);
  if (code == 0) events.Post([this] { face->Stop(); });
  return code;
}

int VarkelManager::Private::ResetNow() {
  const auto client = IdleClient();
  const auto catalogue = selection.catalogue();
  if (!client || !catalogue) return -1;
  const varkel::LidarConnection::Quiet quiet(connection);
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

// Life

VarkelManager* VarkelManager::GetInstance(bool flag, const std::string& config_path) {
  static auto* const instance = new VarkelManager(flag, config_path);  // the window deletes it
  return instance;
}

VarkelManager::VarkelManager(bool flag, const std::string& config_path)
    : d_(std::make_unique<Private>(this, flag, config_path)) {
  emit initInfoChanged();
}

VarkelManager::~VarkelManager() {
  d_->events.Close();
  d_->workers.RequestStop();
  d_->connection.Interrupt();
  d_->serial.Interrupt();
  d_->workers.StopAndJoin();
  d_->refresher.Stop();
  d_->info.Stop();
}

void VarkelManager::SetVMNowName(const QString& name) {
  if (name.isEmpty() || !LidarModelList().contains(name)) return;
  InitConfigFileParser(name);
  d_->vm_now_name = name.toStdString();
  emit lidarModelListChanged();
}

// Connection settings

QString VarkelManager::ip_address() const {
  return Text(d_->settings.ip_address);
}
void VarkelManager::set_ip_address(const QString& text) {
  d_->settings.ip_address = text.toStdString();
}
QString VarkelManager::udpPort() const {
  return QString::number(d_->settings.udp_port);
}

void VarkelManager::setUdpPort(const QString& text) {
  d_->ReportConversion([this, &text] {
    d_->settings.udp_port = static_cast<std::uint16_t>(quarn::lidar::TextToInt(text.toStdString()));
  });
}

QString VarkelManager::port() const {
  return Text(d_->settings.port);
}
void VarkelManager::set_port(const QString& text) {
  d_->settings.port = text.toStdString();
}
QString VarkelManager::serial_port_485() const {
  return Text(d_->settings.serial_port_485);
}
void VarkelManager::set_serial_port_485(const QString& text) {
  d_->settings.serial_port_485 = text.toStdString();
}
QString VarkelManager::serial_port_232() const {
  return Text(d_->settings.serial_port_232);
}
void VarkelManager::set_serial_port_232(const QString& text) {
  d_->settings.serial_port_232 = text.toStdString();
}
QString VarkelManager::baud_rate() const {
  return QString::number(d_->settings.baud_rate);
}
void VarkelManager::set_baud_rate(const QString& text) {
  d_->settings.baud_rate = text.toInt();
}

// Model

QVariantList VarkelManager::LidarModelList() const {
  if (!d_->vm_now_name.empty()) return {Text(d_->vm_now_name)};
  QVariantList models;
  for (const std::string& model : varkel::ListModels()) models.append(Text(model));
  return models;
}

void VarkelManager::InitConfigFileParser(const QString& model_name) {
  const std::string model = model_name.toStdString();
  d_->connect_type = varkel::ConnectTypeOf(model);
  const std::string fault = d_->selection.Select(model);
  d_->edits.Clear();
  d_->info.SetModel(model);
  emit zeltoLidarInfoChanged();
  emit connectTypeChanged();
  emit lidarClearModel();
  emit lidarModelChanged();
  emit lidarShowModel();
  if (!fault.empty()) {
    d_->Log(fault, "ERROR");
    d_->Error(fault);
  }
  for (const std::string& finding : varkel::CheckSetPayloads(*d_->selection.catalogue())) {
    d_->Log("The model table of " + model + " puts fields at wrong places: " + finding, "WARNING");
  }
}

QVariantList VarkelManager::level1List() const {
  const auto catalogue = d_->selection.catalogue();
  return catalogue ? varkel::PageTitles(*catalogue) : QVariantList();
}

QVariantList VarkelManager::level2List() const {
  const auto catalogue = d_->selection.catalogue();
  return catalogue ? varkel::PageRows(*catalogue) : QVariantList();
}

QVariantList VarkelManager::logRepeaterModel() const {
  const auto catalogue = d_->selection.catalogue();
  return catalogue ? varkel::DownloadableLogs(*catalogue) : QVariantList();
}

bool VarkelManager::CheckVarExistsInConfigFileByName(const QString& qs_var_info) {
  const auto catalogue = d_->selection.catalogue();
  if (qs_var_info.isEmpty() || !catalogue) return false;
  for (const std::string& form : CaseForms(qs_var_info)) {
    if (catalogue->FindByName(form) != nullptr) return true;
  }
  return false;
}

QString VarkelManager::getLidarSN() {
  return d_->PageValue("SN");
}
QString VarkelManager::getLidarPN() {
  return d_->PageValue("PN");
}
QString VarkelManager::getVMNowName() {
  return Text(d_->vm_now_name);
}
int VarkelManager::connectType() const {
  return d_->connect_type;
}

// Connection

bool VarkelManager::ConnectLidar() {
  if (GetIsConnectingLidar()) return false;
  d_->workers.Start([this, settings = d_->settings, type = d_->connect_type.load(),
                     model = d_->selection.model_name()](const std::stop_token& stop) {
    switch (type) {
      case varkel::kSerialLines:
        d_->serial.InitSerial(stop, settings);
        break;
      case varkel::kKtcToSmallSensor:
        d_->serial.InitKtcForSerial(stop, settings, model);
        break;
      default:
        d_->connection.Init(stop, settings);
    }
  });
  d_->settings_file.Save(d_->settings);
  return true;
}

bool VarkelManager::CheckLidarConnection() {
  return d_->connection.CheckLidarConnection();
}

void VarkelManager::CheckConnectionInBackground() {
  if (d_->checking.exchange(true)) return;
  d_->workers.Start([this](const std::stop_token&) {
    const bool alive = CheckLidarConnection();
    d_->events.Post([this, alive] {
      d_->checking = false;
      emit connectionCheckFinished(alive);
    });
  });
}

void VarkelManager::Stop() {
  const bool network = d_->connect_type == varkel::kNetwork;
  d_->EndConnections();
  if (network) d_->edits.Clear();
  emit isConnectedChanged();
  if (network) {
    emit myMapChanged();
    d_->fov.ResetOnDisconnect();
  } else {
    emit zeltoLidarInfoChanged();
  }
  emit sendLogMessage(QStringLiteral("Lidar disconnected"), QStringLiteral("INFO"));
}

bool VarkelManager::GetIsConnectingLidar() {
  return d_->connection.is_connecting() || d_->serial.is_connecting();
}
bool VarkelManager::IsConnected() const {
  return d_->link.is_connected();
}
void VarkelManager::SetLogBytesFlowStatus(bool flag) {
  d_->connection.set_log_bytes(flag);
  d_->serial.set_log_bytes(flag);
}

void VarkelManager::StartGetConfigFile() {
  d_->workers.Start([this](const std::stop_token&) {
    const auto client = d_->connection.client();
    if (!client) return;
    std::vector<std::uint8_t> discarded;
    const int result = client->QueryCommand({}, discarded, kConfigFileCommand, false);
    // The two texts are the wrong way round; scripts that read them count on it.
    std::cout << (result != 0 ? "[SUCCESS]: Get config file from lidar success! \n"
                              : "[FAILED]: Get config file from lidar failed! \n")
              << std::flush;
  });
}

// Reading

QVariantList VarkelManager::myMap() const {
  const auto catalogue = d_->selection.catalogue();
  return catalogue ? varkel::VariableMaps(*catalogue, d_->edits) : QVariantList();
}

QVariantMap VarkelManager::variableMap(int module, int group, int index) const {
  const auto catalogue = d_->selection.catalogue();
  if (!catalogue) return {};
  const VarInfo* var = varkel::VariableAt(*catalogue, module, group, index);
  return var != nullptr ? varkel::VariableMap(*catalogue, *var, d_->edits) : QVariantMap();
}

QVariantList VarkelManager::FovList() const {
  QVariantList texts;
  for (const float degrees : d_->fov.Get()) texts.append(QString::number(degrees, 'f', 1));
  return texts;
}

void VarkelManager::GetLidarModuleInfo(int module) {
  if (d_->ReadPage(module)) emit myMapChanged();
}

void VarkelManager::ReadPageInBackground(int module) {
  d_->page_reads.Request(module);
  emit isReadingPageChanged();
}

bool VarkelManager::isWorking() const {
  return d_->works_running > 0;
}
bool VarkelManager::isReadingPage() const {
  return d_->page_reads.is_reading();
}

bool VarkelManager::UpdateSingleVarInfo(const QString& qs_var_info, const QString& search_type) {
  const auto client = d_->connection.usable_client();
  const auto catalogue = d_->selection.catalogue();
  if (!client || !catalogue) return false;
  VarInfo* const var = d_->searchVarPtr(*catalogue, qs_var_info, search_type);
  if (var == nullptr || var->get_cmd.empty()) return false;
  try {
    return d_->reader.GetInfoFromLidar(*catalogue, *client, *var);
  } catch (const std::exception& error) {
    qDebug() << "VarkelManager::UpdateSingleVarInfo" << error.what();
    return false;
  }
}

bool VarkelManager::isTimerUpdate(int i, int j, int k) {
  const auto catalogue = d_->selection.catalogue();
  if (!catalogue) return false;
  const VarInfo* var = varkel::VariableAt(*catalogue, i, j, k);
  return var != nullptr && var->timer_update;
}

void VarkelManager::UpdateUI() {
  emit myMapChanged();
}
void VarkelManager::setModuleIndexUse(int module) {
  d_->module_index_use = module;
}

// Notices

QString VarkelManager::errorMessage() const {
  return d_->error_message;
}
QString VarkelManager::successMessage() const {
  return d_->success_message;
}

void VarkelManager::setErrorMsg(const QString& str) {
  d_->error_message = str;
  if (!d_->error_message.isEmpty()) emit errorMessageChanged();
}

void VarkelManager::setSuccessMsg(const QString& str) {
  d_->success_message = str;
  if (!d_->success_message.isEmpty()) emit successMessageChanged();
}

// Writing

void VarkelManager::SetText(int type, int level1, int level2, int level3, const QString& text) {
  const auto catalogue = d_->selection.catalogue();
  if (!catalogue) return;
  d_->ReportConversion(
      [&] { d_->editor.SetText(*catalogue, type, level1, level2, level3, text.toStdString()); });
  emit editsChanged();
}

void VarkelManager::ClearSetMap() {
  d_->edits.Clear();
  emit editsChanged();
}

int VarkelManager::getSetMapSize() {
  return static_cast<int>(d_->edits.command_count());
}

void VarkelManager::Run(int module) {
  if (!d_->selection.catalogue()) return;
  const auto client = d_->ClientForWriting();
  if (client && d_->CanWrite(module)) d_->Write(*client, module);
}

void VarkelManager::RunInBackground(int module) {
  const auto client = d_->selection.catalogue() ? d_->ClientForWriting() : nullptr;
  if (!client || !d_->CanWrite(module)) {
    emit pageWriteFinished(module);
    return;
  }
  d_->InBackground([this, client, module] { d_->Write(*client, module); },
                   [this, module] { emit pageWriteFinished(module); });
}

void VarkelManager::SetMultiFovConfig(int index, const QString& fov) {
  if (d_->editor.SetFov(d_->fov, index, fov.toStdString())) {
    emit editsChanged();
    return;
  }
  setErrorMsg(QStringLiteral("Input value of fov is invalid"));
  emit fovConfigChanged();
}

bool VarkelManager::CheckVarIsWithinRange(const QString& qs_var_info, const QString& search_type) {
  const auto catalogue = d_->selection.catalogue();
  if (!catalogue) return true;
  return varkel::IsWithinRange(*catalogue, d_->searchVarPtr(*catalogue, qs_var_info, search_type),
                               qs_var_info);
}

bool VarkelManager::CheckModuleVarsWithinRange(int module) {
  const auto catalogue = d_->selection.catalogue();
  if (!d_->CanWrite(module)) return true;
  bool within = true;
  for (const auto& group : catalogue->module_vars()[static_cast<std::size_t>(module)]) {
    for (const VarInfo* var : group) {
      const varkel::RangeFault fault = varkel::JudgePageValue(*catalogue, *var);
      within &= fault == varkel::RangeFault::kNone;
      d_->ReportRangeFault(*catalogue, *var, fault);
    }
  }
  return within;
}

// Console

int VarkelManager::CommandLogCnt() const {
  return static_cast<int>(d_->console.history().size());
}

QVariantList VarkelManager::SendCommandHistory() const {
  QVariantList records;
  for (const auto& record : d_->console.history()) {
    records.append(QVariantMap{{QStringLiteral("record_time"), Text(record.time)},
                               {QStringLiteral("send_cmd_history"), Text(record.command)},
                               {QStringLiteral("send_payload_history"), Text(record.payload)}});
  }
  return records;
}

QString VarkelManager::getSendKtcCommandReturnHeader() const {
  return Text(d_->console.return_header());
}
QString VarkelManager::getSendKtcCommandReturnPayload() const {
  return Text(d_->console.return_payload());
}

void VarkelManager::SendCommand(const QString& cmd_qs, const QString& payload_qs) {
  d_->Send(cmd_qs.toStdString(), payload_qs.toStdString());
}

void VarkelManager::SendCommandInBackground(const QString& cmd_qs, const QString& payload_qs) {
  d_->InBackground([this, command = cmd_qs.toStdString(),
                    payload = payload_qs.toStdString()] { d_->Send(command, payload); },
                   [] {});
}

// Restart, reset, logs

int VarkelManager::Restart() {
  return d_->RestartNow();
}
int VarkelManager::Reset() {
  return d_->ResetNow();
}

void VarkelManager::RestartInBackground() {
  d_->InBackground([this] { d_->RestartNow(); }, [] {});
}

void VarkelManager::ResetInBackground() {
  d_->InBackground([this] { d_->ResetNow(); }, [] {});
}

int VarkelManager::DownloadOperationLog(const QUrl& fileUrl) {
  return d_->Download([this, archive = fileUrl.toLocalFile()](auto& client, const auto& catalogue) {
    d_->FetchOperationLog(client, catalogue, archive);
  });
}

int VarkelManager::DownloadOperationLogThread(const QUrl& fileUrl) {
  const auto client = d_->connection.usable_client();
  const auto catalogue = d_->selection.catalogue();
  if (!client || !catalogue) return -1;
  d_->FetchOperationLog(*client, *catalogue, fileUrl.toLocalFile());
  return 0;
}

int VarkelManager::DownloadLog(const QUrl& fileUrl, const QString& type) {
  return d_->Download([this, folder = fileUrl.toLocalFile(), type](auto& client, const auto& catalogue) {
    d_->logs.DownloadLog(catalogue, client, folder, type);
    d_->Emit(&VarkelManager::downloadFinished);
  });
}

bool VarkelManager::IsDownloadLog() const {
  return d_->downloading_log;
}

void VarkelManager::setIsDownloadLog(bool running) {
  d_->SetDownloading(running);
}

// Upgrades

int VarkelManager::UpgradeLidar(const QUrl& fileUrl, int level1, int level2, int level3) {
  const auto client = d_->connection.client();
  const auto catalogue = d_->selection.catalogue();
  if (!client || !client->IsOpen() || d_->IsBusy() || !catalogue) return -1;
  auto package = ReadPackage(fileUrl);
  if (!package) return 0;
  const VarInfo* var = varkel::VariableAt(*catalogue, level1, level2, level3);
  const std::string command = var == nullptr ? std::string() : varkel::UpgradeCommandText(*var);
  if (command.empty()) return 0;
  if (!d_->upgrade.Begin(package->size())) return -1;
  d_->workers.Start([this, client, bytes = std::move(*package), command](const std::stop_token& stop) {
    d_->upgrade.SendOverNetwork(stop, *client, bytes, command);
  });
  return 0;
}

int VarkelManager::ZeltoUpgradeLidar(const QUrl& fileUrl) {
  if (!d_->CanUpgradeSmallSensor()) {
    setErrorMsg(QStringLiteral("lidar is not connected, or lidar is upgrade"));
    return -1;
  }
  auto package = ReadPackage(fileUrl);
  if (!package) return 0;
  if (!d_->upgrade.Begin(package->size())) return -1;
  d_->workers.Start([this, bytes = std::move(*package)](const std::stop_token& stop) {
    d_->UpgradeSmallSensor(stop, bytes);
  });
  return 0;
}

int VarkelManager::MarvoUpgradeLidar(const QUrl& fileUrl) {
  if (!d_->CanUpgradeSmallSensor() || d_->connect_type != varkel::kKtcToSmallSensor) {
    setErrorMsg(QStringLiteral("lidar is not connected, or lidar is upgrading"));
    return -1;
  }
  auto package = ReadPackage(fileUrl);
  if (!package || package->size() < varkel::kMarvoHeaderSize) {
    setErrorMsg(package ? QStringLiteral("Upgrade package too small")
                        : QStringLiteral("Failed to open upgrade file"));
    return -1;
  }
  if (!d_->upgrade.Begin(package->size())) return -1;
  d_->workers.Start([this, bytes = std::move(*package)](const std::stop_token& stop) {
    d_->marvo.Run(stop, bytes, d_->upgrade.Run());
  });
  return 0;
}

bool VarkelManager::IsUpgrading() const {
  return d_->upgrade.is_upgrading();
}
int VarkelManager::upgradeProgress() const {
  return d_->upgrade.progress();
}
int VarkelManager::upgradeProgressTotalLen() const {
  return d_->upgrade.total();
}

// Small serial sensors

QVariantList VarkelManager::ZeltoLidarInfo() const {
  return RowMaps(d_->info.Info());
}
QVariantList VarkelManager::ZeltoLidarVersionInfo() const {
  return RowMaps(d_->info.Versions());
}
bool VarkelManager::isGetPBLVersion() const {
  return d_->info.is_getting_pbl_version();
}

void VarkelManager::ZeltoSetStandby(int standby) {
  d_->small.SetStandby(standby);
}
void VarkelManager::ZeltoSetSpinRate(int rate) {
  d_->small.SetSpinRate(rate);
}
void VarkelManager::ZeltoSetReturnMode(int mode) {
  d_->small.SetReturnMode(mode);
}
int VarkelManager::ZeltoGetCorrection(const QString& path) {
  return d_->small.GetCorrection(path.toStdString());
}
QVariantList VarkelManager::ZeltoGetLidarFunctionSafety() {
  return TextList(d_->small.GetLidarFunctionSafety());
}
QString VarkelManager::ZeltoGetBaudRate() {
  return Text(d_->small.GetBaudRate());
}
void VarkelManager::ZeltoSetBaudRateFromUI(const QString& baudRateStr) {
  d_->small.SetBaudRate(baudRateStr.toStdString());
}
QVariantList VarkelManager::ZeltoGetDestinationConfig(bool silent) {
  return TextList(d_->small.GetDestinationConfig(silent));
}
bool VarkelManager::ZeltoSetDestinationIPandPort(const QString& ip, int port) {
  return d_->small.SetDestinationIPandPort(ip.toStdString(), port);
}
void VarkelManager::ZeltoSetUpgradeMode(int mode) {
  d_->upgrade_mode = mode;
}
void VarkelManager::MarvoSetIMURange(int angularRangeIndex, int accelRangeIndex) {
  d_->small.SetImuRange(angularRangeIndex, accelRangeIndex);
}

void VarkelManager::CallInBackground(const QString& operation, const QVariantList& arguments) {
  const auto found = BackgroundCalls().find(operation);
  if (found == BackgroundCalls().end()) {
    emit callFinished(operation, {});
    return;
  }
  auto result = std::make_shared<QVariant>();
  d_->InBackground([this, call = found->second, arguments, result] { *result = call(*this, arguments); },
                   [this, operation, result] { emit callFinished(operation, *result); });
}
