#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>

#include "simulator/src/exchange_log.h"

namespace varkel::sim {

/// A command by what identifies it on the wire, however a table writes it.
struct CommandKey {
  std::uint8_t code = 0;
  std::optional<std::uint32_t> extended_code;  ///< four-byte code, only under 0xFF

  bool operator==(const CommandKey&) const = default;
  bool operator<(const CommandKey& other) const {
    return std::tie(code, extended_code) < std::tie(other.code, other.extended_code);
  }
};

/// From a table's text. Raises the conversion errors of text_number.h.
CommandKey KeyOfText(const std::string& text);

/// From a request; one under 0xFF with at least four payload bytes carries a four-byte code.
CommandKey KeyOfRequest(const ReceivedRequest& request);

}  // namespace varkel::sim
