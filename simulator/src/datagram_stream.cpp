#include "simulator/src/datagram_stream.h"

#include <bit>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <vector>

#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Platform/src/ipv4.h"

namespace varkel::sim {
namespace {

namespace platform = quarn::platform;
using Clock = std::chrono::steady_clock;

/// About as much as receivers' buffers hold; more must not be sent at once.
constexpr std::chrono::milliseconds kLongestBacklog{250};

/// The times at which datagrams are due, at a steady rate.
class Pace {
 public:
  explicit Pace(double per_second) : interval_s_(per_second == 0 ? 0 : 1 / per_second) {}

  /// When the next one is due; in the past if it is late.
  Clock::time_point Next() {
    const std::chrono::duration<double> passed(interval_s_ * static_cast<double>(taken_));
    const Clock::time_point due = start_ + std::chrono::duration_cast<Clock::duration>(passed);
    ++taken_;
    const Clock::time_point now = Clock::now();
    if (now - due <= kLongestBacklog) return due;
    start_ = now;
    taken_ = 1;
    return now;
  }

 private:
  const double interval_s_;
  Clock::time_point start_ = Clock::now();
  std::uint64_t taken_ = 0;  // since start_
};

platform::Endpoint DestinationOf(const StreamOptions& options) {
  const std::optional<quarn::lidar::Ipv4> ip = quarn::lidar::ParseIpv4(options.address);
  if (!ip || options.port == 0) {
    throw std::runtime_error("Datagrams can't be sent to \"" + options.address + "\", port " +
                             std::to_string(options.port) + ": that is not an IPv4 address and port.");
  }
  if (options.size < kSmallestStreamDatagram || options.size > kLargestStreamDatagram) {
    throw std::runtime_error(
        "A datagram of the stream must have from " + std::to_string(kSmallestStreamDatagram) + " to " +
        std::to_string(kLargestStreamDatagram) + " bytes, not " + std::to_string(options.size) + ".");
  }
  if (options.rate != 0 && !(options.rate >= kSlowestStream)) {
    throw std::runtime_error("A stream must send at least one datagram every 15 minutes.");
  }
  return {std::bit_cast<std::uint32_t>(*ip), options.port};
}

}  // namespace

double RateOfMegabits(double megabits, std::size_t size) {
  return megabits * 1e6 / (8 * static_cast<double>(size));
}

DatagramStream::Socket::Socket() {
  platform::StartUpSockets();
  handle = platform::CreateUdpSocket();
}

DatagramStream::Socket::~Socket() {
  if (handle != platform::kInvalidSocket) platform::CloseSocket(handle);
  platform::CleanUpSockets();
}

DatagramStream::DatagramStream(const StreamOptions& options)
    : options_(options), to_(DestinationOf(options)) {
  PrepareSocket();
  thread_ = std::thread([this] { Run(); });
}

DatagramStream::~DatagramStream() {
  stop_.Raise();
  thread_.join();
}

void DatagramStream::PrepareSocket() {
  if (socket_.handle == platform::kInvalidSocket) {
    throw std::runtime_error("The system provides no socket for datagrams.");
  }
  const bool placed =
      options_.local.empty() || (platform::BindDatagramPort(socket_.handle, options_.local, 0, "") &&
                                 platform::SetMulticastInterface(socket_.handle, options_.local));
  if (!placed) {
    throw std::runtime_error("Datagrams can't be sent from \"" + options_.local +
                             "\": that is not an address of this machine.");
  }
  platform::SetMulticastHops(socket_.handle, options_.hops);
}

void DatagramStream::Run() {
  std::vector<std::uint8_t> datagram(options_.size);
  Pace pace(options_.rate);
  for (std::uint64_t number = 1; options_.count == 0 || number <= options_.count; ++number) {
    if (stop_.WaitUntil(pace.Next())) return;
    quarn::lidar::StoreBigEndian(datagram, 0, number);
    ++(platform::SendDatagram(socket_.handle, datagram, 0, to_) < 0 ? refused_ : sent_);
  }
}

}  // namespace varkel::sim
