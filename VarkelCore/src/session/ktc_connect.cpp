#include "VarkelCore/src/session/ktc_connect.h"

#include <chrono>
#include <exception>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "VarkelCore/src/tasks/worker_threads.h"
#include "libquarn/Platform/src/ipv4.h"
#include "libquarn/Platform/src/text_number.h"
#include "libquarn/Platform/src/trace.h"

namespace varkel {

namespace {

using quarn::lidar::KtcClient;

/// A sensor in the same network accepts within this time; there is no second chance.
constexpr std::chrono::milliseconds kAcceptTime{200};

constexpr std::uint32_t kPlainTcp = 0;
constexpr std::uint8_t kProtocolVersion = 1;
constexpr float kConnectTimeoutS = 0.0F;  // one try
constexpr std::uint8_t kProbeCommands[] = {7, 8};

/// Uses the low 16 bits; raises the conversion errors of text_number.h if the port is not a number.
std::uint16_t PortOf(const ConnectionSettings& settings) {
  return static_cast<std::uint16_t>(quarn::lidar::TextToInt(settings.port));
}

/// Connects in the background.
std::shared_ptr<KtcClient> StartClient(const ConnectionSettings& settings,
                                       std::uint32_t exchange_timeout_ms) {
  return std::make_shared<KtcClient>(settings.ip_address, PortOf(settings), false, kPlainTcp,
                                     kProtocolVersion, "", "", "", exchange_timeout_ms, exchange_timeout_ms,
                                     kConnectTimeoutS, std::uint16_t{0});
}

std::shared_ptr<ByteLog> InstallByteLog(KtcClient& client, const SessionContext& context) {
  auto byte_log = std::make_shared<ByteLog>(context.log_bytes);
  client.SetLogCallback([&report = context.report](const std::string& line) { report.Bytes(line); },
                        [byte_log] { return byte_log->IsWanted(); });
  return byte_log;
}

void InstallWireTap(KtcClient& client, const ConnectionSettings& settings, const SessionContext& context) {
  if (context.recorder == nullptr) return;
  const auto address = quarn::lidar::ParseIpv4(settings.ip_address);
  client.SetWireTap(context.recorder->Connection({address.value_or(quarn::lidar::Ipv4{}), PortOf(settings)}));
}

ConnectFailure Failure(const std::string& reason) {
  return {"Connection Failed. Please check your network settings.", "Connection Error: " + reason};
}

}  // namespace

bool AnswersKtc(KtcClient& client) {
  std::vector<std::uint8_t> reply;
  for (const std::uint8_t command : kProbeCommands) {
    if (client.QueryCommand({}, reply, command) == 0) return true;
  }
  return false;
}

SessionResult ConnectKtc(const char* function, const std::stop_token& stop,
                         const ConnectionSettings& settings, std::uint32_t exchange_timeout_ms,
                         const SessionContext& context,
                         const std::function<std::shared_ptr<SensorSession>(const KtcConnection&)>& finish) {
  quarn::platform::TraceLine(std::string(function) + "(): try to connect to lidar with TCP connection.");
  std::string reason;
  try {
    const auto client = StartClient(settings, exchange_timeout_ms);
    const std::stop_callback interrupt(stop, [&client] { client->Interrupt(); });
    SleepUnlessStopped(stop, kAcceptTime);
    if (!client->IsOpen()) throw std::runtime_error("TCP connection failed.");
    InstallWireTap(*client, settings, context);
    return finish({client, InstallByteLog(*client, context)});
  } catch (const std::exception& error) {
    reason = error.what();
  } catch (...) {
    reason = "Unknown";
  }
  if (!stop.stop_requested()) quarn::platform::TraceLine(std::string(function) + "(): init lidar error");
  return tl::unexpected(Failure(reason));
}

}  // namespace varkel
