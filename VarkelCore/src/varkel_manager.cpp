#include "VarkelCore/src/varkel_manager.h"

#include <QDebug>
#include <atomic>
#include <exception>
#include <iostream>
#include <limits>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "VarkelCore/src/connection_settings.h"
#include "VarkelCore/src/event_queue.h"
#include "VarkelCore/src/fov_table.h"
#include "VarkelCore/src/lidar_connection.h"
#include "VarkelCore/src/model_selection.h"
#include "VarkelCore/src/page_description.h"
#include "VarkelCore/src/page_read_queue.h"
#include "VarkelCore/src/page_reader.h"
#include "VarkelCore/src/page_refresher.h"
#include "VarkelCore/src/pending_edits.h"
#include "VarkelCore/src/user_report.h"
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

}  // namespace

struct VarkelManager::Private : varkel::UserReport {
  Private(VarkelManager* face_in, bool flag, std::string config_path);

  // UserReport: from any thread.
  void Log(const std::string& text, const std::string& type) override;
  void Error(const std::string& text) override;
  void Success(const std::string& text) override;

  /// Raises a signal on the user interface's thread.
  void Emit(void (VarkelManager::*notify)());
  /// Reads a page; false when a guard forbids it.
  bool ReadPage(int module);
  void RefreshRound(const std::stop_token& stop);
  bool IsBusy() const { return upgrading || downloading_log; }
  VarInfo* searchVarPtr(const ConfigParser& catalogue, const QString& key, const QString& search_type) const;
  /// The value of the first variable on the pages with that name.
  QString PageValue(const std::string& var_name) const;
  void SetSerialNumberUnknown();
  void StopNetwork();
  void NotAvailable(const QString& what);

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
  std::atomic<bool> upgrading = false;
  std::atomic<bool> downloading_log = false;
  varkel::ModelSelection selection;
  varkel::PendingEdits edits;
  varkel::FovTable fov;
  varkel::EventQueue events;
  varkel::LidarConnection connection;
  const varkel::PageReader reader;

  // Threads, last: they use everything above.
  varkel::WorkerThreads workers;
  varkel::PageRefresher refresher;
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

void VarkelManager::Private::Error(const std::string& text) {
  events.Post([this, text = Text(text)] { face->setErrorMsg(text); });
}

void VarkelManager::Private::Success(const std::string& text) {
  events.Post([this, text = Text(text)] { face->setSuccessMsg(text); });
}

void VarkelManager::Private::Emit(void (VarkelManager::*notify)()) {
  events.Post([this, notify] { emit(face->*notify)(); });
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

void VarkelManager::Private::StopNetwork() {
  connection.Interrupt();  // whoever waits for the sensor returns, so that the join is short
  refresher.Stop();
  SetSerialNumberUnknown();
  connection.Drop();
}

void VarkelManager::Private::NotAvailable(const QString& what) {
  face->setErrorMsg(what + QStringLiteral(" is not available yet"));
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
  d_->workers.StopAndJoin();
  d_->refresher.Stop();
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
  try {
    d_->settings.udp_port = static_cast<std::uint16_t>(quarn::lidar::TextToInt(text.toStdString()));
  } catch (const std::exception& error) {
    setErrorMsg(QString::fromLatin1(error.what()));
    emit sendLogMessage(QString::fromLatin1(error.what()), QStringLiteral("ERROR"));
  }
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

void VarkelManager::InitConfigFileParser(QString model_name) {
  const std::string model = model_name.toStdString();
  d_->connect_type = varkel::ConnectTypeOf(model);
  const std::string fault = d_->selection.Select(model);
  d_->edits.Clear();
  emit zeltoLidarInfoChanged();
  emit connectTypeChanged();
  emit lidarClearModel();
  emit lidarModelChanged();
  emit lidarShowModel();
  if (!fault.empty()) {
    d_->Log(fault, "ERROR");
    d_->Error(fault);
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

bool VarkelManager::CheckVarExistsInConfigFileByName(QString qs_var_info) {
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
  if (d_->connection.is_connecting()) return false;
  if (d_->connect_type != varkel::kNetwork) {
    d_->NotAvailable(QStringLiteral("The connection to a small serial sensor"));
    return false;
  }
  d_->workers.Start(
      [this, settings = d_->settings](const std::stop_token& stop) { d_->connection.Init(stop, settings); });
  d_->settings_file.Save(d_->settings);
  return true;
}

bool VarkelManager::CheckLidarConnection() {
  return d_->connection.CheckLidarConnection();
}

void VarkelManager::CheckConnectionInBackground() {
  if (d_->checking.exchange(true)) return;
  d_->workers.Start([this](const std::stop_token&) {
    const bool alive = d_->connection.CheckLidarConnection();
    d_->events.Post([this, alive] {
      d_->checking = false;
      emit connectionCheckFinished(alive);
    });
  });
}

void VarkelManager::Stop() {
  if (d_->connect_type != varkel::kNetwork) {
    emit sendLogMessage(QStringLiteral("connect type is not support"), QStringLiteral("INFO"));
    return;
  }
  d_->StopNetwork();
  d_->edits.Clear();
  emit isConnectedChanged();
  emit myMapChanged();
  d_->fov.ResetOnDisconnect();
  emit sendLogMessage(QStringLiteral("Lidar disconnected"), QStringLiteral("INFO"));
}

bool VarkelManager::GetIsConnectingLidar() {
  return d_->connection.is_connecting();
}
bool VarkelManager::IsConnected() const {
  return d_->connection.is_connected();
}
void VarkelManager::SetLogBytesFlowStatus(bool flag) {
  d_->connection.set_log_bytes(flag);
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
  return catalogue ? varkel::VariableMaps(*catalogue) : QVariantList();
}

QVariantMap VarkelManager::variableMap(int module, int group, int index) const {
  const auto catalogue = d_->selection.catalogue();
  if (!catalogue) return {};
  const VarInfo* var = varkel::VariableAt(*catalogue, module, group, index);
  return var != nullptr ? varkel::VariableMap(*catalogue, *var) : QVariantMap();
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

bool VarkelManager::isReadingPage() const {
  return d_->page_reads.is_reading();
}

bool VarkelManager::UpdateSingleVarInfo(QString qs_var_info, QString search_type) {
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

void VarkelManager::setErrorMsg(QString str) {
  d_->error_message = std::move(str);
  if (!d_->error_message.isEmpty()) emit errorMessageChanged();
}

void VarkelManager::setSuccessMsg(QString str) {
  d_->success_message = std::move(str);
  if (!d_->success_message.isEmpty()) emit successMessageChanged();
}

// Writing

void VarkelManager::SetText(int, int, int, int, QString) {
  d_->NotAvailable(QStringLiteral("Editing"));
}
void VarkelManager::ClearSetMap() {
  d_->edits.Clear();
}
int VarkelManager::getSetMapSize() {
  return static_cast<int>(d_->edits.command_count());
}
void VarkelManager::Run(int) {
  d_->NotAvailable(QStringLiteral("Saving"));
}
void VarkelManager::SetMultiFovConfig(int, QString) {
  d_->NotAvailable(QStringLiteral("Editing"));
}
bool VarkelManager::CheckVarIsWithinRange(QString, QString) {
  return true;
}
bool VarkelManager::CheckModuleVarsWithinRange(int) {
  return true;
}

// Console

int VarkelManager::CommandLogCnt() const {
  return 0;
}
QVariantList VarkelManager::SendCommandHistory() const {
  return {};
}
QString VarkelManager::getSendKtcCommandReturnHeader() const {
  return {};
}
QString VarkelManager::getSendKtcCommandReturnPayload() const {
  return {};
}
void VarkelManager::SendCommand(QString, QString) {
  d_->NotAvailable(QStringLiteral("The command console"));
}

// Restart, reset, logs

int VarkelManager::Restart() {
  d_->NotAvailable(QStringLiteral("Restart"));
  return -1;
}
int VarkelManager::Reset() {
  d_->NotAvailable(QStringLiteral("Reset"));
  return -1;
}
int VarkelManager::DownloadOperationLog(QUrl) {
  d_->NotAvailable(QStringLiteral("The operation log"));
  return -1;
}
int VarkelManager::DownloadOperationLogThread(QUrl fileUrl) {
  return DownloadOperationLog(std::move(fileUrl));
}
int VarkelManager::DownloadLog(QUrl, QString type) {
  d_->NotAvailable(type);
  return -1;
}
bool VarkelManager::IsDownloadLog() const {
  return d_->downloading_log;
}
void VarkelManager::setIsDownloadLog(bool running) {
  if (d_->downloading_log.exchange(running) != running) emit isDownloadLogChanged();
}

// Upgrades

int VarkelManager::UpgradeLidar(QUrl, int, int, int) {
  d_->NotAvailable(QStringLiteral("The upgrade"));
  return -1;
}
int VarkelManager::ZeltoUpgradeLidar(QUrl) {
  d_->NotAvailable(QStringLiteral("The upgrade of this sensor"));
  return -1;
}
int VarkelManager::MarvoUpgradeLidar(QUrl) {
  d_->NotAvailable(QStringLiteral("The upgrade of this sensor"));
  return -1;
}
bool VarkelManager::IsUpgrading() const {
  return d_->upgrading;
}
int VarkelManager::upgradeProgress() const {
  return 0;
}
int VarkelManager::upgradeProgressTotalLen() const {
  return 1;
}

// Small serial sensors

QVariantList VarkelManager::ZeltoLidarInfo() const {
  return {};
}
QVariantList VarkelManager::ZeltoLidarVersionInfo() const {
  return {};
}
bool VarkelManager::isGetPBLVersion() const {
  return false;
}
void VarkelManager::ZeltoSetStandby(int) {
  d_->NotAvailable(QStringLiteral("Standby"));
}
void VarkelManager::ZeltoSetSpinRate(int) {
  d_->NotAvailable(QStringLiteral("The spin rate"));
}
void VarkelManager::ZeltoSetReturnMode(int) {
  d_->NotAvailable(QStringLiteral("The return mode"));
}
int VarkelManager::ZeltoGetCorrection(QString) {
  d_->NotAvailable(QStringLiteral("The calibration file"));
  return -1;
}
QVariantList VarkelManager::ZeltoGetLidarFunctionSafety() {
  d_->NotAvailable(QStringLiteral("Function safety"));
  return {};
}
QString VarkelManager::ZeltoGetBaudRate() {
  d_->NotAvailable(QStringLiteral("The baud rate"));
  return {};
}
void VarkelManager::ZeltoSetBaudRateFromUI(QString) {
  d_->NotAvailable(QStringLiteral("The baud rate"));
}
QVariantList VarkelManager::ZeltoGetDestinationConfig(bool silent) {
  if (!silent) d_->NotAvailable(QStringLiteral("The destination"));
  return {};
}
bool VarkelManager::ZeltoSetDestinationIPandPort(QString, int) {
  d_->NotAvailable(QStringLiteral("The destination"));
  return false;
}
void VarkelManager::ZeltoSetUpgradeMode(int) {
  d_->NotAvailable(QStringLiteral("The upgrade mode"));
}
void VarkelManager::MarvoSetIMURange(int, int) {
  d_->NotAvailable(QStringLiteral("The IMU range"));
}
