#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "libquarn/Platform/src/serial_port.h"
#include "libquarn/Source/src/packet_ring.h"
#include "libquarn/Source/src/serial_stream_splitter.h"
#include "libquarn/Source/src/source.h"

namespace quarn::lidar {

/// A serial port as a data source.
///
/// With automatic receiving (the default) the source's own thread reads the line once it is open and
/// separates its input: replies are queued for Receive, point-cloud data for ReceiveData; either queue drops
/// its oldest packet when full. Without it, Receive reads the line itself.
///
/// Settings (receive type, automatic receiving) are made before Open. Every other operation may be called
/// from any thread; Close makes a waiting Receive return immediately. Unplugging the line closes the source:
/// IsOpened becomes false, and receiving and sending fail.
class SerialSource : public Source {
 public:
  static constexpr std::uint32_t kDataType = 0;     ///< opens at the second rate
  static constexpr std::uint32_t kCommandType = 1;  ///< opens at the first rate

  /// What Clear drops.
  static constexpr int kClearAll = 0;
  static constexpr int kClearPackets = 1;  ///< the queued replies and data
  /// What arrived before a new request: the port's pending input and the queued replies. Queued data is kept.
  static constexpr int kClearPendingInput = 2;

  /// `port` is the system's name of the port; rates are in baud.
  SerialSource(std::string port, std::uint32_t command_baud_rate, std::uint32_t data_baud_rate);
  ~SerialSource() override;

  bool Open() override;
  void Close() override;
  bool IsOpened() override;

  /// `length`, or -1 if not all bytes were sent. `flags` is ignored.
  int Send(const std::uint8_t* data, std::uint16_t length, int flags) override;

  /// The next piece of a reply (with automatic receiving) or of any input. `flags` is ignored.
  int Receive(UdpPacket& packet, std::uint16_t length, int flags, int timeout_us) override;

  /// The same for point-cloud data; needs automatic receiving.
  int ReceiveData(UdpPacket& packet, std::uint16_t length, int timeout_us);

  /// Does nothing: the size of a port's buffer cannot be set.
  void SetReceiveBufferSize(std::uint32_t size) override;

  void SetReceiveType(std::uint32_t type) override { receive_type_ = type; }
  void SetAutoReceive(bool auto_receive) override { auto_receive_ = auto_receive; }
  void Clear(int what) override;

 private:
  std::shared_ptr<platform::SerialPort> Port() const;
  int OpenPort(std::uint32_t baud_rate);
  void ReceiveLoop(const std::stop_token& stop, platform::SerialPort& port);
  int ReadLine(platform::SerialPort& port, UdpPacket& packet, std::uint16_t length, int timeout_us);

  // Constant.
  const std::string port_name_;
  const std::uint32_t command_baud_rate_;
  const std::uint32_t data_baud_rate_;

  // Self-synchronised.
  std::atomic<std::uint32_t> receive_type_{kDataType};
  std::atomic<bool> auto_receive_{true};
  std::atomic<bool> running_{false};  // the receive thread separates the input
  PacketRing replies_;
  PacketRing data_;

  // Guarded by stream_mutex_, held from the read to the rings, so that Clear misses nothing in between.
  std::mutex stream_mutex_;
  std::vector<std::uint8_t> work_buffer_;
  SerialStreamSplitter splitter_;

  // Guarded by port_mutex_.
  mutable std::mutex port_mutex_;
  std::shared_ptr<platform::SerialPort> port_;

  std::mutex lifecycle_mutex_;  // held for the whole of Open and Close; guards receive_thread_
  std::jthread receive_thread_;
};

}  // namespace quarn::lidar
