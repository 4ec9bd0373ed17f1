#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <thread>

#include "libquarn/Platform/src/pseudo_terminal.h"
#include "simulator/src/serial_answer.h"
#include "simulator/src/stop_signal.h"

namespace varkel::sim {

/// A small sensor's two lines, served from construction to destruction: one thread answers requests on the
/// UART line, another sends point-cloud data on the RS485 line.
class SerialSensor {
 public:
  using Line = quarn::platform::PseudoTerminal;

  /// A period of 0 means no data. Raises std::runtime_error if the system has no pseudo-terminals.
  SerialSensor(SerialParts parts, std::chrono::milliseconds data_period);
  ~SerialSensor();
  SerialSensor(const SerialSensor&) = delete;
  SerialSensor& operator=(const SerialSensor&) = delete;

  Line& rs485() { return *rs485_; }
  Line& uart() { return *uart_; }

 private:
  void ServeUart();
  void SendData(std::chrono::milliseconds period);
  void Answer(const SerialRequest& request);
  void Send(Line& line, std::span<const std::uint8_t> bytes, const ReplyPlan& plan);

  const SerialParts parts_;
  const std::unique_ptr<Line> rs485_;
  const std::unique_ptr<Line> uart_;
  StopSignal stop_;
  std::mutex send_mutex_;  // held for a whole reply or block of data
  std::thread uart_thread_;
  std::thread data_thread_;
};

}  // namespace varkel::sim
