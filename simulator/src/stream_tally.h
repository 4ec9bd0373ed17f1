#pragma once

#include <cstdint>
#include <span>

namespace varkel::sim {

/// Counts lost and disordered datagrams of a DatagramStream from their numbers. A receiver may join late:
/// datagrams before the lowest received number and after the highest are not counted as lost.
class StreamTally {
 public:
  /// False for a datagram too short for a number, which is ignored.
  bool Count(std::span<const std::uint8_t> datagram);

  std::uint64_t received() const { return received_; }
  std::uint64_t last() const { return highest_; }           ///< the highest number, 0 before the first
  std::uint64_t disordered() const { return disordered_; }  ///< arrived after a higher number, or twice
  std::uint64_t lost() const;                               ///< numbers that did not arrive

 private:
  std::uint64_t received_ = 0;
  std::uint64_t lowest_ = 0;
  std::uint64_t highest_ = 0;
  std::uint64_t disordered_ = 0;
};

}  // namespace varkel::sim
