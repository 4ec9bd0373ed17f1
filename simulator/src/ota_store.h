#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

#include "simulator/src/serial_request.h"

namespace varkel::sim {

/// The status in a reply to a firmware frame. Anything but kOtaTaken ends the transfer.
enum OtaStatus : std::uint8_t {
  kOtaTaken = 0,
  kOtaUnknownFrame = 1,
  kOtaWrongOrder = 2,    ///< no transfer under way, one of the other kind, or an end before the last block
  kOtaBadLength = 3,     ///< nothing, more than the sensor has room for, or another length at the end
  kOtaBadPurpose = 4,    ///< no such upgrade mode or component type
  kOtaBadBlock = 5,      ///< neither the block that comes next nor the last one again
  kOtaBadCount = 6,      ///< another number of blocks than the length makes
  kOtaBadBlockSize = 7,  ///< also data in a start or end frame
  kOtaBadChecksum = 8,
  kOtaNotReady = 9,  ///< a component before the change of mode
};

/// Firmware that came whole.
struct ReceivedFirmware {
  bool is_component = false;
  std::uint32_t purpose = 0;  ///< upgrade mode (0 application and FPGA, 1 PBL), or component type
  std::vector<std::uint8_t> bytes;
};

/// Puts firmware together from its frames. A frame that comes again because its reply was lost is taken
/// again without harm. Thread-safe; one transfer at a time.
class OtaStore {
 public:
  static constexpr std::uint32_t kMostBytes = 64 * 1024 * 1024;

  /// Takes a firmware frame. When it completes the transfer, `completed` becomes what came.
  OtaStatus Receive(const SerialRequest& frame, std::optional<ReceivedFirmware>& completed);

  /// All that came whole, oldest first.
  std::vector<ReceivedFirmware> Received() const;
  void Clear();

 private:
  struct Transfer {
    ReceivedFirmware firmware;
    std::uint32_t length = 0;
    std::uint32_t next_block = 0;
    bool is_complete = false;
  };

  // With mutex_ held.
  OtaStatus Begin(const SerialRequest& frame, bool is_component);
  OtaStatus TakeBlock(const SerialRequest& frame);
  OtaStatus End(const SerialRequest& frame, std::optional<ReceivedFirmware>& completed);

  mutable std::mutex mutex_;
  // Guarded by mutex_.
  std::optional<Transfer> transfer_;
  std::vector<ReceivedFirmware> received_;
};

}  // namespace varkel::sim
