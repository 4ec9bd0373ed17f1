#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "libquarn/Source/src/serial_exchange.h"

namespace quarn::lidar {

/// The two command codes of a small sensor and the items that they address. An item is the first
/// byte of the payload. Positions in a reply count from the body's length byte.
inline constexpr std::uint8_t kGetRequest = 2;
inline constexpr std::uint8_t kSetRequest = 3;

inline constexpr std::uint8_t kOperationItem = 0;  ///< set: leave standby
inline constexpr std::uint8_t kStrongestItem = 8;  ///< set: return mode
inline constexpr std::uint8_t kLastItem = 9;       ///< set: return mode
inline constexpr std::uint8_t kSpinRateItem = 10;  ///< set
inline constexpr std::uint8_t kStandbyItem = 11;   ///< set
inline constexpr std::uint8_t kModeItem = 12;      ///< set: prepare for firmware

inline constexpr std::uint8_t kCorrectionItem = 7;      ///< get
inline constexpr std::uint8_t kFunctionSafetyItem = 8;  ///< get
inline constexpr std::uint8_t kSerialNumberItem = 10;   ///< get
inline constexpr std::uint8_t kImuRangeItem = 11;       ///< get
inline constexpr std::uint8_t kVersionItem = 15;        ///< get

inline constexpr std::size_t kReplyItem = 2;   ///< the item that a reply answers
inline constexpr std::size_t kReplyValue = 4;  ///< the first byte of its contents

/// Sets an item: the last byte of its reply, which has 5, or the exchange's code, or
/// SerialExchange::kWrongReply for any other reply.
Exchanged<std::uint8_t> SetItem(SerialExchange& exchange, std::uint8_t item, std::uint8_t value);

/// Asks for an item (the payload's first byte): the body of a reply to it of at least `min_size` bytes; codes
/// as above.
ExchangeResult GetItem(SerialExchange& exchange, std::span<const std::uint8_t> payload, std::size_t min_size);

}  // namespace quarn::lidar
