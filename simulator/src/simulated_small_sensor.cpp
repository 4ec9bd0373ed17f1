#include "simulator/src/simulated_small_sensor.h"

#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "simulator/src/fault_rules.h"
#include "simulator/src/serial_answer.h"
#include "simulator/src/serial_sensor.h"

namespace varkel::sim {
namespace {

namespace fs = std::filesystem;

/// A symbolic link that exists as long as the object. Replaces nothing but another link.
class LineLink {
 public:
  LineLink(std::string path, const std::string& target) : path_(std::move(path)) {
    if (path_.empty()) return;
    std::error_code error;
    if (fs::is_symlink(path_, error)) fs::remove(path_, error);
    fs::create_symlink(target, path_, error);
    if (error) {
      throw std::runtime_error("Can't link " + path_ + " to a serial line: " + error.message() + ".");
    }
  }
  ~LineLink() {
    std::error_code error;
    if (!path_.empty()) fs::remove(path_, error);
  }
  LineLink(const LineLink&) = delete;
  LineLink& operator=(const LineLink&) = delete;

 private:
  const std::string path_;
};

}  // namespace

struct SimulatedSmallSensor::Parts {
  explicit Parts(SmallSensorOptions given) : options(std::move(given)) {
    for (const std::string& rule : options.faults) faults.Add(rule);
  }

  SerialSensor* lines() const { return running ? &running->sensor : nullptr; }

  struct Running {
    explicit Running(Parts& parts)
        : sensor({parts.device, parts.faults, parts.options.watcher}, parts.options.data_period),
          rs485_link(parts.options.rs485_link, sensor.rs485().name()),
          uart_link(parts.options.uart_link, sensor.uart().name()) {}

    SerialSensor sensor;
    const LineLink rs485_link;
    const LineLink uart_link;
  };

  const SmallSensorOptions options;
  SmallSensorDevice device;
  FaultRules faults;
  std::unique_ptr<Running> running;  // last: its threads use all the others
};

SimulatedSmallSensor::SimulatedSmallSensor(SmallSensorOptions options)
    : parts_(std::make_unique<Parts>(std::move(options))) {}

SimulatedSmallSensor::~SimulatedSmallSensor() = default;

void SimulatedSmallSensor::Start() {
  if (parts_->running) return;
  parts_->device.PowerUp();
  parts_->running = std::make_unique<Parts::Running>(*parts_);
}

void SimulatedSmallSensor::Stop() {
  parts_->running.reset();
}

std::string SimulatedSmallSensor::rs485_path() const {
  return parts_->lines() ? parts_->lines()->rs485().name() : "";
}

std::string SimulatedSmallSensor::uart_path() const {
  return parts_->lines() ? parts_->lines()->uart().name() : "";
}

std::uint32_t SimulatedSmallSensor::rs485_rate() const {
  return parts_->lines() ? parts_->lines()->rs485().BaudRate() : 0;
}

std::uint32_t SimulatedSmallSensor::uart_rate() const {
  return parts_->lines() ? parts_->lines()->uart().BaudRate() : 0;
}

void SimulatedSmallSensor::PullRs485() {
  if (parts_->lines()) parts_->lines()->rs485().Pull();
}

void SimulatedSmallSensor::PullUart() {
  if (parts_->lines()) parts_->lines()->uart().Pull();
}

SmallSensorDevice& SimulatedSmallSensor::device() {
  return parts_->device;
}

void SimulatedSmallSensor::AddFault(const std::string& rule) {
  parts_->faults.Add(rule);
}

void SimulatedSmallSensor::ClearFaults() {
  parts_->faults.Clear();
}

}  // namespace varkel::sim
