#include "libquarn/Source/src/serial_source.h"

#include <algorithm>
#include <chrono>
#include <span>
#include <utility>

#include "libquarn/Platform/src/logger.h"

namespace quarn::lidar {
namespace {

const char kSourceFile[] = "libquarn/Source/src/serial_source";

constexpr std::size_t kReplySlots = 10;
constexpr std::size_t kDataSlots = 8000;
constexpr std::size_t kWorkBuffer = 81920;
constexpr std::int64_t kWithoutEnd = -1;

int Take(PacketRing& ring, UdpPacket& packet, std::uint16_t length, int timeout_us) {
  const std::size_t size = std::min<std::size_t>(length, packet.data.size());
  const int taken =
      ring.Take(std::span(packet.data).first(size), std::chrono::microseconds(std::max(timeout_us, 0)));
  packet.timed_out = taken == 0;
  return taken;
}

}  // namespace

SerialSource::SerialSource(std::string port, std::uint32_t command_baud_rate, std::uint32_t data_baud_rate)
    : port_name_(std::move(port)),
      command_baud_rate_(command_baud_rate),
      data_baud_rate_(data_baud_rate),
      replies_(kReplySlots),
      data_(kDataSlots),
      splitter_({[this](std::span<const std::uint8_t> piece, bool begins) { replies_.Push(piece, !begins); },
                 [this](std::span<const std::uint8_t> piece) { data_.Push(piece); }}) {}

SerialSource::~SerialSource() {
  SerialSource::Close();
}

bool SerialSource::Open() {
  Close();
  const std::lock_guard lifecycle(lifecycle_mutex_);
  const std::uint32_t type = receive_type_;
  if (type != kDataType && type != kCommandType) {
    QUARN_LOG(log_lib::kError, "not support receiveStype, open error");
    return false;
  }
  if (OpenPort(type == kDataType ? data_baud_rate_ : command_baud_rate_) != 0) {
    return false;
  }
  replies_.Open();
  data_.Open();
  if (auto_receive_) {
    {
      const std::lock_guard lock(stream_mutex_);
      work_buffer_.resize(kWorkBuffer);
      splitter_.Reset();
    }
    running_ = true;
    receive_thread_ =
        std::jthread([this, port = Port()](const std::stop_token& stop) { ReceiveLoop(stop, *port); });
  }
  return true;
}

void SerialSource::Close() {
  const std::lock_guard lifecycle(lifecycle_mutex_);
  running_ = false;
  receive_thread_.request_stop();
  if (const auto port = Port()) {
    port->Interrupt();
  }
  replies_.Close();
  data_.Close();
  if (receive_thread_.joinable()) {
    receive_thread_.join();
  }
  // A Clear in progress finishes first: while it held the port, nobody could open it again.
  const std::scoped_lock lock(stream_mutex_, port_mutex_);
  port_.reset();
}

bool SerialSource::IsOpened() {
  const auto port = Port();
  return port && port->is_usable();
}

int SerialSource::Send(const std::uint8_t* data, std::uint16_t length, int /*flags*/) {
  const auto port = Port();
  const int sent = port ? port->Write({data, length}) : -1;
  if (sent != length) {
    QUARN_LOG(log_lib::kError, "SerialSource::Send, port %s, %d of %u bytes", port_name_.c_str(), sent,
              unsigned{length});
    return -1;
  }
  return sent;
}

int SerialSource::Receive(UdpPacket& packet, std::uint16_t length, int /*flags*/, int timeout_us) {
  const auto port = Port();
  if (!port) {
    return -1;
  }
  return running_ ? Take(replies_, packet, length, timeout_us) : ReadLine(*port, packet, length, timeout_us);
}

int SerialSource::ReceiveData(UdpPacket& packet, std::uint16_t length, int timeout_us) {
  return running_ ? Take(data_, packet, length, timeout_us) : -1;
}

void SerialSource::SetReceiveBufferSize(std::uint32_t /*size*/) {}

void SerialSource::Clear(int what) {
  const std::lock_guard lock(stream_mutex_);
  if (what != kClearPackets) {
    if (const auto port = Port()) {
      port->ClearInput();
    }
    splitter_.Reset();
  }
  replies_.Clear();
  if (what != kClearPendingInput) {
    data_.Clear();
  }
}

std::shared_ptr<platform::SerialPort> SerialSource::Port() const {
  const std::lock_guard lock(port_mutex_);
  return port_;
}

// 0, or -1 if the port can't be opened or refuses its settings.
int SerialSource::OpenPort(std::uint32_t baud_rate) {
  std::shared_ptr<platform::SerialPort> port = platform::SerialPort::Open(port_name_, baud_rate);
  if (!port) {
    QUARN_LOG(log_lib::kError, "SerialSource::Open, port %s can't be opened at %u baud", port_name_.c_str(),
              baud_rate);
    return -1;
  }
  const std::lock_guard lock(port_mutex_);
  port_ = std::move(port);
  return 0;
}

void SerialSource::ReceiveLoop(const std::stop_token& stop, platform::SerialPort& port) {
  bool broken = false;
  while (!stop.stop_requested() && !broken) {
    broken = port.WaitReadable(kWithoutEnd) < 0;
    if (!broken) {
      const std::lock_guard lock(stream_mutex_);
      const int received = port.Read(work_buffer_);
      broken = received < 0;
      if (received > 0) {
        splitter_.Add(std::span(work_buffer_).first(static_cast<std::size_t>(received)));
      }
    }
  }
  // Waiting receives return: no more input will arrive.
  replies_.Close();
  data_.Close();
}

int SerialSource::ReadLine(platform::SerialPort& port, UdpPacket& packet, std::uint16_t length,
                           int timeout_us) {
  using Clock = std::chrono::steady_clock;
  const std::span<std::uint8_t> buffer =
      std::span(packet.data).first(std::min<std::size_t>(length, packet.data.size()));
  const auto deadline = Clock::now() + std::chrono::microseconds(std::max(timeout_us, 0));
  packet.timed_out = false;
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::microseconds>(deadline - Clock::now()).count();
    const int ready = port.WaitReadable(std::max<std::int64_t>(left, 0));
    if (ready <= 0) {
      packet.timed_out = ready == 0;
      return ready;
    }
    // Input that was cleared in the meantime reads as 0 bytes: keep waiting.
    if (const int received = port.Read(buffer); received != 0) {
      return received;
    }
  }
}

}  // namespace quarn::lidar
