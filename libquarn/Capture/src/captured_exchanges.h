#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <istream>
#include <string>
#include <vector>

#include "libquarn/Capture/src/pcap_format.h"
#include "libquarn/Capture/src/tcp_packet.h"

namespace quarn::lidar {

/// A request and its reply, if any.
struct CapturedExchange {
  enum class Protocol : std::uint8_t { kKtc1 = 1, kKtc2 = 2, kSerialLines };
  enum class Answer : std::uint8_t { kNone, kWhole, kIncomplete };

  std::size_t connection = 0;  ///< from 1
  TcpEndpoint sensor;
  Protocol protocol = Protocol::kKtc1;
  CaptureTime asked;
  std::uint8_t command = 0;           ///< on serial lines: the command code or frame type
  std::vector<std::uint8_t> request;  ///< payload; on serial lines: the whole frame

  Answer answer = Answer::kNone;
  CaptureTime answered;             ///< this and the following fields are set only if there is an answer
  std::uint8_t reply_command = 0;   ///< differs from `command` if the sensor answered something else
  std::uint8_t return_code = 0;     ///< 0: success
  std::uint32_t announced = 0;      ///< payload length in the reply's header, in bytes
  std::vector<std::uint8_t> reply;  ///< payload, as far as it came; on serial lines: the whole frame
};

/// Statistics of a capture.
struct CaptureSummary {
  std::uint64_t packets = 0;
  std::uint64_t other_packets = 0;  ///< not TCP over IP version 4
  std::size_t connections = 0;
  std::uint64_t exchanges = 0;
  std::uint64_t unsolicited = 0;  ///< complete frames from the sensor that answer no request
  std::uint64_t noise = 0;        ///< bytes that belong to no frame
  std::uint64_t lost = 0;         ///< bytes of connections that are missing from the file
  std::string fault;              ///< what is wrong with the file, as a sentence; empty if it is complete
};

/// Reads the exchanges of a pcap capture, those of each connection in order. Replies are matched with
/// requests as the client does: a reply answers the latest request, or an earlier one if only that has the
/// same command.
CaptureSummary ReadCapture(std::istream& file,
                           const std::function<void(const CapturedExchange&)>& take_exchange);

}  // namespace quarn::lidar
