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

  lidar::ExchangeResult QueryFrame(std::uint8_t code, std::span<const std::uint8_t> payload,
                                   std::uint32_t /*timeout_ms*/) override {
    commands.push_back({code, Bytes(payload.begin(), payload.end())});
    if (!on_command) return tl::unexpected(kNotReceived);
    return on_command(commands.back()).map([code](const Bytes& contents) {
      return lidar::EncodeReplyFrame(lidar::ReplyKind::kCommand, code, contents, 1);
    });
  }

  lidar::Exchanged<lidar::OtaReply> ExchangeOta(std::uint32_t first, std::uint32_t second,
                                                std::span<const std::uint8_t> data,
                                                std::uint8_t type) override {
    frames.push_back({type, first, second, Bytes(data.begin(), data.end())});
    return on_ota ? on_ota(frames.back()) : lidar::OtaReply{type, 0};
  }

  /// Returns the contents of the reply: the bytes after the command code, so byte 0 here is the reply's
  /// byte 2.
  std::function<lidar::ExchangeResult(const Command&)> on_command;
  std::function<lidar::Exchanged<lidar::OtaReply>(const OtaFrame&)> on_ota;
  std::vector<Command> commands;
  std::vector<OtaFrame> frames;
};

}  // namespace quarn::test
