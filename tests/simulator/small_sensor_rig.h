#pragma once

#include <chrono>
#include <memory>
#include <stop_token>
#include <string>

#include "VarkelCore/src/model_selection.h"
#include "VarkelCore/src/serial_connection.h"
#include "VarkelCore/src/small_sensor.h"
#include "libquarn/Source/src/ktc_serial_client.h"
#include "simulator/src/simulated_sensor.h"
#include "simulator/src/simulated_small_sensor.h"
#include "tests/core/small_sensor_bench.h"
#include "tests/simulator/test_client.h"
#include "tests/simulator/test_table.h"

namespace varkel::sim {

using Bytes = std::vector<std::uint8_t>;
using Lines = std::vector<std::string>;

/// A simulated sensor of the model: "Zelto" has two lines, busy with point-cloud data, the others a KTC port.
class SmallSensorRig {
 public:
  explicit SmallSensorRig(const std::string& model) {
    if (model == "Zelto") {
      lines = std::make_unique<SimulatedSmallSensor>(
          SmallSensorOptions{.data_period = std::chrono::milliseconds(1)});
      lines->Start();
    } else {
      ktc = std::make_unique<SimulatedSensor>(SensorOptions{.table_path = ModelTable(model)});
      ktc->Start();
    }
  }

  SmallSensorDevice& device() const { return lines ? lines->device() : ktc->device(); }
  SmallSensorItems Items() const { return device().state.Items(); }
  std::vector<ReceivedFirmware> Firmware() const { return device().firmware.Received(); }
  void Misbehave(const std::string& rule) const { lines ? lines->Misbehave(rule) : ktc->Misbehave(rule); }
  void Behave() const { lines ? lines->Behave() : ktc->Behave(); }

  std::unique_ptr<SimulatedSmallSensor> lines;
  std::unique_ptr<SimulatedSensor> ktc;
};

/// The tool's connection to it, made as a user makes it.
class ConnectedRig : public SmallSensorRig, public SmallSensorLink {
 public:
  explicit ConnectedRig(const std::string& model) : SmallSensorRig(model) {
    ConnectionSettings settings;
    settings.baud_rate = 3125000;
    if (lines) {
      settings.serial_port_485 = lines->rs485_path();
      settings.serial_port_232 = lines->uart_path();
      connection.InitSerial(std::stop_token(), settings);
    } else {
      settings.ip_address = ktc->address();
      settings.port = std::to_string(ktc->port());
      connection.InitKtcForSerial(std::stop_token(), settings, model);
    }
  }

  // The functions of a small sensor travel inside KTC only; here the lines serve them as well.
  bool is_connected() const override { return connection.is_connected(); }
  std::shared_ptr<quarn::lidar::SerialExchange> KtcExchange() const override { return connection.Exchange(); }
  std::shared_ptr<quarn::lidar::SerialExchange> LineExchange() const override { return nullptr; }
  int QueryKtc(std::uint8_t command, std::span<const std::uint8_t> payload, Bytes& reply,
               bool silent) override {
    return connection.QueryKtc(command, payload, reply, silent);
  }

  varkel::test::RecordedReport report;
  SerialConnection connection{report, {[] {}, [] {}, [] {}}};
  varkel::SmallSensor functions{
      report, *this, {[] { return false; }, [] { return int{kKtcToSmallSensor}; }, [](int) {}}};
};

/// Nothing but exchanges with it, and a short patience inside KTC.
class ExchangeRig : public SmallSensorRig {
 public:
  explicit ExchangeRig(const std::string& model) : SmallSensorRig(model) { Reconnect(); }

  void Reconnect() {
    exchange.reset();
    if (ktc) {
      exchange = std::make_shared<quarn::lidar::KtcSerialClient>(Connect(*ktc, 1));
      return;
    }
    using quarn::lidar::SerialSource;
    const auto replies = std::make_shared<SerialSource>(lines->rs485_path(), 115200, 3000000);
    const auto commands = std::make_shared<SerialSource>(lines->uart_path(), 9600, 9600);
    commands->SetAutoReceive(false);
    if (replies->Open() && commands->Open()) {
      exchange = std::make_shared<quarn::lidar::SerialClient>(commands, replies);
    }
  }

  std::shared_ptr<quarn::lidar::SerialExchange> exchange;
};

}  // namespace varkel::sim
