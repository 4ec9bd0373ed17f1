#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <stop_token>

#include "VarkelCore/src/session/session_makers.h"

namespace varkel {

/// Whether the sensor answers KTC command 7 or, failing that, command 8.
bool AnswersKtc(quarn::lidar::KtcClient& client);

/// A KTC connection that has just been established.
struct KtcConnection {
  std::shared_ptr<quarn::lidar::KtcClient> client;
  std::shared_ptr<ByteLog> byte_log;
};

/// Connects once to the address in the settings and passes the open client to `finish`, which throws if
/// something is wrong with the sensor. `function` names the caller in the trace on standard output,
/// `exchange_timeout_ms` is the client's time-out for sending and receiving. A stop ends every wait at once.
SessionResult ConnectKtc(const char* function, const std::stop_token& stop,
                         const ConnectionSettings& settings, std::uint32_t exchange_timeout_ms,
                         const SessionContext& context,
                         const std::function<std::shared_ptr<SensorSession>(const KtcConnection&)>& finish);

}  // namespace varkel
