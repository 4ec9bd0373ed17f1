#pragma once

#include <QString>
#include <atomic>
#include <string>

#include "VarkelCore/src/actions/console_commands.h"
#include "VarkelCore/src/actions/log_downloads.h"
#include "VarkelCore/src/actions/restart_commands.h"
#include "VarkelCore/src/catalogue/model_choice.h"
#include "VarkelCore/src/catalogue/model_names.h"
#include "VarkelCore/src/pages/page_check.h"
#include "VarkelCore/src/pages/page_input.h"
#include "VarkelCore/src/pages/page_models.h"
#include "VarkelCore/src/pages/page_read_queue.h"
#include "VarkelCore/src/pages/page_reading.h"
#include "VarkelCore/src/pages/page_saving.h"
#include "VarkelCore/src/pages/search_model.h"
#include "VarkelCore/src/pages/table_findings.h"
#include "VarkelCore/src/pages/user_edits.h"
#include "VarkelCore/src/session/connection_check.h"
#include "VarkelCore/src/session/connection_memory.h"
#include "VarkelCore/src/session/connector.h"
#include "VarkelCore/src/session/recording.h"
#include "VarkelCore/src/session/session_disconnect.h"
#include "VarkelCore/src/small_sensor/background_functions.h"
#include "VarkelCore/src/small_sensor/small_sensor_info.h"
#include "VarkelCore/src/snapshots/snapshots.h"
#include "VarkelCore/src/tasks/background_work.h"
#include "VarkelCore/src/tasks/signal_report.h"
#include "VarkelCore/src/upgrade/firmware_upgrade.h"
#include "VarkelCore/src/upgrade/sensor_return.h"
#include "VarkelCore/src/upgrade/upgraded_restart.h"
#include "VarkelCore/src/values/model_selection.h"
#include "VarkelCore/src/varkel_manager.h"

/// The controller's collaborators and the signals that announce what they do. Each needs only earlier ones,
/// and the controller itself for its calls and signals, once it is complete.
struct VarkelManager::Parts {
  Parts(VarkelManager& face, bool flag, std::string path);

  VarkelManager& manager;
  const bool creation_flag;
  const std::string config_file_path;
  QString error_message;
  QString success_message;

  varkel::EventQueue events;
  varkel::SignalReport report;
  varkel::Activity activity;
  varkel::WorkerThreads workers;
  varkel::BackgroundWork background;

  varkel::ModelChoice model_choice;
  varkel::ModelSelection models;
  varkel::TableFindings findings;
  std::atomic<int> connect_type = varkel::kNetwork;

  varkel::ConnectionMemory memory;
  varkel::ByteLogSwitch log_bytes = false;
  varkel::Recording recording;
  varkel::SensorConnection connection;
  const varkel::SessionDisconnect disconnect;
  varkel::ConnectionCheck connection_check;

  varkel::PageModels page_models;
  varkel::SearchModel search;
  const varkel::PageReader reader;
  varkel::PageReading reading;
  varkel::UserEdits edits;
  varkel::PageInput input;
  const varkel::PageCheck page_check;
  const varkel::PageWriter writer;
  varkel::PageSaving saving;
  varkel::PageReadQueue page_reads;

  const varkel::RestartCommands restart;
  varkel::ConsoleCommands console;
  varkel::LogDownloads downloads;

  varkel::SmallSensor small_sensor;
  varkel::BackgroundFunctions small_sensor_functions;
  varkel::SmallSensorInfo small_sensor_info;

  varkel::Connector connector;
  varkel::SensorReturn sensor_return;
  const varkel::UpgradedRestart upgraded_restart;
  varkel::FirmwareUpgrade upgrade;
  varkel::Snapshots snapshots;

 private:
  /// Emits the signal on the window's thread.
  template <auto signal, typename... Arguments>
  void Raise(Arguments... arguments) {
    events.Post([this, arguments...] { (manager.*signal)(arguments...); });
  }
  /// A function that does so, with the signal's arguments.
  template <auto signal>
  auto Raiser() {
    return [this](auto... arguments) { this->template Raise<signal>(arguments...); };
  }
  /// The same for callers on that thread: emits at once.
  template <auto signal>
  auto Emitter() {
    return [this](auto... arguments) { (manager.*signal)(arguments...); };
  }
};
