#pragma once

#include <cstdint>
#include <memory>

#include "libquarn/KtcClient/src/client_base.h"

namespace quarn::lidar {

inline constexpr std::uint32_t kPlainTcpClient = 0;
inline constexpr std::uint32_t kTlsClient = 1;

/// Creates a transport for the client type; null if it has none.
std::shared_ptr<ClientBase> CreateTransport(std::uint32_t client_type);

}  // namespace quarn::lidar
