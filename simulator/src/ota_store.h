#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

#include "simulator/src/serial_request.h"

namespace varkel::sim {

/// The status in a reply to a firmware frame. Any status other than kOtaTaken ends the transfer.
enum OtaStatus : std::uint8_t {
  kOtaTaken = 0,
  kOtaUnknownFrame = 1,
  kOtaWrongOrder = 2,    ///< no transfer started, one of the other kind, or an end before the last block
  kOtaBadLength = 3,     ///< zero, more than the sensor has room for, or a different length at the end
  kOtaBadPurpose = 4,    ///< no such upgrade mode or component type
  kOtaBadBlock = 5,      ///< neither the next block nor the last one again
  kOtaBadCount = 6,      ///< the number of blocks does not match the length
  kOtaBadBlockSize = 7,  ///< also data in a start or end frame
  kOtaBadChecksum = 8,
  kOtaNotReady = 9,  ///< a component before the mode change
};

/// A complete firmware.
struct ReceivedFirmware {
  bool is_component = false;
  std::uint32_t purpose = 0;  ///< upgrade mode (0 application and FPGA, 1 PBL), or component type
  std::vector<std::uint8_t> bytes;
};

/// Assembles firmware from its frames. A frame that is repeated because its reply was lost does no harm.
/// Thread-safe; one transfer at a time.
class OtaStore {
 public:
  static constexpr std::uint32_t kMostBytes = 64 * 1024 * 1024;

  /// Takes a firmware frame. If it completes the transfer, `completed` is set to the firmware.
  OtaStatus Receive(const SerialRequest& frame, std::optional<ReceivedFirmware>& completed);

  /// All complete firmware, oldest first.
  std::vector<ReceivedFirmware> Received() const;
  void Clear();

 private:
  struct Transfer {
    ReceivedFirmware firmware;
    std::uint32_t length = 0;
    std::uint32_t next_block = 0;
    bool is_complete = false;
  };

  // Call with mutex_ held.
  OtaStatus Begin(const SerialRequest& frame, bool is_component);
  OtaStatus TakeBlock(const SerialRequest& frame);
  OtaStatus End(const SerialRequest& frame, std::optional<ReceivedFirmware>& completed);

  mutable std::mutex mutex_;
  // Guarded by mutex_.
  std::optional<Transfer> transfer_;
  std::vector<ReceivedFirmware> received_;
};

}  // namespace varkel::sim
