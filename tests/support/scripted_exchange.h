#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <utility>
#include <vector>

#include "libquarn/Source/src/serial_exchange.h"
#include "libquarn/Source/src/serial_frame.h"

namespace quarn::test {

/// An exchange without a sensor: records what is sent and answers as the test instructs.
class ScriptedExchange : public lidar::SerialExchange {
 public:
  using Bytes = std::vector<std::uint8_t>;
  struct Command {
    std::uint8_t code = 0;
    Bytes payload;
    bool operator==(const Command&) const = default;
  };
  struct OtaFrame {
    std::uint8_t type = 0;
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    Bytes data;
    bool operator==(const OtaFrame&) const = default;
  };

  int QueryFrame(std::uint8_t code, std::span<const std::uint8_t> payload, Bytes& frame,
                 std::uint32_t /*timeout_ms*/) override {
    commands.push_back({code, Bytes(payload.begin(), payload.end())});
    Bytes contents;
    const int result = on_command ? on_command(commands.back(), contents) : kNotReceived;
    if (result == 0) {
      frame = lidar::EncodeReplyFrame(lidar::ReplyKind::kCommand, code, contents, 1);
    }
    return result;
  }

  int ExchangeOta(std::uint32_t first, std::uint32_t second, std::span<const std::uint8_t> data,
                  std::uint8_t type, lidar::OtaReply& reply) override {
    frames.push_back({type, first, second, Bytes(data.begin(), data.end())});
    reply = {type, 0};
    return on_ota ? on_ota(frames.back(), reply) : 0;
  }

  /// Fills in the contents of the reply (the bytes after the command code, so byte 0 here is the reply's byte
  /// 2) and returns the exchange's result.
  std::function<int(const Command&, Bytes& contents)> on_command;
  std::function<int(const OtaFrame&, lidar::OtaReply&)> on_ota;
  std::vector<Command> commands;
  std::vector<OtaFrame> frames;
};

}  // namespace quarn::test
