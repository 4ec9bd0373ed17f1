#include "libquarn/Capture/src/pcap_reader.h"

#include <array>
#include <span>

#include "libquarn/Platform/src/byte_order.h"

namespace quarn::lidar {
namespace {

constexpr std::size_t kLinkTypePosition = 20;
constexpr std::uint32_t kLinkTypeMask = 0x0FFFFFFF;  // the upper bits are about checksums
constexpr std::uint32_t kMicroseconds = 1'000'000;
constexpr std::uint32_t kNanoseconds = 1'000'000'000;

}  // namespace

PcapReader::PcapReader(std::istream& file) : file_(file) {
  std::array<std::uint8_t, kPcapHeaderSize> header{};
  const std::size_t size = Read(header.data(), header.size());
  std::uint32_t magic = 0;
  for (const bool is_little : {true, false}) {
    is_little_ = is_little;
    magic = Number(header.data());
    if (magic == kPcapMicroseconds || magic == kPcapNanoseconds) break;
  }
  if (magic == kPcapNextGeneration) {
    fault_ = "The file is in the pcapng format: save it as pcap (editcap -F pcap).";
  } else if (magic != kPcapMicroseconds && magic != kPcapNanoseconds) {
    fault_ = "The file is not a pcap capture.";
  } else if (size < header.size()) {
    fault_ = "The file ends within its header.";
  }
  fractions_ = magic == kPcapNanoseconds ? kNanoseconds : kMicroseconds;
  link_type_ = Number(header.data() + kLinkTypePosition) & kLinkTypeMask;
}

std::optional<PcapPacket> PcapReader::Next() {
  if (!fault_.empty()) return std::nullopt;
  std::array<std::uint8_t, kPcapRecordSize> record{};
  const std::size_t read = Read(record.data(), record.size());
  if (read == 0) return std::nullopt;
  const std::string after = " after " + std::to_string(packets_) + " packets.";
  if (read < record.size()) {
    fault_ = "The file is cut off" + after;
    return std::nullopt;
  }
  const std::uint32_t size = Number(record.data() + 8);
  if (size > kLargestPacket) {
    fault_ = "The file is damaged: a packet of " + std::to_string(size) + " bytes" + after;
    return std::nullopt;
  }
  PcapPacket packet;
  packet.time = CaptureTime(
      std::chrono::seconds(Number(record.data())) +
      std::chrono::nanoseconds(std::uint64_t{Number(record.data() + 4)} * (kNanoseconds / fractions_)));
  packet.bytes.resize(size);
  if (Read(packet.bytes.data(), size) < size) {
    fault_ = "The file is cut off" + after;
    return std::nullopt;
  }
  ++packets_;
  return packet;
}

std::uint32_t PcapReader::Number(const std::uint8_t* bytes) const {
  const std::span<const std::uint8_t> four(bytes, sizeof(std::uint32_t));
  return is_little_ ? LoadLittleEndian<std::uint32_t>(four, 0) : LoadBigEndian<std::uint32_t>(four, 0);
}

std::size_t PcapReader::Read(std::uint8_t* bytes, std::size_t size) {
  file_.read(reinterpret_cast<char*>(bytes), static_cast<std::streamsize>(size));
  return static_cast<std::size_t>(file_.gcount());
}

}  // namespace quarn::lidar
