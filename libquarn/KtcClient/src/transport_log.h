#pragma once

#include "libquarn/Platform/src/logger.h"

namespace quarn::lidar {

/// The source file that log lines about making a connection, plain or with TLS, name: all are found under it,
/// whichever file logs them.
inline constexpr char kTransportLog[] = "libquarn/KtcClient/src/tcp_ssl_client";

}  // namespace quarn::lidar
