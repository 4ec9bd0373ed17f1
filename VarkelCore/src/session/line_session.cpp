#include <utility>

#include "VarkelCore/src/session/session_makers.h"

namespace varkel {

namespace {

using quarn::lidar::SerialClient;
using quarn::lidar::SerialSource;

// The baud rates of the two lines: commands are sent slowly, data and replies arrive at the chosen rate.
constexpr std::uint32_t kRs485CommandRate = 115200;
constexpr std::uint32_t kUartCommandRate = 9600;
constexpr std::uint32_t kUartDataRate = 3125000;

}  // namespace

SessionResult OpenSerialLines(const ConnectionSettings& settings, const SessionContext& context,
                              SensorSession::Periodic periodic) {
  const auto rs485 = std::make_shared<SerialSource>(settings.serial_port_485, kRs485CommandRate,
                                                    static_cast<std::uint32_t>(settings.baud_rate));
  const auto uart = std::make_shared<SerialSource>(settings.serial_port_232, kUartCommandRate, kUartDataRate);
  rs485->SetReceiveType(SerialSource::kDataType);
  if (!rs485->Open()) {
    return tl::unexpected(ConnectFailure{"Connection Failed. Please check your RS485 serial port.",
                                         "Connection Error: RS485 serial open fail"});
  }
  uart->SetReceiveType(SerialSource::kCommandType);
  uart->SetAutoReceive(false);
  if (!uart->Open()) {
    rs485->Close();
    return tl::unexpected(ConnectFailure{"Connection Failed. Please check your UART serial port.",
                                         "Connection Error: UART serial open fail"});
  }
  const auto client = std::make_shared<SerialClient>(uart, rs485);
  const auto byte_log = std::make_shared<ByteLog>(context.log_bytes);
  client->SetLogCallback([&report = context.report](const std::string& line) { report.Bytes(line); },
                         [byte_log] { return byte_log->IsWanted(); });
  if (context.recorder != nullptr) {
    client->SetWireTap(context.recorder->Connection(quarn::lidar::kSerialLinesEndpoint));
  }
  return std::make_shared<SensorSession>(SensorSession::Lines{rs485, uart, client}, byte_log,
                                         context.activity, std::move(periodic));
}

}  // namespace varkel
