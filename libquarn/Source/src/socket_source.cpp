#include "libquarn/Source/src/socket_source.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <optional>
#include <span>
#include <system_error>
#include <utility>

#include "libquarn/Platform/src/ipv4.h"
#include "libquarn/Platform/src/logger.h"

namespace quarn::lidar {
namespace {

const char kSourceFile[] = "libquarn/Source/src/socket_source";

constexpr std::uint32_t kReceiveTimeoutMs = 20;

// The buffer must hold a burst while the reader is busy. The first request is larger than any system grants,
// so that the log shows this system's limit.
constexpr std::uint32_t kLargestReceiveBuffer = 400'000'000;
constexpr std::uint32_t kReceiveBuffer = 25U * 1024 * 1024;

}  // namespace

SocketSource::SocketSource(std::uint16_t port, std::string local_address, std::string multicast_group)
    : local_port_(port),
      multicast_group_(std::move(multicast_group)),
      local_address_(std::move(local_address)) {}

SocketSource::~SocketSource() {
  SocketSource::Close();
}

bool SocketSource::Open() {
  ReleaseSocket();  // left by an Open that failed half-way
  select_mode_ = false;
  if (!platform::StartUpSockets()) {
    QUARN_LOG(log_lib::kError, "Initilize winsock error !");
    return false;
  }
  socket_ = platform::CreateUdpSocket();
  if (!HasSocket()) {
    platform::CleanUpSockets();
    return false;
  }
  const bool reuse_allowed = platform::AllowAddressReuse(socket_);
  const int reuse_error = platform::LastSocketError();
  AskForLargeBuffer();
  bool usable = reuse_allowed;
  if (!reuse_allowed) {
    QUARN_LOG(log_lib::kError, "setsockopt SO_REUSEADDR failed, errno:%d", reuse_error);
  } else if (!platform::SetSocketReceiveTimeout(socket_, kReceiveTimeoutMs)) {
    QUARN_LOG(log_lib::kError, "setsockopt SO_RCVTIMEO failed, errno:%d", platform::LastSocketError());
    usable = false;
  } else if (!Bind()) {
    return false;
  }
  if (!platform::SetNonBlocking(socket_, true)) {
    QUARN_LOG(log_lib::kError, "non-block");
  }
  platform::SetReceiveBufferSize(socket_, kReceiveBuffer);
  if (!multicast_group_.empty()) {
    JoinGroup();
  }
  return usable;
}

void SocketSource::AskForLargeBuffer() {
  platform::SetReceiveBufferSize(socket_, kLargestReceiveBuffer);
  const std::optional<std::uint32_t> granted = platform::ReceiveBufferSize(socket_);
  if (!granted) {
    const int error = platform::LastSocketError();
    QUARN_LOG(log_lib::kWarning, "getsockopt error=%d(%s)!!!", error,
              std::system_category().message(error).c_str());
  }
  QUARN_LOG(log_lib::kProgress, "OS current udp socket recv buff size is: %d",
            static_cast<int>(granted.value_or(0)));
}

bool SocketSource::Bind() {
  if (platform::BindDatagramPort(socket_, local_address_, local_port_, multicast_group_)) {
    QUARN_LOG(log_lib::kProgress, "SocketSource::Open succeed, sock:%d", static_cast<int>(socket_));
    return true;
  }
  const int error = platform::LastSocketError();
  if (platform::IsWouldBlock(error)) {
    return true;
  }
  ReleaseSocket();
  QUARN_LOG(log_lib::kError, "SocketSource::Open(), bind failed, errno: %d", error);
  return false;
}

void SocketSource::JoinGroup() {
  if (platform::JoinMulticast(socket_, multicast_group_, local_address_)) {
    QUARN_LOG(log_lib::kProgress, "Recive data from multicast ip address %s", multicast_group_.c_str());
  } else {
    QUARN_LOG(log_lib::kError, "Multicast IP error, set correct multicast ip address or keep it empty");
  }
}

void SocketSource::Close() {
  QUARN_LOG(log_lib::kProgress, "SocketSource::Close()");
  ReleaseSocket();
}

void SocketSource::ReleaseSocket() {
  if (HasSocket()) {
    platform::CloseSocket(std::exchange(socket_, platform::kInvalidSocket));
    platform::CleanUpSockets();
  }
}

bool SocketSource::IsOpened() {
  if (!HasSocket()) {
    QUARN_LOG(log_lib::kWarning, "SocketSource::IsOpened(), port %d, sock %d is not open", int{local_port_},
              static_cast<int>(socket_));
    return false;
  }
  return true;
}

bool SocketSource::SetClient(const std::string& ip, std::uint16_t port) {
  const std::optional<Ipv4> address = ParseIpv4(ip);
  client_ip_ = address ? ip : "";
  client_ = {std::bit_cast<std::uint32_t>(address.value_or(Ipv4{})), port};
  return address.has_value();
}

int SocketSource::Send(const std::uint8_t* data, std::uint16_t length, int flags) {
  if (!HasSocket()) {
    QUARN_LOG(log_lib::kError, "SocketSource::Send, port %d, sock %d is not open", int{local_port_},
              static_cast<int>(socket_));
    return -1;
  }
  if (client_ip_.empty()) {
    QUARN_LOG(log_lib::kError, "SocketSource::Send, client ip is empty");
    return -1;
  }
  const int sent = platform::SendDatagram(socket_, {data, length}, flags, client_);
  if (sent < 0) {
    QUARN_LOG(log_lib::kError, "SocketSource::Send, errno:%d", platform::LastSocketError());
    Close();
    return -1;
  }
  return sent;
}

int SocketSource::Receive(UdpPacket& packet, std::uint16_t length, int flags, int timeout_us) {
  packet.timed_out = false;
  if (!HasSocket() && !Open()) {
    return -1;
  }
  if (!select_mode_) {
    const int received = ReceiveDatagram(packet, length, flags);
    select_mode_ = received < 0;
    return received;
  }
  const int ready = platform::WaitReadableFor(socket_, std::chrono::microseconds(timeout_us));
  if (ready < 0) {
    QUARN_LOG(log_lib::kWarning, "Select timeout error");
    return -1;
  }
  if (ready == 0) {
    packet.timed_out = true;
    return 0;
  }
  select_mode_ = false;
  return ReceiveDatagram(packet, length, flags);
}

int SocketSource::ReceiveDatagram(UdpPacket& packet, std::uint16_t length, int flags) {
  const std::size_t size = std::min<std::size_t>(length, packet.data.size());
  platform::Endpoint sender;
  const int received = platform::ReceiveDatagram(socket_, std::span(packet.data).first(size), flags, sender);
  if (received < 0) {
    return -1;
  }
  packet.sender_ip = sender.ip;
  packet.sender_port = sender.port;
  return received;
}

void SocketSource::SetReceiveBufferSize(std::uint32_t size) {
  platform::SetReceiveBufferSize(socket_, size);
}

}  // namespace quarn::lidar
