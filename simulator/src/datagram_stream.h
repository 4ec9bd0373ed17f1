#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>

#include "libquarn/Platform/src/socket.h"
#include "simulator/src/stop_signal.h"

namespace varkel::sim {

/// A datagram begins with its number: 64 bits, big-endian, from 1 on. The rest is zero. StreamTally counts.
inline constexpr std::size_t kSmallestStreamDatagram = 8;
/// What IP version 4 carries in one datagram.
inline constexpr std::size_t kLargestStreamDatagram = 65507;
/// One datagram in a quarter of an hour.
inline constexpr double kSlowestStream = 0.001;

struct StreamOptions {
  std::string address{};    ///< where to, one receiver or a multicast group; dotted IP version 4 text
  std::string local{};      ///< address of the interface to send from; empty: the system's choice
  std::uint16_t port = 0;   ///< the receivers' port
  std::uint8_t hops = 1;    ///< routers on the way to a group, and one; 0: this machine only
  std::size_t size = 1024;  ///< bytes a datagram
  double rate = 1000;       ///< datagrams a second, at least kSlowestStream; 0: as fast as it goes
  std::uint64_t count = 0;  ///< datagrams in all; 0: endless
};

/// The rate at which datagrams of `size` bytes make up so many million bits a second, headers not counted.
double RateOfMegabits(double megabits, std::size_t size);

/// Sends numbered datagrams at a steady rate, on a thread of its own, from construction on.
///
/// Each has its moment, counted from the first one: a late datagram makes none of the later ones late. Who
/// is far too late (a suspended machine) does not catch up with a burst, but goes on from there. A number
/// that the system refuses to send is lost to the receivers too.
class DatagramStream {
 public:
  /// Raises std::runtime_error with a sentence when the options can't be met.
  explicit DatagramStream(const StreamOptions& options);
  /// Ends the stream, at any rate at once.
  ~DatagramStream();
  DatagramStream(const DatagramStream&) = delete;
  DatagramStream& operator=(const DatagramStream&) = delete;

  std::uint64_t sent() const { return sent_; }        ///< datagrams that went out
  std::uint64_t refused() const { return refused_; }  ///< datagrams that the system did not take

 private:
  /// An open socket, closed on destruction.
  struct Socket {
    Socket();
    ~Socket();
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    quarn::platform::SocketHandle handle = quarn::platform::kInvalidSocket;
  };

  void PrepareSocket();
  void Run();

  const StreamOptions options_;
  const Socket socket_;
  const quarn::platform::Endpoint to_;
  StopSignal stop_;
  std::atomic<std::uint64_t> sent_{0};
  std::atomic<std::uint64_t> refused_{0};
  std::thread thread_;  // last: it uses all of the above
};

}  // namespace varkel::sim
