#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "libquarn/Platform/src/wire_tap.h"
#include "libquarn/Source/src/serial_exchange.h"
#include "libquarn/Source/src/serial_frame.h"
#include "libquarn/Source/src/source.h"

namespace quarn::lidar {

/// Commands a small sensor over its two serial lines: commands are sent on one, their replies arrive on the
/// other, interleaved with the point-cloud data. Firmware frames and their replies both use the first.
/// Thread-safe. To abort exchanges the owner closes the sources; they then fail immediately.
class SerialClient : public SerialExchange {
 public:
  using LogCallback = std::function<void(const std::string&)>;

  /// Either may be missing; exchanges that need it fail with kNotSent.
  SerialClient(std::shared_ptr<Source> commands, std::shared_ptr<Source> replies)
      : commands_(std::move(commands)), replies_(std::move(replies)) {}

  ExchangeResult QueryFrame(std::uint8_t code, std::span<const std::uint8_t> payload,
                            std::uint32_t timeout_ms) override;
  Exchanged<OtaReply> ExchangeOta(std::uint32_t first, std::uint32_t second,
                                  std::span<const std::uint8_t> data, std::uint8_t type) override;

  /// `callback` gets a "SEND: " and a "RECV: " line an exchange ("RECV: " only for firmware frames), on the
  /// thread of the exchange; lines are only built while `wanted`, if given, answers true. Neither may throw
  /// or call this client.
  void SetLogCallback(LogCallback callback, std::function<bool()> wanted = {});

  /// `tap` sees every frame of later exchanges, of either kind, and all input during them; null removes it.
  void SetWireTap(std::shared_ptr<WireTap> tap);

 private:
  // exchange_mutex_ must be held.
  bool SendFrame(std::span<const std::uint8_t> frame);
  ExchangeResult ReadReply(Source& source, ReplyKind kind, std::uint32_t timeout_ms);
  void PassToLog(const char* prefix, std::span<const std::uint8_t> bytes);

  // Constant.
  const std::shared_ptr<Source> commands_;
  const std::shared_ptr<Source> replies_;

  std::mutex exchange_mutex_;  // held for the whole of an exchange; guards tap_
  std::shared_ptr<WireTap> tap_;

  // Guarded by log_mutex_, which is held while they run.
  std::mutex log_mutex_;
  LogCallback log_callback_;
  std::function<bool()> log_wanted_;
};

}  // namespace quarn::lidar
