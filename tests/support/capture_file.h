#pragma once

#include <array>
#include <cstdint>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace varkel::test {

using Bytes = std::vector<std::uint8_t>;

/// A capture in classic pcap format (raw IPv4 packets): each call adds a TCP segment, a millisecond after the
/// previous one.
class CaptureFile {
 public:
  static constexpr std::uint16_t kSensorPort = 9347;

  explicit CaptureFile(const std::string& path) : file_(path, std::ios::binary) {
    Bytes header;
    for (const std::uint32_t word : {0xA1B2C3D4U, 0x00020004U, 0U, 0U, 0x40000U, kRawPackets}) {
      Append(header, word, 4);
    }
    Write(header);
  }

  /// `client` is the client's port; each port is a separate stream.
  void ToSensor(const Bytes& bytes, std::uint16_t client = 50000) { Segment(bytes, client, true); }
  void FromSensor(const Bytes& bytes, std::uint16_t client = 50000) { Segment(bytes, client, false); }

  std::uint16_t sensor_port = kSensorPort;  ///< of the segments added next

  void Flush() { file_.flush(); }

 private:
  static constexpr std::uint32_t kRawPackets = 101;
  static constexpr std::size_t kHeaders = 40;

  static void Append(Bytes& bytes, std::uint64_t number, int size) {
    for (int i = size - 1; i >= 0; --i) bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
  }

  void Segment(const Bytes& bytes, std::uint16_t client, bool to_sensor) {
    constexpr std::uint32_t kAddresses[] = {0x0A000001, 0xC0A801C9};
    auto& sent = sent_[client];
    Bytes packet;
    const std::uint64_t size = kHeaders + bytes.size();
    ++milliseconds_;
    Append(packet, milliseconds_ / 1000, 4);
    Append(packet, milliseconds_ % 1000 * 1000, 4);
    for (int i = 0; i < 2; ++i) Append(packet, size, 4);
    Append(packet, 0x45000000U + size, 4);
    Append(packet, 0x0000'4000'4006'0000, 8);
    Append(packet, kAddresses[to_sensor ? 0 : 1], 4);
    Append(packet, kAddresses[to_sensor ? 1 : 0], 4);
    Append(packet, to_sensor ? client : sensor_port, 2);
    Append(packet, to_sensor ? sensor_port : client, 2);
    Append(packet, sent[to_sensor ? 1 : 0] + 1U, 4);
    Append(packet, sent[to_sensor ? 0 : 1] + 1U, 4);
    Append(packet, 0x5018'FFFF'0000'0000, 8);
    packet.insert(packet.end(), bytes.begin(), bytes.end());
    sent[to_sensor ? 1 : 0] += static_cast<std::uint32_t>(bytes.size());
    Write(packet);
  }

  void Write(const Bytes& bytes) {
    file_.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }

  std::ofstream file_;
  std::uint64_t milliseconds_ = 0;
  std::map<std::uint16_t, std::array<std::uint32_t, 2>> sent_;  // bytes so far, from and to the sensor
};

}  // namespace varkel::test
