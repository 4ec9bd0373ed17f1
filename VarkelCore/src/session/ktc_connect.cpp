#include "VarkelCore/src/session/ktc_connect.h"

#include <exception>
#include <iostream>

#include "libquarn/Platform/src/text_number.h"

namespace varkel {

namespace {

using quarn::lidar::KtcClient;

constexpr std::uint32_t kPlainTcp = 0;
constexpr std::uint8_t kProtocolVersion = 1;
constexpr float kConnectTimeoutS = 0.0F;  // one try
constexpr std::uint8_t kProbeCommands[] = {7, 8};

}  // namespace

std::shared_ptr<KtcClient> MakeKtcClient(const ConnectionSettings& settings,
                                         std::uint32_t exchange_timeout_ms) {
  const auto port = static_cast<std::uint16_t>(quarn::lidar::TextToInt(settings.port));
  return std::make_shared<KtcClient>(settings.ip_address, port, false, kPlainTcp, kProtocolVersion, "", "",
                                     "", exchange_timeout_ms, exchange_timeout_ms, kConnectTimeoutS,
                                     std::uint16_t{0});
}

void AttemptTcp(const std::string& function, const std::stop_token& stop, UserReport& report,
                std::atomic<bool>& connecting, const std::function<void()>& attempt) {
  std::string failure = "Connection Error: ";
  std::cout << function << "(): try to connect to lidar with TCP connection.\n" << std::flush;
  try {
    attempt();
    return;
  } catch (const std::exception& error) {
    failure += error.what();
  } catch (...) {
    failure += "Unknown";
  }
  if (!stop.stop_requested()) {
    std::cout << function << "(): init lidar error\n" << std::flush;
    report.Error("Connection Failed. Please check your network settings.");
    report.Log(failure, "ERROR");
  }
  connecting = false;
}

bool AnswersKtc(KtcClient& client) {
  std::vector<std::uint8_t> reply;
  for (const std::uint8_t command : kProbeCommands) {
    if (client.QueryCommand({}, reply, command) == 0) return true;
  }
  return false;
}

}  // namespace varkel
