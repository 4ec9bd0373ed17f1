#include "VarkelCore/src/varkel_manager.h"

#include <exception>
#include <type_traits>
#include <utility>
#include <vector>

#include "VarkelCore/src/actions/config_file_query.h"
#include "VarkelCore/src/catalogue/model_names.h"
#include "VarkelCore/src/catalogue/variable_search.h"
#include "VarkelCore/src/pages/page_description.h"
#include "VarkelCore/src/pages/page_writer.h"
#include "VarkelCore/src/pages/variable_details.h"
#include "VarkelCore/src/upgrade/package_file.h"
#include "VarkelCore/src/values/logged_exchange.h"
#include "VarkelCore/src/varkel_parts.h"
#include "libquarn/Platform/src/trace.h"

using namespace varkel;

namespace {

template <typename List = QVariantList>
List TextList(const std::vector<std::string>& texts) {
  List list;
  for (const std::string& text : texts) list.append(QString::fromStdString(text));
  return list;
}

QVariantList RowMaps(const std::vector<InfoRow>& rows) {
  QVariantList maps;
  for (const InfoRow& row : rows) {
    maps.append(QVariantMap{{QStringLiteral("label"), QString::fromStdString(row.label)},
                            {QStringLiteral("value"), QString::fromStdString(row.value)}});
  }
  return maps;
}

QString PageValueText(const std::shared_ptr<ConfigParser>& catalogue, const char* var_name) {
  return catalogue ? QString::fromStdString(PageValue(*catalogue, var_name)) : QString();
}

/// What `show` makes of the selected model or its table; empty without one.
template <typename Source, typename Show>
auto Shown(const std::shared_ptr<Source>& source, Show show) {
  return source ? show(*source) : std::invoke_result_t<Show, Source&>();
}

/// What `show` makes of the variable at [page][group][index]; empty without one.
template <typename Show>
auto Shown(const std::shared_ptr<Model>& model, int page, int group, int index, Show show) {
  const VarInfo* const var = model ? VariableAt(*model->catalogue, page, group, index) : nullptr;
  return var != nullptr ? show(*model, *var) : std::invoke_result_t<Show, const Model&, const VarInfo&>();
}

}  // namespace

// Life

VarkelManager* VarkelManager::GetInstance(bool flag, const std::string& config_path) {
  static auto* const instance = new VarkelManager(flag, config_path);  // the window deletes it
  return instance;
}

VarkelManager::VarkelManager(bool flag, const std::string& config_path)
    : d_(std::make_unique<Parts>(*this, flag, config_path)) {
  emit initInfoChanged();
  if (d_->memory.load_fault().empty()) return;
  // Reported once the event loop runs: by then the user interface is listening.
  QMetaObject::invokeMethod(this, "sendLogMessage", Qt::QueuedConnection,
                            Q_ARG(QString, QString::fromStdString(d_->memory.load_fault())),
                            Q_ARG(QString, QStringLiteral("WARNING")));
}

VarkelManager::~VarkelManager() {
  d_->events.Close();
  d_->workers.RequestStop();
  d_->connection.End();
  d_->workers.StopAndJoin();
}

// Connection settings

QString VarkelManager::ip_address() const {
  return QString::fromStdString(d_->memory.settings().ip_address);
}
void VarkelManager::set_ip_address(const QString& text) {
  d_->memory.settings().ip_address = text.toStdString();
}
QString VarkelManager::udpPort() const {
  return QString::number(d_->memory.settings().udp_port);
}
void VarkelManager::setUdpPort(const QString& text) {
  d_->report.Guard([&] { d_->memory.settings().udp_port = UdpPortOf(text.toStdString()); });
}
QString VarkelManager::port() const {
  return QString::fromStdString(d_->memory.settings().port);
}
void VarkelManager::set_port(const QString& text) {
  d_->memory.settings().port = text.toStdString();
}
QString VarkelManager::serial_port_485() const {
  return QString::fromStdString(d_->memory.settings().serial_port_485);
}
void VarkelManager::set_serial_port_485(const QString& text) {
  d_->memory.settings().serial_port_485 = text.toStdString();
}
QString VarkelManager::serial_port_232() const {
  return QString::fromStdString(d_->memory.settings().serial_port_232);
}
void VarkelManager::set_serial_port_232(const QString& text) {
  d_->memory.settings().serial_port_232 = text.toStdString();
}
QString VarkelManager::baud_rate() const {
  return QString::number(d_->memory.settings().baud_rate);
}
void VarkelManager::set_baud_rate(const QString& text) {
  d_->memory.settings().baud_rate = text.toInt();
}

// Model

void VarkelManager::SetVMNowName(const QString& name) {
  const std::string model = name.toStdString();
  if (!d_->model_choice.MayBeHostModel(model)) return;
  InitConfigFileParser(name);
  d_->model_choice.set_host_model(model);
  emit lidarModelListChanged();
}

QVariantList VarkelManager::LidarModelList() const {
  return TextList(d_->model_choice.Models());
}

void VarkelManager::InitConfigFileParser(const QString& model_name) {
  const std::string model = model_name.toStdString();
  d_->connect_type = ConnectTypeOf(model);
  d_->sensor_return.Cancel();
  const LoadReport loaded = d_->models.Select(model);
  d_->page_models.Drop();
  d_->small_sensor_info.SetModel(model);
  emit zeltoLidarInfoChanged();
  emit connectTypeChanged();
  emit lidarClearModel();
  emit lidarModelChanged();
  emit lidarShowModel();
  d_->console.Forget();
  emit editsChanged();
  d_->findings.Check(loaded);
}

QVariantList VarkelManager::level1List() const {
  return Shown(d_->models.catalogue(), PageTitles);
}
QVariantList VarkelManager::level2List() const {
  return Shown(d_->models.catalogue(), PageRows);
}
QVariantList VarkelManager::logRepeaterModel() const {
  return Shown(d_->models.catalogue(), DownloadableLogs);
}
bool VarkelManager::CheckVarExistsInConfigFileByName(const QString& qs_var_info) {
  return Shown(d_->models.catalogue(), [name = qs_var_info.toStdString()](const ConfigParser& catalogue) {
    return HasVariableNamed(catalogue, name);
  });
}
QString VarkelManager::getLidarSN() {
  return PageValueText(d_->models.catalogue(), "SN");
}
QString VarkelManager::getLidarPN() {
  return PageValueText(d_->models.catalogue(), "PN");
}
QString VarkelManager::getVMNowName() {
  return QString::fromStdString(d_->model_choice.host_model());
}
int VarkelManager::connectType() const {
  return d_->connect_type;
}

// Connection

bool VarkelManager::ConnectLidar() {
  if (GetIsConnectingLidar()) return false;
  d_->sensor_return.Cancel();
  if (const auto model = d_->models.model()) model->values.SensorChanged();
  if (!d_->connector.Start(d_->connect_type, d_->memory.settings())) return false;
  d_->memory.Dialled();
  return true;
}

bool VarkelManager::CheckLidarConnection() {
  return d_->connection_check.SensorAnswers();
}
void VarkelManager::CheckConnectionInBackground() {
  d_->connection_check.Start();
}

void VarkelManager::Stop() {
  const int type = d_->connect_type;
  if (type != kNetwork && type != kSerialLines && type != kKtcToSmallSensor) {
    emit sendLogMessage(QStringLiteral("connect type is not support"), QStringLiteral("INFO"));
    return;
  }
  d_->sensor_return.Cancel();
  try {
    d_->connection.End();
  } catch (const std::exception&) {
    quarn::platform::TraceLine("stop error");
  }
  d_->small_sensor_info.Reset();
  d_->saving.Disconnected();
  d_->input.Disconnected(type);
  d_->connect_type = ConnectTypeOf(d_->models.model_name());  // the next connection has the model's type
  emit isConnectedChanged();
  if (type == kNetwork) {
    emit myMapChanged();
    emit fovConfigChanged();
  } else {
    emit zeltoLidarInfoChanged();
  }
  emit editsChanged();
  emit sendLogMessage(QStringLiteral("Lidar disconnected"), QStringLiteral("INFO"));
}

bool VarkelManager::GetIsConnectingLidar() {
  return d_->connection.is_connecting();
}
bool VarkelManager::IsConnected() const {
  return d_->connection.session() != nullptr;
}
void VarkelManager::SetLogBytesFlowStatus(bool flag) {
  d_->log_bytes = flag;
}
QString VarkelManager::decodedLogLines(const QString& sent, const QString& received) const {
  const auto catalogue = d_->models.catalogue();
  return catalogue ? QString::fromStdString(DecodeLogLines(ExchangeDecoder(catalogue), sent.toStdString(),
                                                           received.toStdString()))
                   : QString();
}

// Recording

QString VarkelManager::StartRecording(const QUrl& fileUrl) {
  return d_->recording.Start(fileUrl.toLocalFile());
}
void VarkelManager::StopRecording() {
  d_->recording.Stop();
}
bool VarkelManager::isRecording() const {
  return d_->recording.is_running();
}

void VarkelManager::StartGetConfigFile() {
  const auto session = d_->connection.session();
  if (session) d_->workers.Start([session](const std::stop_token&) { QueryConfigFile(*session); });
}

// Reading

QVariantList VarkelManager::myMap() const {
  return Shown(d_->models.model(), VariableMaps);
}

QVariantMap VarkelManager::variableMap(int module, int group, int index) const {
  return Shown(d_->models.model(), module, group, index, VariableMap);
}
QVariantList VarkelManager::variableDetails(int module, int group, int index) const {
  return Shown(d_->models.model(), module, group, index, VariableDetails);
}

QVariantList VarkelManager::FovList() const {
  const auto model = d_->models.model();
  return AngleTexts(model ? model->values.Fov() : kDefaultFov);
}

void VarkelManager::GetLidarModuleInfo(int module) {
  if (d_->reading.ReadPage(module, [] { return false; })) emit myMapChanged();
}
void VarkelManager::ReadPageInBackground(int module) {
  d_->page_reads.Request(module);
  emit isReadingPageChanged();
}
bool VarkelManager::isWorking() const {
  return d_->background.is_running();
}
bool VarkelManager::isReadingPage() const {
  return d_->page_reads.is_reading();
}
bool VarkelManager::UpdateSingleVarInfo(const QString& qs_var_info, const QString& search_type) {
  return d_->reading.UpdateSingleVarInfo(qs_var_info.toStdString(), search_type.toStdString());
}
bool VarkelManager::isTimerUpdate(int i, int j, int k) {
  return Shown(d_->models.model(), i, j, k,
               [](const Model&, const VarInfo& var) { return var.timer_update; });
}
void VarkelManager::UpdateUI() {
  emit myMapChanged();
}
void VarkelManager::setModuleIndexUse(int module) {
  d_->reading.set_shown_module(module);
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
  d_->input.SetText(type, level1, level2, level3, text.toStdString());
}
void VarkelManager::SetMultiFovConfig(int index, const QString& fov) {
  d_->input.SetAngle(index, fov.toStdString());
}
void VarkelManager::ClearSetMap() {
  d_->input.Cancel();
}
int VarkelManager::getSetMapSize() {
  return Shown(d_->models.model(),
               [](const Model& model) { return static_cast<int>(model.values.pending_count()); });
}
void VarkelManager::Run(int module) {
  d_->saving.Save(module);
}
void VarkelManager::RunInBackground(int module) {
  d_->saving.SaveInBackground(module);
}
QStringList VarkelManager::unreadFields(int module) const {
  return Shown(d_->models.model(),
               [module](const Model& model) { return TextList<QStringList>(UnreadFields(model, module)); });
}
bool VarkelManager::CheckVarIsWithinRange(const QString& qs_var_info, const QString& search_type) {
  return d_->page_check.CheckVarIsWithinRange(qs_var_info.toStdString(), search_type.toStdString());
}
bool VarkelManager::CheckModuleVarsWithinRange(int module) {
  return d_->page_check.CheckModuleVarsWithinRange(module);
}

QObject* VarkelManager::pageModel(int module) {
  return d_->page_models.Get(module);
}

QVariantList VarkelManager::installedVersions() const {
  return Shown(d_->models.model(), InstalledVersions);
}

double VarkelManager::packageSize(const QUrl& fileUrl) const {
  const auto package = PackageFile::Open(fileUrl.toLocalFile());
  return package ? static_cast<double>(package->size()) : -1;
}

// Console

int VarkelManager::CommandLogCnt() const {
  return static_cast<int>(d_->console.console().history().size());
}

QVariantList VarkelManager::SendCommandHistory() const {
  QVariantList records;
  for (const auto& record : d_->console.console().history()) {
    records.append(
        QVariantMap{{QStringLiteral("record_time"), QString::fromStdString(record.time)},
                    {QStringLiteral("send_cmd_history"), QString::fromStdString(record.command)},
                    {QStringLiteral("send_payload_history"), QString::fromStdString(record.payload)}});
  }
  return records;
}

QString VarkelManager::getSendKtcCommandReturnHeader() const {
  return QString::fromStdString(d_->console.console().return_header());
}
QString VarkelManager::decodedReply() const {
  return QString::fromStdString(d_->console.DecodedReply());
}
QString VarkelManager::getSendKtcCommandReturnPayload() const {
  return QString::fromStdString(d_->console.console().return_payload());
}
void VarkelManager::SendCommand(const QString& cmd_qs, const QString& payload_qs) {
  d_->console.Send(cmd_qs.toStdString(), payload_qs.toStdString());
}
void VarkelManager::SendCommandInBackground(const QString& cmd_qs, const QString& payload_qs) {
  d_->background.Start([this, command = cmd_qs.toStdString(), payload = payload_qs.toStdString()] {
    d_->console.Send(command, payload);
  });
}

// Restart, reset, logs

int VarkelManager::Restart() {
  return d_->restart.Restart();
}
int VarkelManager::Reset() {
  return d_->restart.Reset();
}
void VarkelManager::RestartInBackground() {
  d_->background.Start([this] { d_->restart.Restart(); });
}
void VarkelManager::ResetInBackground() {
  d_->background.Start([this] { d_->restart.Reset(); });
}
int VarkelManager::DownloadOperationLog(const QUrl& fileUrl) {
  return d_->downloads.StartOperationLog(d_->models.catalogue(), fileUrl.toLocalFile());
}
int VarkelManager::DownloadOperationLogThread(const QUrl& fileUrl) {
  return d_->downloads.DownloadOperationLog(d_->models.catalogue(), fileUrl.toLocalFile());
}
int VarkelManager::DownloadLog(const QUrl& fileUrl, const QString& type) {
  return d_->downloads.StartLog(d_->models.catalogue(), fileUrl.toLocalFile(), type);
}
bool VarkelManager::IsDownloadLog() const {
  return d_->activity.is_downloading();
}
void VarkelManager::setIsDownloadLog(bool running) {
  d_->activity.SetDownloading(running);
}

// Upgrades

int VarkelManager::UpgradeLidar(const QUrl& fileUrl, int level1, int level2, int level3) {
  const auto catalogue = d_->models.catalogue();
  const VarInfo* var = catalogue ? VariableAt(*catalogue, level1, level2, level3) : nullptr;
  return d_->upgrade.StartFromRow(d_->connection.session(), catalogue, var, fileUrl.toLocalFile());
}
int VarkelManager::ZeltoUpgradeLidar(const QUrl& fileUrl) {
  return d_->upgrade.StartSmallSensor(d_->connection.session(), d_->models.catalogue(),
                                      fileUrl.toLocalFile());
}
int VarkelManager::MarvoUpgradeLidar(const QUrl& fileUrl) {
  return d_->upgrade.StartMarvo(d_->connection.session(), fileUrl.toLocalFile());
}
bool VarkelManager::IsUpgrading() const {
  return d_->activity.is_upgrading();
}
int VarkelManager::upgradeProgress() const {
  return d_->upgrade.progress();
}
int VarkelManager::upgradeProgressTotalLen() const {
  return d_->upgrade.total();
}

// Objects that QML calls directly

QObject* VarkelManager::history() const {
  return &d_->page_models.history();
}
QObject* VarkelManager::search() const {
  return &d_->search;
}
QObject* VarkelManager::edits() const {
  return &d_->edits;
}
QObject* VarkelManager::recentAddresses() const {
  return &d_->memory.recent_addresses();
}
QObject* VarkelManager::smallSensor() const {
  return &d_->small_sensor_functions;
}
QObject* VarkelManager::snapshots() const {
  return &d_->snapshots;
}
QObject* VarkelManager::findings() const {
  return &d_->findings;
}
QObject* VarkelManager::sensorReturn() const {
  return &d_->sensor_return;
}

// Small sensors

QVariantList VarkelManager::ZeltoLidarInfo() const {
  return RowMaps(d_->small_sensor_info.Info());
}
QVariantList VarkelManager::ZeltoLidarVersionInfo() const {
  return RowMaps(d_->small_sensor_info.Versions());
}
bool VarkelManager::isGetPBLVersion() const {
  return d_->small_sensor_info.is_getting_pbl_version();
}
void VarkelManager::ZeltoSetStandby(int standby) {
  d_->small_sensor.SetStandby(standby);
}
void VarkelManager::ZeltoSetSpinRate(int rate) {
  d_->small_sensor.SetSpinRate(rate);
}
void VarkelManager::ZeltoSetReturnMode(int mode) {
  d_->small_sensor.SetReturnMode(mode);
}
int VarkelManager::ZeltoGetCorrection(const QString& path) {
  const auto result = d_->small_sensor.GetCorrection(path.toStdString());
  return result ? 0 : result.error().code;
}
QVariantList VarkelManager::ZeltoGetLidarFunctionSafety() {
  return TextList(d_->small_sensor.GetLidarFunctionSafety().value_or(std::vector<std::string>()));
}
QString VarkelManager::ZeltoGetBaudRate() {
  return QString::fromStdString(d_->small_sensor.GetBaudRate().value_or(""));
}
void VarkelManager::ZeltoSetBaudRateFromUI(const QString& baudRateStr) {
  d_->small_sensor.SetBaudRate(baudRateStr.toStdString());
}
QVariantList VarkelManager::ZeltoGetDestinationConfig(bool silent) {
  return TextList(d_->small_sensor.GetDestinationConfig(silent).value_or(std::vector<std::string>()));
}
bool VarkelManager::ZeltoSetDestinationIPandPort(const QString& ip, int port) {
  return d_->small_sensor.SetDestinationIPandPort(ip.toStdString(), port).has_value();
}
void VarkelManager::ZeltoSetUpgradeMode(int mode) {
  d_->upgrade.set_mode(mode);
}
void VarkelManager::MarvoSetIMURange(int angularRangeIndex, int accelRangeIndex) {
  d_->small_sensor.SetImuRange(angularRangeIndex, accelRangeIndex);
}
