#include "VarkelCore/src/state/sensor_link.h"

#include <chrono>
#include <exception>
#include <filesystem>
#include <system_error>
#include <utility>

#include "VarkelCore/src/catalogue/model_names.h"
#include "libquarn/Platform/src/file_path.h"

namespace varkel {

namespace {

SensorSession::Periodic NoRounds() {
  return {std::chrono::hours(24), [](SensorSession&, const std::stop_token&) {}};
}

ConnectionSettings SettingsOf(const SensorTarget& target) {
  ConnectionSettings settings;
  settings.ip_address = target.host;
  settings.port = std::to_string(target.port);
  settings.serial_port_485 = target.rs485;
  settings.serial_port_232 = target.uart;
  return settings;
}

std::string KnownModels(const std::string& folder) {
  std::string text;
  for (const std::string& model : ListModels(folder)) text += (text.empty() ? "" : ", ") + model;
  return text.empty() ? "none" : text;
}

}  // namespace

tl::expected<std::shared_ptr<Model>, std::string> LoadModel(const std::string& folder,
                                                            const std::string& model_name) {
  const std::string path = folder + "/" + model_name + ".csv";
  std::error_code error;
  const bool is_name = !model_name.empty() && model_name.find_first_of("/\\") == std::string::npos;
  if (!is_name || !std::filesystem::is_regular_file(quarn::platform::FilePath(path), error)) {
    return tl::unexpected("There is no table for a model \"" + model_name + "\" in " + folder +
                          " (models there: " + KnownModels(folder) + ").");
  }
  auto catalogue = std::make_shared<ConfigParser>(path);
  try {
    if (catalogue->ExtractConfigInfo()) return std::make_shared<Model>(model_name, std::move(catalogue));
    return tl::unexpected("The model table " + path + " can't be opened.");
  } catch (const std::exception& fault) {
    const std::string row = catalogue->RowBeingRead();
    return tl::unexpected("Can't load the model table " + path + ": " + fault.what() +
                          (row.empty() ? "." : " (" + row + ")."));
  }
}

tl::expected<std::unique_ptr<SensorLink>, LinkFailure> SensorLink::Open(
    const SensorTarget& target, const std::string& table_folder, UserReport& report,
    const std::stop_token& stop, quarn::lidar::CaptureRecorder* recorder) {
  auto model = LoadModel(table_folder, target.model);
  if (!model) return tl::unexpected(LinkFailure{false, model.error()});
  auto link = std::unique_ptr<SensorLink>(new SensorLink(target, *model, report, recorder));
  SessionResult session = link->Connect(target, stop);
  if (!session) {
    const std::string reason = stop.stop_requested() ? "Stopped." : session.error().log_line;
    return tl::unexpected(LinkFailure{true, reason});
  }
  link->session_ = std::move(*session);
  link->end_on_stop_.emplace(stop, [ending = link->session_] { ending->End(); });
  return link;
}

SensorLink::SensorLink(SensorTarget target, std::shared_ptr<Model> model, UserReport& report,
                       quarn::lidar::CaptureRecorder* recorder)
    : target_(std::move(target)),
      model_(std::move(model)),
      report_(report),
      recorder_(recorder),
      activity_({[] {}, [] {}}) {}

SessionResult SensorLink::Connect(const SensorTarget& target, const std::stop_token& stop) {
  const SessionContext context{report_, log_bytes_, activity_, recorder_};
  switch (ConnectTypeOf(target.model)) {
    case kSerialLines:
      return OpenSerialLines(SettingsOf(target), context, NoRounds());
    case kKtcToSmallSensor:
      return ConnectSmallSensor(stop, SettingsOf(target), context, NoRounds());
    case kNetwork:
      break;
  }
  return ConnectNetworkSensor(stop, SettingsOf(target), context, NoRounds());
}

ConnectTo SensorLink::connect_to() {
  return [this](const SensorAddress& address, const std::stop_token& stop) {
    SensorTarget there = target_;
    there.host = address.host;
    there.port = address.port;
    const SessionResult session = Connect(there, stop);
    // The client keeps its session alive.
    return session ? std::shared_ptr<quarn::lidar::KtcClient>(*session, (*session)->ktc_client().get())
                   : nullptr;
  };
}

}  // namespace varkel
