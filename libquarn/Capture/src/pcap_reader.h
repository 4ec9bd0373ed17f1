#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <vector>

#include "libquarn/Capture/src/pcap_format.h"

namespace quarn::lidar {

struct PcapPacket {
  CaptureTime time;
  std::vector<std::uint8_t> bytes;
};

/// Reads a pcap file packet by packet: either byte order, times in micro- or nanoseconds. From a malformed or
/// truncated file it returns the packets before the fault. Holds one packet at a time.
class PcapReader {
 public:
  /// Reads the file's header; `file` outlives the reader.
  explicit PcapReader(std::istream& file);

  /// The next packet; nullopt at the end of the file or at a fault.
  std::optional<PcapPacket> Next();

  /// What is wrong with the file, as a sentence; empty if nothing is so far.
  const std::string& fault() const { return fault_; }
  /// One of LinkType, or another number.
  std::uint32_t link_type() const { return link_type_; }

 private:
  std::uint32_t Number(const std::uint8_t* bytes) const;
  std::size_t Read(std::uint8_t* bytes, std::size_t size);

  std::istream& file_;
  bool is_little_ = true;
  std::uint32_t fractions_ = 0;  // of a second
  std::uint32_t link_type_ = 0;
  std::uint64_t packets_ = 0;
  std::string fault_;
};

}  // namespace quarn::lidar
