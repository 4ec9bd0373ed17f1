#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

#include "VarkelCore/src/catalogue/command_text.h"
#include "VarkelCore/src/session/connection_settings.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace varkel {

/// A sensor in the same network accepts within this time; there is no second chance.
inline constexpr std::chrono::milliseconds kAcceptTime{200};

/// A client that connects to the settings' address in the background, once. Raises the conversion errors of
/// text_number.h when the port is no number; its low 16 bits count.
std::shared_ptr<quarn::lidar::KtcClient> MakeKtcClient(const ConnectionSettings& settings,
                                                       std::uint32_t exchange_timeout_ms);

/// Runs a connection attempt, which raises what made it fail, and tells the user of a failure unless he gave
/// the attempt up himself. `connecting` falls with a failure; a success lowers it by itself, ahead of its
/// signals. `function` is how the console names the caller.
void AttemptTcp(const std::string& function, const std::stop_token& stop, UserReport& report,
                std::atomic<bool>& connecting, const std::function<void()>& attempt);

/// Whether the sensor answers KTC: command 7, or else command 8.
bool AnswersKtc(quarn::lidar::KtcClient& client);

}  // namespace varkel
