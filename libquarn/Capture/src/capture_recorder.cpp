#include "libquarn/Capture/src/capture_recorder.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <system_error>
#include <utility>
#include <vector>

#include "libquarn/Capture/src/pcap_format.h"
#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Platform/src/file_path.h"

namespace quarn::lidar {
namespace {

constexpr std::uint16_t kFirstToolPort = 49152;
constexpr std::uint16_t kToolPorts = 16384;

std::array<std::uint8_t, kPcapHeaderSize> FileHeader() {
  constexpr std::uint16_t kMajorVersion = 2;
  constexpr std::uint16_t kMinorVersion = 4;
  std::array<std::uint8_t, kPcapHeaderSize> header{};
  StoreLittleEndian<std::uint32_t>(header, 0, kPcapMicroseconds);
  StoreLittleEndian<std::uint16_t>(header, 4, kMajorVersion);
  StoreLittleEndian<std::uint16_t>(header, 6, kMinorVersion);
  StoreLittleEndian<std::uint32_t>(header, 16, kLargestPacket);
  StoreLittleEndian<std::uint32_t>(header, 20, kLinkRawIp);
  return header;
}

std::array<std::uint8_t, kPcapRecordSize> RecordHeader(std::size_t size) {
  using std::chrono::microseconds;
  constexpr std::int64_t kSecond = 1'000'000;
  const auto now =
      std::chrono::duration_cast<microseconds>(std::chrono::system_clock::now().time_since_epoch()).count();
  std::array<std::uint8_t, kPcapRecordSize> record{};
  StoreLittleEndian(record, 0, static_cast<std::uint32_t>(now / kSecond));
  StoreLittleEndian(record, 4, static_cast<std::uint32_t>(now % kSecond));
  StoreLittleEndian(record, 8, static_cast<std::uint32_t>(size));
  StoreLittleEndian(record, 12, static_cast<std::uint32_t>(size));
  return record;
}

template <typename Bytes>
void Put(std::ofstream& file, const Bytes& bytes) {
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace

/// One connection as a TCP conversation. Used with the recorder's mutex held, except for construction.
class CaptureRecorder::Tap : public WireTap {
 public:
  Tap(CaptureRecorder& recorder, const TcpEndpoint& sensor, std::uint16_t tool_port)
      : recorder_(recorder), sides_{Side{{kToolAddress, tool_port}}, Side{sensor}} {}
  ~Tap() override;

  void Pass(WireDirection direction, std::span<const std::uint8_t> bytes) noexcept override;

 private:
  struct Side {
    TcpEndpoint endpoint;
    std::uint32_t sequence = 0;  // of its next byte
  };

  bool IsShown() const { return recorder_.is_recording_ && shown_in_ == recorder_.recording_; }
  void Begin();
  void Send(std::size_t from, std::uint8_t flags, std::span<const std::uint8_t> payload = {});

  CaptureRecorder& recorder_;
  std::array<Side, 2> sides_;   // the tool, the sensor
  std::uint64_t shown_in_ = 0;  // the recording that contains the start of this connection
};

CaptureRecorder::Tap::~Tap() {
  const std::lock_guard lock(recorder_.mutex_);
  if (!IsShown()) return;
  try {
    Send(0, kTcpFin | kTcpAck);
    Send(1, kTcpFin | kTcpAck);
    Send(0, kTcpAck);
  } catch (const std::exception&) {  // out of memory: the conversation remains open
  }
}

void CaptureRecorder::Tap::Pass(WireDirection direction, std::span<const std::uint8_t> bytes) noexcept {
  if (!recorder_.is_recording_) return;
  const std::lock_guard lock(recorder_.mutex_);
  try {
    if (recorder_.is_recording_ && !IsShown()) Begin();
    const std::size_t from = direction == WireDirection::kToSensor ? 0 : 1;
    while (!bytes.empty() && recorder_.is_recording_) {
      const auto piece = bytes.first(std::min(bytes.size(), kLargestSegment));
      Send(from, kTcpPsh | kTcpAck, piece);
      bytes = bytes.subspan(piece.size());
    }
  } catch (const std::exception& error) {
    recorder_.End(error.what());
  }
}

void CaptureRecorder::Tap::Begin() {
  shown_in_ = recorder_.recording_;
  for (Side& side : sides_) side.sequence = 0;
  Send(0, kTcpSyn);
  Send(1, kTcpSyn | kTcpAck);
  Send(0, kTcpAck);
}

void CaptureRecorder::Tap::Send(std::size_t from, std::uint8_t flags, std::span<const std::uint8_t> payload) {
  Side& sender = sides_[from];
  const Side& receiver = sides_[1 - from];
  TcpSegment segment{sender.endpoint, receiver.endpoint, sender.sequence, 0, flags, payload};
  if ((flags & kTcpAck) != 0) segment.acknowledgement = receiver.sequence;
  recorder_.WritePacket(segment);
  // SYN and FIN take one sequence number each.
  sender.sequence +=
      static_cast<std::uint32_t>(payload.size()) + ((flags & (kTcpSyn | kTcpFin)) != 0 ? 1U : 0U);
}

CaptureRecorder::CaptureRecorder(std::function<void(const std::string&)> ended, std::uint64_t largest_file)
    : ended_(std::move(ended)), largest_file_(largest_file) {}

std::string CaptureRecorder::Start(const std::filesystem::path& file) {
  Stop();
  const std::lock_guard lock(mutex_);
  path_ = file;
  file_.open(file, std::ios::binary | std::ios::trunc);
  Put(file_, FileHeader());
  if (!file_.flush()) {
    file_ = std::ofstream();
    return "The recording can't be written to " + platform::PathText(file) + ".";
  }
  size_ = kPcapHeaderSize;
  ++recording_;
  is_recording_ = true;
  return {};
}

void CaptureRecorder::Stop() {
  const std::lock_guard lock(mutex_);
  is_recording_ = false;
  file_ = std::ofstream();
}

std::shared_ptr<WireTap> CaptureRecorder::Connection(const TcpEndpoint& sensor) {
  const std::lock_guard lock(mutex_);
  const auto port = static_cast<std::uint16_t>(kFirstToolPort + connections_++ % kToolPorts);
  return std::make_shared<Tap>(*this, sensor, port);
}

void CaptureRecorder::WritePacket(const TcpSegment& segment) {
  if (!is_recording_) return;
  const std::vector<std::uint8_t> packet = EncodeTcpPacket(segment, identification_++);
  const std::uint64_t grown = size_ + kPcapRecordSize + packet.size();
  if (grown > largest_file_) {
    End("it has reached " + std::to_string(largest_file_ / 1'000'000) + " MB");
    return;
  }
  Put(file_, RecordHeader(packet.size()));
  Put(file_, packet);
  if (!file_.flush()) {
    // Removes a half-written packet, so that the file stays readable.
    file_ = std::ofstream();
    std::error_code ignored;
    std::filesystem::resize_file(path_, size_, ignored);
    End("the file can't be written, the disk may be full");
    return;
  }
  size_ = grown;
}

void CaptureRecorder::End(const std::string& reason) noexcept {
  if (!is_recording_.exchange(false)) return;
  try {
    file_ = std::ofstream();
    if (ended_) ended_("The recording to " + platform::PathText(path_) + " has ended: " + reason + ".");
  } catch (const std::exception&) {  // out of memory: the end is not reported
  }
}

}  // namespace quarn::lidar
