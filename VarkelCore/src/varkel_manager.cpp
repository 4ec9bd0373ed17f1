#include "VarkelCore/src/varkel_manager.h"

#include <atomic>
#include <exception>
#include <utility>
#include <vector>

#include "VarkelCore/src/actions/config_file_query.h"
#include "VarkelCore/src/actions/console_commands.h"
#include "VarkelCore/src/actions/log_downloads.h"
#include "VarkelCore/src/actions/sensor_restart.h"
#include "VarkelCore/src/catalogue/model_names.h"
#include "VarkelCore/src/catalogue/variable_search.h"
#include "VarkelCore/src/pages/edit_check.h"
#include "VarkelCore/src/pages/page_check.h"
#include "VarkelCore/src/pages/page_description.h"
#include "VarkelCore/src/pages/page_models.h"
#include "VarkelCore/src/pages/page_read_queue.h"
#include "VarkelCore/src/pages/page_reading.h"
#include "VarkelCore/src/pages/page_saving.h"
#include "VarkelCore/src/pages/save_check.h"
#include "VarkelCore/src/pages/search_model.h"
#include "VarkelCore/src/pages/table_findings.h"
#include "VarkelCore/src/pages/user_edits.h"
#include "VarkelCore/src/pages/value_editor.h"
#include "VarkelCore/src/pages/variable_details.h"
#include "VarkelCore/src/session/connection_settings.h"
#include "VarkelCore/src/session/connector.h"
#include "VarkelCore/src/session/recent_addresses.h"
#include "VarkelCore/src/small_sensor/background_functions.h"
#include "VarkelCore/src/small_sensor/small_sensor_info.h"
#include "VarkelCore/src/snapshots/snapshots.h"
#include "VarkelCore/src/tasks/background_work.h"
#include "VarkelCore/src/tasks/signal_report.h"
#include "VarkelCore/src/upgrade/firmware_upgrade.h"
#include "VarkelCore/src/upgrade/sensor_return.h"
#include "VarkelCore/src/values/logged_exchange.h"
#include "VarkelCore/src/values/model_selection.h"
#include "libquarn/Platform/src/text_number.h"
#include "libquarn/Platform/src/trace.h"

using namespace varkel;

namespace {

/// Limits the load on the sensor.
constexpr std::chrono::milliseconds kPageRefreshPeriod{100};

QVariantList TextList(const std::vector<std::string>& texts) {
  QVariantList list;
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

}  // namespace

/// The controller's collaborators, ordered such that each needs only earlier ones.
struct VarkelManager::Parts {
  Parts(VarkelManager& face, bool flag, std::string path);

  using Signal = void (VarkelManager::*)();
  /// Emits a signal on the window's thread.
  void Raise(Signal notify) {
    events.Post([this, notify] { std::invoke(notify, manager); });
  }
  /// A function that emits it.
  std::function<void()> Raiser(Signal notify) {
    return [this, notify] { Raise(notify); };
  }
  /// Disconnects that session's sensor unless it is already disconnected.
  void Disconnect(const std::shared_ptr<SensorSession>& session) {
    events.Post([this, session] {
      if (connection.session() == session) manager.Stop();
    });
  }

  /// Restarts that session's sensor with the table's command and, on success (0), disconnects it.
  int Restart(const std::shared_ptr<SensorSession>& session, const ConfigParser& catalogue) {
    const int code = RestartSensor(catalogue, *session, report);
    if (code == 0) Disconnect(session);
    return code;
  }

  /// The same after an upgrade; then waits for a network sensor to come back.
  int RestartUpgraded(const std::shared_ptr<SensorSession>& session,
                      const FirmwareUpgrade::Catalogue& catalogue) {
    if (!session->has_pages()) return Restart(session, *catalogue);
    const SensorIdentity before = ReadIdentity(*session->ktc_client(), catalogue);
    const int code = RestartSensor(*catalogue, *session, report);
    if (code != 0) return code;
    events.Post([this, session, catalogue, before] {
      if (connection.session() != session) return;
      manager.Stop();
      sensor_return.Await(settings, catalogue, before);
    });
    return 0;
  }

  VarkelManager& manager;
  const bool creation_flag;
  const std::string config_file_path;

  // Used on the window's thread only.
  const SettingsFile settings_file;
  std::string settings_fault;  ///< why the default settings are used
  ConnectionSettings settings;
  RecentAddresses recent_addresses;
  std::string dialled;  ///< the address of the last attempt
  QString error_message;
  QString success_message;
  QString vm_now_name;

  // Shared with workers: atomics and thread-safe classes.
  EventQueue events;
  SignalReport report;
  std::atomic<int> connect_type = kNetwork;
  ByteLogSwitch log_bytes = false;
  quarn::lidar::CaptureRecorder recorder;
  std::atomic<bool> checking = false;
  ModelSelection models;
  PageModels page_models;
  SearchModel search{models};
  Activity activity;
  WorkerThreads workers;
  TableFindings findings{workers, events};
  BackgroundWork background;
  SensorConnection connection;

  const PageReader reader;
  PageReading reading;
  PageReadQueue page_reads;
  const ValueEditor editor;
  UserEdits edits;
  SaveCheck save_check;
  const PageCheck page_check;
  const PageWriter writer;
  const PageSaving saving;

  ConsoleCommands console;
  LogDownloads downloads;
  FirmwareUpgrade upgrade;
  SensorReturn sensor_return;

  SmallSensor small_sensor;
  BackgroundFunctions small_sensor_functions;
  SmallSensorInfo small_sensor_info;

  Snapshots snapshots;

  Connector connector;
};

VarkelManager::Parts::Parts(VarkelManager& face, bool flag, std::string path)
    : manager(face),
      creation_flag(flag),
      config_file_path(std::move(path)),
      settings(settings_file.Load(&settings_fault)),
      report(events,
             {[this](const QString& text, const QString& type) { emit manager.sendLogMessage(text, type); },
              [this](const QString& text) { manager.setErrorMsg(text); },
              [this](const QString& text) { manager.setSuccessMsg(text); }}),
      recorder([this](const std::string& end) {
        report.Error(end);
        report.Log(end, "ERROR");
        Raise(&VarkelManager::isRecordingChanged);
      }),
      models([this] { page_models.ValuesChanged(); }),
      page_models(face, models, events),
      activity({Raiser(&VarkelManager::isUpgradingChanged), Raiser(&VarkelManager::isDownloadLogChanged)}),
      background(workers, events, [this] { emit manager.isWorkingChanged(); }),
      reader({report, Raiser(&VarkelManager::fovConfigChanged)}),
      reading(connection, models, connect_type, reader),
      page_reads(
          workers,
          [this](int module, const std::function<bool()>& replaced) {
            if (reading.ReadPage(module, replaced)) Raise(&VarkelManager::myMapChanged);
          },
          [this](int module) {
            events.Post([this, module] {
              manager.CheckSave();
              emit manager.isReadingPageChanged();
              emit manager.pageReadFinished(module);
            });
          }),
      editor(report),
      edits([this] { return models.model(); },
            [this] {
              page_models.ValuesChanged();
              emit manager.editsChanged();
              emit manager.fovConfigChanged();
            }),
      page_check({report,
                  [this](const VarInfo& var, const std::string& verdict) {
                    events.Post([this, name = QString::fromStdString(var.var_name)] {
                      emit manager.someVarOutOfRange(name);
                    });
                    page_models.Refuse(var, verdict);
                  }}),
      writer({reader, report}),
      saving(connection, models, activity, writer, report),
      console(connection, activity, models, connect_type, report,
              {Raiser(&VarkelManager::sendCommandHistoryChanged),
               [this](const auto& session) { Disconnect(session); }}),
      downloads(connection, activity, workers, report,
                {Raiser(&VarkelManager::downloadFinished),
                 [this](bool complete) {
                   events.Post([this, complete] { emit manager.downloadOperationLogFinished(complete); });
                 }}),
      upgrade(
          report, activity, workers, connect_type,
          {[this](const auto& session, const auto& catalogue) { return RestartUpgraded(session, catalogue); },
           [this](const auto& session) { Disconnect(session); }}),
      sensor_return(workers, events, {report, log_bytes, activity, &recorder},
                    [this] { manager.ConnectLidar(); }, {}),
      small_sensor(
          report, activity, [this] { return connection.session(); }, connect_type),
      small_sensor_functions(small_sensor, background),
      small_sensor_info(
          report, activity,
          {Raiser(&VarkelManager::zeltoLidarInfoChanged), Raiser(&VarkelManager::isGetPBLVersionChanged)}),
      snapshots({connection, models, settings, activity, background, events, report, log_bytes}),
      connector(connection, workers, {report, log_bytes, activity, &recorder},
                {{kPageRefreshPeriod,
                  [this](SensorSession& session, const std::stop_token& stop) {
                    if (reading.RefreshShownPage(session, stop)) Raise(&VarkelManager::myTimerMapChanged);
                  }},
                 {SmallSensorInfo::kPeriod,
                  [this](SensorSession& session, const std::stop_token& stop) {
                    small_sensor_info.Round(session, stop);
                  }}},
                {[this] {
                   Raise(&VarkelManager::myMapChanged);
                   Raise(&VarkelManager::isConnectedChanged);
                 },
                 Raiser(&VarkelManager::isConnectedChanged)}) {
  connect(&manager, &VarkelManager::lidarModelChanged, &snapshots, &Snapshots::clear);
  connect(&manager, &VarkelManager::editsChanged, &snapshots, &Snapshots::showEdits);
  connect(&manager, &VarkelManager::isConnectedChanged, &recent_addresses, [this] {
    const auto session = connection.session();
    if (session && session->ktc_client()) recent_addresses.add(QString::fromStdString(dialled));
  });
}  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): std::function frees

// Life

VarkelManager* VarkelManager::GetInstance(bool flag, const std::string& config_path) {
  static auto* const instance = new VarkelManager(flag, config_path);  // the window deletes it
  return instance;
}

VarkelManager::VarkelManager(bool flag, const std::string& config_path)
    : d_(std::make_unique<Parts>(*this, flag, config_path)) {
  connect(this, &VarkelManager::editsChanged, &d_->edits, &UserEdits::changed);
  emit initInfoChanged();
  if (d_->settings_fault.empty()) return;
  // Reported once the event loop runs: by then the user interface is listening.
  QMetaObject::invokeMethod(this, "sendLogMessage", Qt::QueuedConnection,
                            Q_ARG(QString, QString::fromStdString(d_->settings_fault)),
                            Q_ARG(QString, QStringLiteral("WARNING")));
}

VarkelManager::~VarkelManager() {
  d_->events.Close();
  d_->workers.RequestStop();
  d_->connection.End();
  d_->workers.StopAndJoin();
}

void VarkelManager::SetVMNowName(const QString& name) {
  if (name.isEmpty() || !(LidarModelList().contains(name) || IsHostModel(name.toStdString()))) return;
  InitConfigFileParser(name);
  d_->vm_now_name = name;
  emit lidarModelListChanged();
}

// Connection settings

QString VarkelManager::ip_address() const {
  return QString::fromStdString(d_->settings.ip_address);
}
void VarkelManager::set_ip_address(const QString& text) {
  d_->settings.ip_address = text.toStdString();
}
QString VarkelManager::udpPort() const {
  return QString::number(d_->settings.udp_port);
}
void VarkelManager::setUdpPort(const QString& text) {
  d_->report.Guard([this, &text] {
    d_->settings.udp_port = static_cast<std::uint16_t>(quarn::lidar::TextToInt(text.toStdString()));
  });
}
QString VarkelManager::port() const {
  return QString::fromStdString(d_->settings.port);
}
void VarkelManager::set_port(const QString& text) {
  d_->settings.port = text.toStdString();
}
QString VarkelManager::serial_port_485() const {
  return QString::fromStdString(d_->settings.serial_port_485);
}
void VarkelManager::set_serial_port_485(const QString& text) {
  d_->settings.serial_port_485 = text.toStdString();
}
QString VarkelManager::serial_port_232() const {
  return QString::fromStdString(d_->settings.serial_port_232);
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
  return d_->vm_now_name.isEmpty() ? TextList(ListModels()) : QVariantList{d_->vm_now_name};
}

void VarkelManager::InitConfigFileParser(const QString& model_name) {
  const std::string model = model_name.toStdString();
  d_->connect_type = ConnectTypeOf(model);
  d_->sensor_return.Cancel();
  const LoadReport loaded = d_->models.Select(model);
  d_->findings.Check(std::string(kTableFolder) + "/" + model + ".csv");
  d_->page_models.Drop();
  d_->small_sensor_info.SetModel(model);
  emit zeltoLidarInfoChanged();
  emit connectTypeChanged();
  emit lidarClearModel();
  emit lidarModelChanged();
  emit lidarShowModel();
  d_->console.Forget();
  emit editsChanged();
  // Posted for later: at start-up the table is loaded before the window that shows this.
  d_->events.PostLater([this, loaded] {
    if (!loaded.fault.empty()) d_->report.Error(loaded.fault);
    for (const std::string& error : loaded.errors) d_->report.Log(error, "ERROR");
    for (const std::string& warning : loaded.warnings) d_->report.Log(warning, "WARNING");
  });
}

QVariantList VarkelManager::level1List() const {
  const auto catalogue = d_->models.catalogue();
  return catalogue ? PageTitles(*catalogue) : QVariantList();
}
QVariantList VarkelManager::level2List() const {
  const auto catalogue = d_->models.catalogue();
  return catalogue ? PageRows(*catalogue) : QVariantList();
}
QVariantList VarkelManager::logRepeaterModel() const {
  const auto catalogue = d_->models.catalogue();
  return catalogue ? DownloadableLogs(*catalogue) : QVariantList();
}
bool VarkelManager::CheckVarExistsInConfigFileByName(const QString& qs_var_info) {
  const auto catalogue = d_->models.catalogue();
  return catalogue && HasVariableNamed(*catalogue, qs_var_info.toStdString());
}
QString VarkelManager::getLidarSN() {
  const auto catalogue = d_->models.catalogue();
  return catalogue ? QString::fromStdString(PageValue(*catalogue, "SN")) : QString();
}
QString VarkelManager::getLidarPN() {
  const auto catalogue = d_->models.catalogue();
  return catalogue ? QString::fromStdString(PageValue(*catalogue, "PN")) : QString();
}
QString VarkelManager::getVMNowName() {
  return d_->vm_now_name;
}
int VarkelManager::connectType() const {
  return d_->connect_type;
}

// Connection

bool VarkelManager::ConnectLidar() {
  if (GetIsConnectingLidar()) return false;
  d_->sensor_return.Cancel();
  if (const auto model = d_->models.model()) model->values.SensorChanged();
  d_->dialled = d_->settings.ip_address;
  if (!d_->connector.Start(d_->connect_type, d_->settings)) return false;
  const std::string fault = d_->settings_file.Save(d_->settings);
  if (!fault.empty()) d_->report.Log(fault, "WARNING");
  return true;
}

bool VarkelManager::CheckLidarConnection() {
  const auto session = d_->connection.session();
  return session && session->Answers();
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
  d_->save_check.GiveUp();
  d_->edits.Forget();
  if (const auto model = d_->models.model()) {
    if (type != kSerialLines) model->values.SerialNumberUnknown();
    type == kNetwork ? model->values.Disconnected() : model->values.SensorChanged();
  }
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
  const QString path = fileUrl.toLocalFile();
  const std::string fault = d_->recorder.Start(path.toStdU16String());
  if (fault.empty()) d_->report.Log("Recording to " + path.toStdString(), "INFO");
  emit isRecordingChanged();
  return QString::fromStdString(fault);
}
void VarkelManager::StopRecording() {
  if (!d_->recorder.is_recording()) return;
  d_->recorder.Stop();
  d_->report.Log("Recording ended", "INFO");
  emit isRecordingChanged();
}
bool VarkelManager::isRecording() const {
  return d_->recorder.is_recording();
}

void VarkelManager::StartGetConfigFile() {
  const auto session = d_->connection.session();
  if (session) d_->workers.Start([session](const std::stop_token&) { QueryConfigFile(*session); });
}

// Reading

QVariantList VarkelManager::myMap() const {
  const auto model = d_->models.model();
  return model ? VariableMaps(*model) : QVariantList();
}

QVariantMap VarkelManager::variableMap(int module, int group, int index) const {
  const auto model = d_->models.model();
  const VarInfo* var = model ? VariableAt(*model->catalogue, module, group, index) : nullptr;
  return var != nullptr ? VariableMap(*model, *var) : QVariantMap();
}
QVariantList VarkelManager::variableDetails(int module, int group, int index) const {
  const auto model = d_->models.model();
  const VarInfo* var = model ? VariableAt(*model->catalogue, module, group, index) : nullptr;
  return var != nullptr ? VariableDetails(*model, *var) : QVariantList();
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
  const auto catalogue = d_->models.catalogue();
  const VarInfo* var = catalogue ? VariableAt(*catalogue, i, j, k) : nullptr;
  return var != nullptr && var->timer_update;
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
  const auto model = d_->models.model();
  if (!model) return;
  VarInfo* const var = VariableAt(*model->catalogue, level1, level2, level3);
  const auto edit = [&] { d_->editor.SetText(*model, type, level1, level2, level3, text.toStdString()); };
  const auto do_edit = [&] {
    if (var == nullptr || var->switch_var == nullptr) {
      d_->edits.Do(model, {var}, edit);
    } else {
      d_->edits.Do(model, {var, var->switch_var}, edit);
    }
  };
  d_->report.Guard(var == nullptr ? std::function<void()>(edit) : do_edit);
  const QString fault = var != nullptr && type == ValueEditor::kValue && model->values.IsEdited(*var)
                            ? TypingFault(*var, text.toStdString())
                            : QString();
  d_->page_models.ValuesChanged();
  if (!fault.isEmpty()) d_->page_models.Refuse(*var, fault.toStdString());
  emit editsChanged();
}

void VarkelManager::ClearSetMap() {
  const auto model = d_->models.model();
  const bool angles_went_back = model && model->values.Cancel();
  d_->edits.Forget();
  d_->page_models.ValuesChanged();
  emit editsChanged();
  if (angles_went_back) emit fovConfigChanged();
}

int VarkelManager::getSetMapSize() {
  const auto model = d_->models.model();
  return model ? static_cast<int>(model->values.pending_count()) : 0;
}

void VarkelManager::Run(int module) {
  const auto save = d_->saving.Prepare(module);
  if (!save) return;
  d_->saving.Run(*save);
  AnnounceSave();
}

void VarkelManager::RunInBackground(int module) {
  const auto save = d_->saving.Prepare(module);
  if (!save) {
    emit pageWriteFinished(module);
    return;
  }
  const auto saved = std::make_shared<SavedEdits>();
  d_->background.Start([this, save, saved] { *saved = d_->saving.Run(*save); },
                       [this, save, saved, module] {
                         d_->save_check.Saved(save->model, module, std::move(*saved));
                         AnnounceSave();
                         emit pageWriteFinished(module);
                       });
}

void VarkelManager::AnnounceSave() {
  emit sendCommandHistoryChanged();
  emit editsChanged();
  emit myMapChanged();
}

void VarkelManager::CheckSave() {
  const auto outcome = d_->save_check.AfterReading(d_->page_reads.is_reading());
  if (!outcome) return;
  emit sendLogMessage("Read back after the save: " + outcome->text,
                      outcome->good ? QStringLiteral("INFO") : QStringLiteral("WARNING"));
  emit saveReadBack(outcome->module, outcome->text, outcome->differs);
}

QObject* VarkelManager::edits() const {
  return &d_->edits;
}

QStringList VarkelManager::unreadFields(int module) const {
  const auto model = d_->models.model();
  QStringList names;
  if (!model) return names;
  for (const std::string& name : UnreadFields(*model, module)) names.append(QString::fromStdString(name));
  return names;
}

void VarkelManager::SetMultiFovConfig(int index, const QString& fov) {
  const auto model = d_->models.model();
  if (!model) return;
  bool taken = true;
  const auto edit = [&] { taken = d_->editor.SetFov(*model, index, fov.toStdString()); };
  if (index >= 0 && static_cast<std::size_t>(index) < FovAngles().size()) {
    d_->edits.Do(model, {static_cast<std::size_t>(index)}, edit);
  } else {
    edit();
  }
  if (taken) {
    d_->page_models.ValuesChanged();
    emit editsChanged();
    return;
  }
  setErrorMsg(QStringLiteral("Input value of fov is invalid"));
  emit fovConfigChanged();
}

bool VarkelManager::CheckVarIsWithinRange(const QString& qs_var_info, const QString& search_type) {
  const auto model = d_->models.model();
  if (!model) return true;
  const std::string key = qs_var_info.toStdString();
  const VarInfo* var = searchVarPtr(*model->catalogue, key, search_type.toStdString());
  return d_->page_check.CheckVarIsWithinRange(*model, var, key);
}

bool VarkelManager::CheckModuleVarsWithinRange(int module) {
  const auto model = d_->models.model();
  return !model || d_->page_check.CheckModuleVarsWithinRange(*model, module);
}

QObject* VarkelManager::pageModel(int module) {
  return d_->page_models.Get(module);
}

QVariantList VarkelManager::installedVersions() const {
  const auto model = d_->models.model();
  return model ? InstalledVersions(*model) : QVariantList();
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
  d_->background.Start([this, command = cmd_qs.toStdString(),
                        payload = payload_qs.toStdString()] { d_->console.Send(command, payload); },
                       [] {});
}

// Restart, reset, logs

int VarkelManager::Restart() {
  const auto session = d_->connection.session();
  const auto catalogue = d_->models.catalogue();
  return session && catalogue ? d_->Restart(session, *catalogue) : -1;
}

int VarkelManager::Reset() {
  const auto session = d_->connection.session();
  const auto catalogue = d_->models.catalogue();
  return session && catalogue ? ResetSensor(*catalogue, *session, d_->report) : -1;
}

void VarkelManager::RestartInBackground() {
  d_->background.Start([this] { Restart(); }, [] {});
}
void VarkelManager::ResetInBackground() {
  d_->background.Start([this] { Reset(); }, [] {});
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

// Small sensors

QObject* VarkelManager::history() const {
  return &d_->page_models.history();
}
QObject* VarkelManager::search() const {
  return &d_->search;
}
QObject* VarkelManager::recentAddresses() const {
  return &d_->recent_addresses;
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
