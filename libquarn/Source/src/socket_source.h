#pragma once

#include <cstdint>
#include <string>

#include "libquarn/Platform/src/socket.h"
#include "libquarn/Source/src/source.h"

namespace quarn::lidar {

/// Datagrams of a local UDP port, IP version 4. One thread uses it.
///
/// Reading never waits while datagrams keep coming. The first read that finds none fails with -1, and the
/// one after it waits: an idle source costs one failed read and then a wait a call.
class SocketSource : public Source {
 public:
  /// Port 0 takes a free one; an empty `local_address` is any; an empty `multicast_group` joins none.
  SocketSource(std::uint16_t port, std::string local_address, std::string multicast_group);
  ~SocketSource() override;

  /// False leaves the source closed when the port can't be bound. When the system refuses the sharing of the
  /// port or the receive time-out, the socket stays open but unbound, and the result is false. A group that
  /// can't be joined is only logged.
  bool Open() override;
  void Close() override;
  bool IsOpened() override;

  /// The destination of Send. False, and no destination any more, when `ip` is no IP version 4 address.
  bool SetClient(const std::string& ip, std::uint16_t port);

  /// One datagram to the client. A failure closes the source.
  int Send(const std::uint8_t* data, std::uint16_t length, int flags) override;

  /// One datagram, of which at most `length` and kMaxPacketSize bytes are kept. Opens a closed source.
  int Receive(UdpPacket& packet, std::uint16_t length, int flags, int timeout_us) override;

  /// In bytes; the system may grant less.
  void SetReceiveBufferSize(std::uint32_t size) override;

 private:
  bool HasSocket() const { return socket_ != platform::kInvalidSocket; }
  void ReleaseSocket();
  void AskForLargeBuffer();
  bool Bind();
  void JoinGroup();
  int ReceiveDatagram(UdpPacket& packet, std::uint16_t length, int flags);

  const std::uint16_t local_port_;
  platform::SocketHandle socket_ = platform::kInvalidSocket;
  bool select_mode_ = false;
  const std::string multicast_group_;
  std::string client_ip_;
  platform::Endpoint client_;
  const std::string local_address_;
};

}  // namespace quarn::lidar
