#include "libquarn/KtcClient/src/tcp_open.h"

#include <system_error>

#include "libquarn/KtcClient/src/tcp_connect.h"
#include "libquarn/KtcClient/src/transport_log.h"

namespace quarn::lidar {
namespace {

constexpr int kFailed = -1;

const std::atomic<bool> kNeverInterrupted{false};

const std::atomic<bool>& OrNever(const std::atomic<bool>* interrupted) {
  return interrupted != nullptr ? *interrupted : kNeverInterrupted;
}

void LogError(const char* what, int error) {
  QUARN_LOG_AS(kTransportLog, log_lib::kError, "%s errno:%d, %s", what, error,
               std::system_category().message(error).c_str());
}

}  // namespace

int tcp_open(const char* ip, int port, const std::atomic<bool>* interrupted) {
  if (!platform::StartUpSockets()) {
    QUARN_LOG_AS(kTransportLog, log_lib::kError, "Initilize winsock error !");
    return 0;
  }
  QUARN_LOG_AS(kTransportLog, log_lib::kProgress, "ip:%s port:%d", ip, port);
  const ConnectOutcome outcome =
      ConnectTcp({.ip = ip, .port = static_cast<std::uint16_t>(port)}, OrNever(interrupted));
  platform::CleanUpSockets();  // a connected socket has its own start-up
  switch (outcome.result) {
    case ConnectResult::kConnected:
      return static_cast<int>(outcome.socket);
    case ConnectResult::kNoSocket:
      LogError("socket", outcome.error);
      return kFailed;
    case ConnectResult::kBadAddress:
      QUARN_LOG_AS(kTransportLog, log_lib::kError, "tcp_open inet_pton error:%s", ip);
      return kFailed;
    case ConnectResult::kNotStarted:
    case ConnectResult::kFailed:
    case ConnectResult::kWaitFailed:
      LogError("connect", outcome.error);
      return kFailed;
    default:
      return kFailed;
  }
}

int tcp_try_open(std::uint16_t local_port, const char* ip, int port, std::uint32_t timeout_s,
                 const std::atomic<bool>* interrupted) {
  const ConnectOutcome outcome = ConnectTcp(
      {.ip = ip, .port = static_cast<std::uint16_t>(port), .local_port = local_port, .timeout_s = timeout_s},
      OrNever(interrupted));
  if (!outcome.is_local_port) {
    QUARN_LOG_AS(kTransportLog, log_lib::kError, "Failed to bind local port, system will auto assign one");
  }
  switch (outcome.result) {
    case ConnectResult::kConnected:
      return static_cast<int>(outcome.socket);
    case ConnectResult::kNoSocketSystem:
      QUARN_LOG_AS(kTransportLog, log_lib::kError, "Initilize winsock error !");
      return kFailed;
    case ConnectResult::kBadAddress:
      QUARN_LOG_AS(kTransportLog, log_lib::kError, "tcp_try_open inet_pton error:%s", ip);
      return kFailed;
    case ConnectResult::kNotStarted:
      QUARN_LOG_AS(kTransportLog, log_lib::kError, "socket Connection error.");
      return kFailed;
    case ConnectResult::kFailed:
      return 0;
    default:
      return kFailed;
  }
}

}  // namespace quarn::lidar
