#pragma once

#include <cstdint>

#include "libquarn/Source/src/udp_packet.h"

namespace quarn::lidar {

/// Something that delivers datagrams or blocks of bytes and can send: a UDP socket or a serial port.
/// Failures are return values (false or -1), never exceptions.
class Source {
 public:
  virtual ~Source();
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  virtual bool Open() = 0;
  virtual void Close();
  virtual bool IsOpened() = 0;

  /// The number of bytes sent, or -1.
  virtual int Send(const std::uint8_t* data, std::uint16_t length, int flags) = 0;

  /// Receives at most `length` bytes into the packet, waiting at most `timeout_us` microseconds: the number
  /// of bytes, 0 on time-out, or -1.
  virtual int Receive(UdpPacket& packet, std::uint16_t length, int flags, int timeout_us) = 0;

  virtual void SetReceiveBufferSize(std::uint32_t size) = 0;

  // Serial ports only; others ignore them.
  virtual void SetReceiveType(std::uint32_t type);
  virtual void SetAutoReceive(bool auto_receive);
  virtual void Clear(int what);

 protected:
  Source() = default;
};

}  // namespace quarn::lidar
