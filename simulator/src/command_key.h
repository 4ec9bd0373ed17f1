#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>

#include "simulator/src/exchange_log.h"
#include "simulator/src/serial_request.h"

namespace varkel::sim {

enum class CommandFamily : std::uint8_t {
  kKtc,
  kSerialCommand,  ///< "$LDCMD,": the code is the item, the extended code the kind of request (2 get, 3 set)
  kFirmware,       ///< "$LDOTA,": the code is the frame type
};

/// A command by what identifies it on the wire, however a table writes it.
struct CommandKey {
  std::uint8_t code = 0;
  std::optional<std::uint32_t> extended_code;  ///< KTC: four-byte code, only under 0xFF
  CommandFamily family = CommandFamily::kKtc;

  bool operator==(const CommandKey&) const = default;
  bool operator<(const CommandKey& other) const {
    return std::tie(family, code, extended_code) < std::tie(other.family, other.code, other.extended_code);
  }
};

/// From a table's text. Raises the conversion errors of text_number.h.
CommandKey KeyOfText(const std::string& text);

/// From a request; one under 0xFF with at least four payload bytes carries a four-byte code.
CommandKey KeyOfRequest(const ReceivedRequest& request);

/// From a small sensor's request.
CommandKey KeyOfRequest(const SerialRequest& request);

}  // namespace varkel::sim
