#pragma once

#include <cstdint>
#include <string>

#include "libquarn/Platform/src/socket.h"
#include "libquarn/Source/src/source.h"

namespace quarn::lidar {

/// Datagrams of a local UDP port, IP version 4. One thread uses it.
///
/// Receive does not wait while datagrams keep arriving. The first one that finds none fails with -1, and the
/// next waits: an idle source costs one failed call, then one wait per call.
class SocketSource : public Source {
 public:
  /// Port 0 picks a free port; an empty `local_address` means any, an empty `multicast_group` none.
  SocketSource(std::uint16_t port, std::string local_address, std::string multicast_group);
  ~SocketSource() override;

  /// False, and closed, if the port can't be bound. If the system refuses to share the port or to set the
  /// receive time-out, the result is false as well, but the socket stays open, unbound. A group that can't be
  /// joined is only logged.
  bool Open() override;
  void Close() override;
  bool IsOpened() override;

  /// Sets the destination of Send. If `ip` is not an IPv4 address: false, and there is no destination.
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
