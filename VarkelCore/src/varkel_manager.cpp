#include "VarkelCore/src/varkel_manager.h"

#include <QDebug>
#include <QFile>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "VarkelCore/src/background_calls.h"
#include "VarkelCore/src/catalogue/named_command.h"
#include "VarkelCore/src/catalogue/table_check.h"
#include "VarkelCore/src/controller_parts.h"
#include "VarkelCore/src/pages/page_description.h"
#include "VarkelCore/src/upgrade/marvo_package.h"
#include "libquarn/Platform/src/text_number.h"

using varkel::VarInfo;

namespace {

constexpr std::uint8_t kConfigFileCommand = 116;

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

/// A firmware package, opened; null when it can't be. Large ones, on slow disks, are read on a worker.
std::shared_ptr<QFile> OpenPackage(const QUrl& file_url) {
  auto file = std::make_shared<QFile>(file_url.toLocalFile());
  return file->open(QIODevice::ReadOnly) ? file : nullptr;
}

}  // namespace

// Life

VarkelManager* VarkelManager::GetInstance(bool flag, const std::string& config_path) {
  static auto* const instance = new VarkelManager(flag, config_path);  // the window deletes it
  return instance;
}

VarkelManager::VarkelManager(bool flag, const std::string& config_path)
    : d_(std::make_unique<Private>(this, flag, config_path)) {
  emit initInfoChanged();
  if (d_->settings_fault.empty()) return;
  // Told when the event loop runs: by then the user interface listens.
  QMetaObject::invokeMethod(this, "sendLogMessage", Qt::QueuedConnection,
                            Q_ARG(QString, Text(d_->settings_fault)),
                            Q_ARG(QString, QStringLiteral("WARNING")));
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
  if (name.isEmpty() || !(LidarModelList().contains(name) || varkel::IsHostModel(name.toStdString()))) return;
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
  d_->DropPageModels();
  d_->info.SetModel(model);
  emit zeltoLidarInfoChanged();
  emit connectTypeChanged();
  emit lidarClearModel();
  emit lidarModelChanged();
  emit lidarShowModel();
  std::vector<std::string> warnings = varkel::CheckSetPayloads(*d_->selection.catalogue());
  for (std::string& finding : warnings) {
    finding.insert(0, "The model table of " + model + " puts fields at wrong places: ");
  }
  // Later: at the start the table is loaded before the window that shows this.
  d_->events.PostLater([d = d_.get(), fault, warnings = std::move(warnings)] {
    if (!fault.empty()) {
      d->Log(fault, "ERROR");
      d->Error(fault);
    }
    for (const std::string& warning : warnings) d->Log(warning, "WARNING");
  });
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
  if (const auto model = d_->selection.model()) model->values.SensorChanged();
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
  const std::string fault = d_->settings_file.Save(d_->settings);
  if (!fault.empty()) d_->Log(fault, "WARNING");
  return true;
}

bool VarkelManager::CheckLidarConnection() {
  return d_->serial.is_connected() ? d_->serial.CheckLidarConnection()
                                   : d_->connection.CheckLidarConnection();
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
  const int type = d_->connect_type;
  if (type != varkel::kNetwork && type != varkel::kSerialLines && type != varkel::kKtcToSmallSensor) {
    emit sendLogMessage(QStringLiteral("connect type is not support"), QStringLiteral("INFO"));
    return;
  }
  try {
    d_->EndConnections();
  } catch (const std::exception&) {
    std::cout << "stop error\n" << std::flush;
  }
  d_->connect_type = varkel::ConnectTypeOf(d_->selection.model_name());  // the next connection is the model's
  emit isConnectedChanged();
  if (type == varkel::kNetwork) {
    emit myMapChanged();
    emit fovConfigChanged();
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
  const auto model = d_->selection.model();
  return model ? varkel::VariableMaps(*model) : QVariantList();
}

QVariantMap VarkelManager::variableMap(int module, int group, int index) const {
  const auto model = d_->selection.model();
  if (!model) return {};
  const VarInfo* var = varkel::VariableAt(*model->catalogue, module, group, index);
  return var != nullptr ? varkel::VariableMap(*model, *var) : QVariantMap();
}

QString VarkelManager::valueMark(int module, int group, int index) const {
  const auto model = d_->selection.model();
  if (!model) return {};
  const VarInfo* var = varkel::VariableAt(*model->catalogue, module, group, index);
  return var != nullptr ? varkel::ValueMark(*model, *var) : QString();
}

QVariantList VarkelManager::FovList() const {
  const auto model = d_->selection.model();
  QVariantList texts;
  for (const float degrees : model ? model->values.Fov() : varkel::kDefaultFov)
    texts.append(QString::number(degrees, 'f', 1));
  return texts;
}

void VarkelManager::GetLidarModuleInfo(int module) {
  if (d_->ReadPage(module, [] { return false; })) emit myMapChanged();
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
  const auto model = d_->selection.model();
  if (!client || !model) return false;
  VarInfo* const var = d_->searchVarPtr(*model->catalogue, qs_var_info, search_type);
  if (var == nullptr || var->get_cmd.empty()) return false;
  try {
    return d_->reader.GetInfoFromLidar(*model, *client, *var);
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
  const auto model = d_->selection.model();
  if (!model) return;
  d_->ReportConversion([&] { d_->editor.SetText(*model, type, level1, level2, level3, text.toStdString()); });
  emit editsChanged();
}

void VarkelManager::ClearSetMap() {
  const auto model = d_->selection.model();
  const bool angles_went_back = model && model->values.Cancel();
  emit editsChanged();
  if (angles_went_back) emit fovConfigChanged();
}

int VarkelManager::getSetMapSize() {
  const auto model = d_->selection.model();
  return model ? static_cast<int>(model->values.pending_count()) : 0;
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
  const auto model = d_->selection.model();
  if (!model) return;
  if (d_->editor.SetFov(*model, index, fov.toStdString())) {
    emit editsChanged();
    return;
  }
  setErrorMsg(QStringLiteral("Input value of fov is invalid"));
  emit fovConfigChanged();
}

bool VarkelManager::CheckVarIsWithinRange(const QString& qs_var_info, const QString& search_type) {
  const auto model = d_->selection.model();
  if (!model) return true;
  const VarInfo* var = d_->searchVarPtr(*model->catalogue, qs_var_info, search_type);
  return d_->page_check.CheckVarIsWithinRange(*model, var, qs_var_info.toStdString());
}

bool VarkelManager::CheckModuleVarsWithinRange(int module) {
  const auto model = d_->selection.model();
  return !model || d_->page_check.CheckModuleVarsWithinRange(*model, module);
}

QObject* VarkelManager::pageModel(int module) {
  return d_->PageModelOf(module);
}

QStringList VarkelManager::unreadFields(int module) const {
  const auto model = d_->selection.model();
  QStringList names;
  if (!model || !d_->CanWrite(module)) return names;
  for (const std::string& name : varkel::UnreadFields(*model, module)) names.append(Text(name));
  return names;
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
  const auto package = OpenPackage(fileUrl);
  if (!package) return 0;
  const VarInfo* var = varkel::VariableAt(*catalogue, level1, level2, level3);
  const std::string command = var == nullptr ? std::string() : varkel::UpgradeCommandText(*var);
  if (command.empty()) return 0;
  const auto send = [this, client, command](const std::stop_token& stop,
                                            const std::vector<std::uint8_t>& bytes) {
    d_->upgrade.SendOverNetwork(stop, *client, bytes, command);
  };
  return d_->StartUpgrade(package, send) ? 0 : -1;
}

int VarkelManager::ZeltoUpgradeLidar(const QUrl& fileUrl) {
  if (!d_->CanUpgradeSmallSensor()) {
    setErrorMsg(QStringLiteral("lidar is not connected, or lidar is upgrade"));
    return -1;
  }
  const auto package = OpenPackage(fileUrl);
  if (!package) return 0;
  const auto send = [this](const std::stop_token& stop, const std::vector<std::uint8_t>& bytes) {
    d_->UpgradeSmallSensor(stop, bytes);
  };
  return d_->StartUpgrade(package, send) ? 0 : -1;
}

int VarkelManager::MarvoUpgradeLidar(const QUrl& fileUrl) {
  if (!d_->CanUpgradeSmallSensor() || !d_->link.KtcExchange()) {
    setErrorMsg(QStringLiteral("lidar is not connected, or lidar is upgrading"));
    return -1;
  }
  const auto package = OpenPackage(fileUrl);
  if (!package || package->size() < static_cast<qint64>(varkel::kMarvoHeaderSize)) {
    setErrorMsg(package ? QStringLiteral("Upgrade package too small")
                        : QStringLiteral("Failed to open upgrade file"));
    return -1;
  }
  const auto send = [this](const std::stop_token& stop, const std::vector<std::uint8_t>& bytes) {
    d_->marvo.Run(stop, bytes, d_->upgrade.Run());
  };
  return d_->StartUpgrade(package, send) ? 0 : -1;
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
  const auto found = varkel::BackgroundCalls().find(operation);
  if (found == varkel::BackgroundCalls().end()) {
    emit callFinished(operation, {});
    return;
  }
  auto result = std::make_shared<QVariant>();
  d_->InBackground([this, call = found->second, arguments, result] { *result = call(*this, arguments); },
                   [this, operation, result] { emit callFinished(operation, *result); });
}
