#pragma once

#include <QFile>
#include <QString>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "VarkelCore/src/actions/command_console.h"
#include "VarkelCore/src/actions/log_download.h"
#include "VarkelCore/src/catalogue/model_names.h"
#include "VarkelCore/src/pages/page_check.h"
#include "VarkelCore/src/pages/page_model.h"
#include "VarkelCore/src/pages/page_read_queue.h"
#include "VarkelCore/src/pages/page_reader.h"
#include "VarkelCore/src/pages/page_writer.h"
#include "VarkelCore/src/pages/value_editor.h"
#include "VarkelCore/src/session/connection_settings.h"
#include "VarkelCore/src/session/either_link.h"
#include "VarkelCore/src/session/lidar_connection.h"
#include "VarkelCore/src/session/serial_connection.h"
#include "VarkelCore/src/small_sensor/small_sensor.h"
#include "VarkelCore/src/small_sensor/small_sensor_info.h"
#include "VarkelCore/src/tasks/event_queue.h"
#include "VarkelCore/src/tasks/page_refresher.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/tasks/worker_threads.h"
#include "VarkelCore/src/upgrade/firmware_upgrade.h"
#include "VarkelCore/src/upgrade/marvo_upgrade.h"
#include "VarkelCore/src/values/model_selection.h"
#include "VarkelCore/src/varkel_manager.h"

/// What stands behind the controller's face: one object a capability, and how they meet. Known to
/// varkel_manager.cpp alone.
struct VarkelManager::Private : varkel::UserReport {
  Private(VarkelManager* face_in, bool flag, std::string config_path);

  // UserReport: from any thread.
  void Log(const std::string& text, const std::string& type) override;
  void Bytes(const std::string& line) override;
  void Error(const std::string& text) override;
  void Success(const std::string& text) override;

  /// Raises a signal on the user interface's thread.
  void Emit(void (VarkelManager::*notify)());
  /// Reads a page, but no more of a silent sensor's once `replaced` answers true; false when a guard forbids
  /// it.
  bool ReadPage(int module, const std::function<bool()>& replaced);
  void RefreshRound(const std::stop_token& stop);
  bool IsBusy() const { return upgrade.is_upgrading() || downloading_log; }
  /// The client for an operation that must not meet an upgrade or a download; null when it is refused.
  std::shared_ptr<quarn::lidar::KtcClient> IdleClient() const;
  /// The same over whichever KTC connection stands: a small sensor behind KTC restarts the same way.
  std::shared_ptr<quarn::lidar::KtcClient> ClientToRestart() const;
  /// The client for saving; a refusal is reported.
  std::shared_ptr<quarn::lidar::KtcClient> ClientForWriting();
  bool CanWrite(int module) const;
  /// Hands what the values' events touched to the rows. The user interface's thread only.
  void ShowChanges();
  /// The page check does not pass a variable: the row and whoever listens learn why.
  void Refuse(const varkel::VarInfo& var, const std::string& verdict);
  varkel::PageModel* PageModelOf(int module);
  /// The rows of the model before; they go once the events that may use them have run.
  void DropPageModels();
  void Write(quarn::lidar::KtcClient& client, int module);
  void Send(const std::string& command, const std::string& payload);
  void FetchOperationLog(quarn::lidar::KtcClient& client, const varkel::ConfigParser& catalogue,
                         const QString& archive);
  int RestartNow();
  int ResetNow();
  void SetDownloading(bool running);
  int Download(std::function<void(quarn::lidar::KtcClient&, const varkel::ConfigParser&)> work);
  /// Runs `work` on a worker, with isWorking raised; `finished` follows on the user interface's thread.
  void InBackground(std::function<void()> work, std::function<void()> finished);
  void ReportConversion(const std::function<void()>& operation);
  varkel::VarInfo* searchVarPtr(const varkel::ConfigParser& catalogue, const QString& key,
                                const QString& search_type) const;
  /// The value of the first variable on the pages with that name.
  QString PageValue(const std::string& var_name) const;
  void EndConnections();
  bool CanUpgradeSmallSensor() const;
  using SendPackage = std::function<void(const std::stop_token&, const std::vector<std::uint8_t>&)>;
  /// Claims the upgrade, reads the opened file on a worker and hands it to `send`; a file that can't be read
  /// whole ends the upgrade. False when one runs already.
  bool StartUpgrade(const std::shared_ptr<QFile>& package, const SendPackage& send);
  void UpgradeSmallSensor(const std::stop_token& stop, const std::vector<std::uint8_t>& package);
  std::optional<varkel::CommandConsole::Road> ConsoleRoad();

  VarkelManager* const face;

  // Constant after construction.
  const bool creation_flag;
  const std::string config_file_path;
  const varkel::SettingsFile settings_file;

  // The user interface's thread only.
  std::string settings_fault;  ///< why the settings are the defaults; filled ahead of them
  varkel::ConnectionSettings settings;
  QString error_message;
  QString success_message;
  std::string vm_now_name;
  std::map<int, varkel::PageModel*>
      page_models;  ///< the selected model's, made when asked for; face's children

  // Shared with workers: atomics and classes that guard themselves.
  std::atomic<int> module_index_use = 0;
  std::atomic<int> connect_type = varkel::kNetwork;
  std::atomic<bool> downloading_log = false;
  varkel::ModelSelection selection{[this] { events.Post([this] { ShowChanges(); }); }};
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
  const varkel::ValueEditor editor{*this};
  const varkel::PageWriter writer{{reader, *this}};
  const varkel::PageCheck page_check{
      {*this, [this](const varkel::VarInfo& var, const std::string& verdict) { Refuse(var, verdict); }}};
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
