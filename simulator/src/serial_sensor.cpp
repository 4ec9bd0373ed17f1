#include "simulator/src/serial_sensor.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <vector>

namespace varkel::sim {
namespace {

constexpr std::int64_t kWithoutEnd = -1;
/// An incomplete request is discarded after this time.
constexpr std::int64_t kRequestGapUs = 500'000;
/// By then a client that reads at all has read the reply.
constexpr std::int64_t kSendTimeUs = 1'000'000;
constexpr std::size_t kDataBlock = 256;

std::unique_ptr<SerialSensor::Line> MakeLine() {
  auto line = SerialSensor::Line::Create();
  if (!line) throw std::runtime_error("This system provides no pseudo-terminals to serve as serial lines.");
  return line;
}

/// Any bytes can serve as point-cloud data as long as they contain no tag.
std::vector<std::uint8_t> DataBlock() {
  std::vector<std::uint8_t> block(kDataBlock);
  for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<std::uint8_t>(i);
  return block;
}

}  // namespace

SerialSensor::SerialSensor(SerialParts parts, std::chrono::milliseconds data_period)
    : parts_(parts), rs485_(MakeLine()), uart_(MakeLine()) {
  uart_thread_ = std::thread([this] { ServeUart(); });
  if (data_period.count() > 0) {
    data_thread_ = std::thread([this, data_period] { SendData(data_period); });
  }
}

SerialSensor::~SerialSensor() {
  stop_.Raise();
  uart_->Pull();
  rs485_->Pull();
  uart_thread_.join();
  if (data_thread_.joinable()) data_thread_.join();
}

void SerialSensor::ServeUart() {
  constexpr std::size_t kReadSize = 4096;
  std::array<std::uint8_t, kReadSize> buffer{};
  SerialRequestReader reader;
  for (;;) {
    const int ready = uart_->WaitReadable(reader.is_waiting() ? kRequestGapUs : kWithoutEnd);
    if (ready == 0) reader.Reset();
    const int received = ready > 0 ? uart_->Read(buffer) : ready;
    if (received < 0) return;
    reader.Append(std::span(buffer).first(static_cast<std::size_t>(received)));
    while (const auto request = reader.Next()) Answer(*request);
  }
}

void SerialSensor::Answer(const SerialRequest& request) {
  const SerialAnswer answer = AnswerSerialRequest(request, Carriage::kLine, parts_);
  if (answer.plan.silent || (answer.plan.delay.count() > 0 && stop_.WaitFor(answer.plan.delay))) return;
  const bool is_firmware = request.kind == quarn::lidar::ReplyKind::kOta;
  Send(is_firmware ? *uart_ : *rs485_, answer.bytes, answer.plan);
}

void SerialSensor::Send(Line& line, std::span<const std::uint8_t> bytes, const ReplyPlan& plan) {
  if (plan.closes) {
    const std::size_t half = plan.noise_size + (bytes.size() - plan.noise_size) / 2;
    bytes = bytes.first(std::min(bytes.size(), plan.close_after.value_or(half)));
  }
  {
    const std::lock_guard<std::mutex> lock(send_mutex_);
    while (!bytes.empty()) {
      const auto piece = bytes.first(std::min(bytes.size(), plan.piece_size.value_or(bytes.size())));
      if (!line.Write(piece, kSendTimeUs)) break;
      bytes = bytes.subspan(piece.size());
      if (!bytes.empty() && stop_.WaitFor(ReplyPlan::kPieceGap)) break;
    }
  }
  if (plan.closes) line.Pull();
}

void SerialSensor::SendData(std::chrono::milliseconds period) {
  const std::vector<std::uint8_t> block = DataBlock();
  while (!stop_.WaitFor(period)) {
    if (parts_.device.state.Items().standby) continue;
    // Bytes that the client does not read at once are lost, as on a real line.
    const std::lock_guard<std::mutex> lock(send_mutex_);
    rs485_->Write(block, 0);
  }
}

}  // namespace varkel::sim
