#include "VarkelCore/src/varkel_parts.h"

#include <chrono>
#include <utility>

#include "VarkelCore/src/actions/sensor_restart.h"

using namespace varkel;

namespace {

using Face = VarkelManager;

/// Limits the load on the sensor.
constexpr std::chrono::milliseconds kPageRefreshPeriod{100};

}  // namespace

VarkelManager::Parts::Parts(VarkelManager& face, bool flag, std::string path)
    : manager(face),
      creation_flag(flag),
      config_file_path(std::move(path)),
      report(events,
             {Emitter<&Face::sendLogMessage>(), [this](const auto& text) { manager.setErrorMsg(text); },
              [this](const auto& text) { manager.setSuccessMsg(text); }}),
      activity({Raiser<&Face::isUpgradingChanged>(), Raiser<&Face::isDownloadLogChanged>()}),
      background(workers, events, Emitter<&Face::isWorkingChanged>()),
      findings(workers, events, report),
      memory(report),
      recording(report, Raiser<&Face::isRecordingChanged>()),
      disconnect(connection, events, [this] { manager.Stop(); }),
      connection_check(connection, workers, events, Emitter<&Face::connectionCheckFinished>()),
      page_models(face, models, events),
      search(models),
      reader({report, Raiser<&Face::fovConfigChanged>()}),
      reading(connection, models, connect_type, reader),
      edits([this] { return models.model(); },
            [this] {
              page_models.ValuesChanged();
              emit manager.editsChanged();
              emit manager.fovConfigChanged();
            }),
      input(models, edits, page_models, report,
            {Emitter<&Face::editsChanged>(), Emitter<&Face::fovConfigChanged>()}),
      page_check({models, page_models, report, Raiser<&Face::someVarOutOfRange>()}),
      writer({reader, report}),
      saving({connection, models, activity, writer, background, report},
             {[this] {
                emit manager.sendCommandHistoryChanged();
                emit manager.editsChanged();
                emit manager.myMapChanged();
              },
              Emitter<&Face::pageWriteFinished>(),
              [this](const SaveCheck::Outcome& outcome) {
                emit manager.saveReadBack(outcome.module, outcome.text, outcome.differs);
              }}),
      page_reads(
          workers,
          [this](int module, const std::function<bool()>& replaced) {
            if (reading.ReadPage(module, replaced)) Raise<&Face::myMapChanged>();
          },
          [this](int module) {
            events.Post([this, module] {
              saving.PageRead(page_reads.is_reading());
              emit manager.isReadingPageChanged();
              emit manager.pageReadFinished(module);
            });
          }),
      restart(connection, models, report, disconnect),
      console(connection, activity, models, connect_type, report,
              {Raiser<&Face::sendCommandHistoryChanged>(),
               [this](const auto& session) { disconnect.Leave(session); }}),
      downloads(connection, activity, workers, report,
                {Raiser<&Face::downloadFinished>(), Raiser<&Face::downloadOperationLogFinished>()}),
      small_sensor(
          report, activity, [this] { return connection.session(); }, connect_type),
      small_sensor_functions(small_sensor, background),
      small_sensor_info(report, activity,
                        {Raiser<&Face::zeltoLidarInfoChanged>(), Raiser<&Face::isGetPBLVersionChanged>()}),
      connector(connection, workers, {report, log_bytes, activity, &recording.recorder()},
                {{kPageRefreshPeriod,
                  [this](SensorSession& session, const std::stop_token& stop) {
                    if (reading.RefreshShownPage(session, stop)) Raise<&Face::myTimerMapChanged>();
                  }},
                 {SmallSensorInfo::kPeriod,
                  [this](SensorSession& session, const std::stop_token& stop) {
                    small_sensor_info.Round(session, stop);
                  }}},
                {[this] {
                   Raise<&Face::myMapChanged>();
                   Raise<&Face::isConnectedChanged>();
                 },
                 Raiser<&Face::isConnectedChanged>()}),
      sensor_return(workers, events, {report, log_bytes, activity, &recording.recorder()},
                    [this] { manager.ConnectLidar(); }, {}),
      upgraded_restart(RestartSensor, report, disconnect, sensor_return, memory.settings()),
      upgrade(report, activity, workers, connect_type,
              {[this](const auto& session, const auto& table) {
                 return upgraded_restart.Restart(session, table);
               },
               [this](const auto& session) { disconnect.Leave(session); }}),
      snapshots({connection, models, memory.settings(), activity, background, events, report, log_bytes}) {
  connect(&manager, &Face::lidarModelChanged, &snapshots, &Snapshots::clear);
  connect(&manager, &Face::editsChanged, &snapshots, &Snapshots::showEdits);
  connect(&manager, &Face::editsChanged, &edits, &UserEdits::changed);
  connect(&manager, &Face::isConnectedChanged, &memory.recent_addresses(),
          [this] { memory.SessionChanged(connection.session().get()); });
}
