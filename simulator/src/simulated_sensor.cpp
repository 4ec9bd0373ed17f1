#include "simulator/src/simulated_sensor.h"

#include <atomic>
#include <exception>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <utility>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "libquarn/Platform/src/file_path.h"
#include "simulator/src/byte_stream.h"
#include "simulator/src/command_handler.h"
#include "simulator/src/fault_rules.h"
#include "simulator/src/firmware_store.h"
#include "simulator/src/replay.h"
#include "simulator/src/sensor_state.h"
#include "simulator/src/session.h"
#include "simulator/src/sim_server.h"
#include "simulator/src/small_sensor_tunnel.h"

namespace varkel::sim {

using quarn::platform::FilePath;
using quarn::platform::PathText;

namespace {

constexpr char kFirmwareVersion[] = "Firmware Version";
constexpr char kSerialNumber[] = "SN";
constexpr std::uint8_t kJunctionBoxPackage = 0x83;

bool HasSmallSensor(const std::string& table_path) {
  const std::string model = PathText(FilePath(table_path).stem());
  return model == "Zelto-KTC" || model == "Marvo-KTC";
}

std::shared_ptr<const ConfigParser> LoadModel(const std::string& table_path) {
  auto model = std::make_shared<ConfigParser>(table_path);
  bool loaded = false;
  try {
    loaded = model->ExtractConfigInfo();
  } catch (const std::exception& error) {
    const std::string place = model->RowBeingRead();
    throw std::runtime_error("The table " + table_path + " can't be read" +
                             (place.empty() ? "" : " at " + place) + ": " + error.what() + ".");
  }
  if (!loaded) throw std::runtime_error("The table " + table_path + " can't be opened.");
  return model;
}

}  // namespace

struct SimulatedSensor::Parts {
  explicit Parts(SensorOptions given)
      : options(std::move(given)),
        model(LoadModel(options.table_path)),
        state(model, options.clock ? options.clock : SteadyClock()),
        handler(model, state, firmware) {
    if (options.tls) tls.emplace(*options.tls);
    for (const std::string& rule : options.faults) faults.Add(rule);
    if (HasSmallSensor(options.table_path)) AddSmallSensor();
  }

  /// Its serial number is the one in the table.
  void AddSmallSensor() {
    device = std::make_unique<SmallSensorDevice>();
    tunnel.emplace(SerialParts{*device, faults, options.serial_watcher});
    handler.AddUpgradeCommand(kJunctionBoxPackage);
    if (model->FindByName(kSerialNumber) == nullptr) return;
    device->state.Change(
        [number = state.ValueText(kSerialNumber)](SmallSensorItems& items) { items.serial_number = number; });
  }

  void PowerUp() {
    state.PowerUp();
    if (device) device->PowerUp();
    const auto version = firmware.Install();
    if (!version) return;
    try {
      state.SetValue(kFirmwareVersion, *version);
    } catch (const std::logic_error&) {  // the table has no version, or one in another form
    }
  }

  const SensorOptions options;
  const std::shared_ptr<const ConfigParser> model;
  SensorState state;
  FirmwareStore firmware;
  CommandHandler handler;
  FaultRules faults;
  ExchangeLog log;
  std::unique_ptr<SmallSensorDevice> device;  // null for a model without; constant after construction
  std::optional<SmallSensorTunnel> tunnel;
  std::optional<TlsAcceptor> tls;  // constant after construction
  std::atomic<std::size_t> restarts{0};
  std::unique_ptr<SimServer> server;  // last: its threads use all the others
};

SimulatedSensor::SimulatedSensor(SensorOptions options)
    : parts_(std::make_unique<Parts>(std::move(options))) {}

SimulatedSensor::~SimulatedSensor() = default;

void SimulatedSensor::Start() {
  if (parts_->server) return;
  Parts& parts = *parts_;
  const SessionParts session{parts.handler,
                             parts.faults,
                             parts.log,
                             parts.options.watcher,
                             parts.tunnel ? &*parts.tunnel : nullptr,
                             parts.options.replay.get()};
  const auto serve = [&parts, session](quarn::platform::SocketHandle socket, const StopSignal& stop,
                                       RestartSwitch& restart) {
    const auto stream = parts.tls ? parts.tls->Accept(socket) : std::make_unique<PlainStream>(socket);
    if (stream) ServeClient(*stream, stop, restart, session);
  };
  parts.server = std::make_unique<SimServer>(
      parts.options.address, parts.options.port, serve,
      SimServer::Restarting{parts.options.restart_time, [&parts] { ++parts.restarts; },
                            [&parts] { parts.PowerUp(); }});
}

void SimulatedSensor::Stop() {
  parts_->server.reset();
}

const std::string& SimulatedSensor::address() const {
  return parts_->options.address;
}

std::uint16_t SimulatedSensor::port() const {
  return parts_->server ? parts_->server->port() : 0;
}

std::string SimulatedSensor::ValueText(const std::string& var_name) const {
  return parts_->state.ValueText(var_name);
}

void SimulatedSensor::SetValue(const std::string& var_name, const std::string& text) {
  parts_->state.SetValue(var_name, text);
}

void SimulatedSensor::AddFault(const std::string& rule) {
  parts_->faults.Add(rule);
}

void SimulatedSensor::ClearFaults() {
  parts_->faults.Clear();
}

std::vector<ReceivedRequest> SimulatedSensor::Received() const {
  return parts_->log.All();
}

std::vector<ReceivedRequest> SimulatedSensor::Received(std::uint8_t command) const {
  return parts_->log.Of(command);
}

void SimulatedSensor::ClearReceived() {
  parts_->log.Clear();
}

bool SimulatedSensor::WaitReceived(std::uint8_t command, std::size_t count,
                                   std::chrono::milliseconds timeout) const {
  return parts_->log.WaitFor(command, count, timeout);
}

std::size_t SimulatedSensor::exchanges() const {
  return parts_->log.Count();
}

std::size_t SimulatedSensor::connected_clients() const {
  return parts_->server ? parts_->server->connected_clients() : 0;
}

std::size_t SimulatedSensor::restarts() const {
  return parts_->restarts;
}

std::vector<std::uint8_t> SimulatedSensor::ReceivedPackage() const {
  return parts_->firmware.Package();
}

SmallSensorDevice& SimulatedSensor::device() {
  if (!parts_->device) {
    throw std::logic_error("The model of " + parts_->options.table_path + " has no small sensor.");
  }
  return *parts_->device;
}

}  // namespace varkel::sim
