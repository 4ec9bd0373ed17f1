#pragma once

#include "simulator/src/command_handler.h"
#include "simulator/src/exchange_log.h"
#include "simulator/src/fault_rules.h"
#include "simulator/src/serial_answer.h"

namespace varkel::sim {

/// A small sensor reached through a KTC server: KTC command 0xFF carries serial frames to it (payload 00 02,
/// then the frame), and reads (00 01) or sets (00 01 39, then the rate) the baud rate of its line.
/// Thread-safe.
class SmallSensorTunnel {
 public:
  explicit SmallSensorTunnel(SerialParts parts) : parts_(parts) {}

  static bool Takes(const ReceivedRequest& request);

  /// Adds the faults of the inner frame's reply to `plan`, which has those of the KTC reply.
  Reply Handle(const ReceivedRequest& request, ReplyPlan& plan) const;

 private:
  Reply Carry(std::span<const std::uint8_t> frame, ReplyPlan& plan) const;
  Reply BaudRate() const;
  Reply SetBaudRate(std::span<const std::uint8_t> payload) const;

  const SerialParts parts_;
};

}  // namespace varkel::sim
