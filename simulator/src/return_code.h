#pragma once

#include <cstdint>

namespace varkel::sim {

/// The sensor's return codes. 0 is success.
enum ReturnCode : std::uint8_t {
  kSuccess = 0,
  kUnknownCommand = 1,
  kWrongPayloadSize = 2,  ///< also a log selector that does not exist
  kValueNotAllowed = 3,
  // Pieces of a firmware package; each of these ends the transfer.
  kBadPieceFrame = 4,     ///< inner frame: identifier, command, return code or length
  kBadPieceReserved = 5,  ///< the reserved field is not 0
  kBadPieceNumber = 6,    ///< not the next piece
  kBadPieceCount = 7,     ///< zero, more than the sensor has room for, or a different count than before
  kBadPieceSize = 8,      ///< not 1024 bytes, or 1 to 1024 for the last piece
  kBadPieceChecksum = 9,
  kBadSerialFrame = 10,  ///< the payload is not exactly one valid frame for a small sensor
};

}  // namespace varkel::sim
