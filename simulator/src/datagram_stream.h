#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>

#include "libquarn/Platform/src/socket.h"
#include "simulator/src/stop_signal.h"

namespace varkel::sim {

/// A datagram begins with its number: 64 bits, big-endian, from 1. The rest is zero. StreamTally counts them.
inline constexpr std::size_t kSmallestStreamDatagram = 8;
/// The most that IPv4 carries in one datagram.
inline constexpr std::size_t kLargestStreamDatagram = 65507;
/// One datagram every 15 minutes.
inline constexpr double kSlowestStream = 0.001;

struct StreamOptions {
  std::string address{};    ///< destination, a receiver or a multicast group; dotted IPv4 text
  std::string local{};      ///< address of the interface to send from; empty: the system's choice
  std::uint16_t port = 0;   ///< the receivers' port
  std::uint8_t hops = 1;    ///< time-to-live of multicast datagrams; 0: this machine only
  std::size_t size = 1024;  ///< bytes per datagram
  double rate = 1000;       ///< datagrams per second, at least kSlowestStream; 0: as fast as possible
  std::uint64_t count = 0;  ///< total number of datagrams; 0: endless
};

/// The rate at which datagrams of `size` bytes make up that many megabits per second, without headers.
double RateOfMegabits(double megabits, std::size_t size);

/// Sends numbered datagrams at a steady rate, on a thread of its own, starting with construction.
///
/// Each is due at a time counted from the first one, so a late datagram does not delay the later ones. After
/// a long delay (a suspended machine) it continues from there instead of catching up with a burst. A number
/// that the system refuses to send is lost to the receivers too.
class DatagramStream {
 public:
  /// Raises std::runtime_error with a sentence if the options are not valid.
  explicit DatagramStream(const StreamOptions& options);
  /// Ends the stream at once, whatever its rate.
  ~DatagramStream();
  DatagramStream(const DatagramStream&) = delete;
  DatagramStream& operator=(const DatagramStream&) = delete;

  std::uint64_t sent() const { return sent_; }        ///< datagrams that were sent
  std::uint64_t refused() const { return refused_; }  ///< datagrams that the system refused to send

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
