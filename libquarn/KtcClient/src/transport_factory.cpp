#include "libquarn/KtcClient/src/transport_factory.h"

#include "libquarn/KtcClient/src/tcp_client.h"
#include "libquarn/Platform/src/logger.h"

namespace quarn::lidar {
namespace {

const char kSourceFile[] = "libquarn/KtcClient/src/transport_factory";

}  // namespace

std::shared_ptr<ClientBase> CreateTransport(std::uint32_t client_type) {
  switch (client_type) {
    case kPlainTcpClient:
      return std::make_shared<TcpClient>();
    case kTlsClient:
      QUARN_LOG(log_lib::kError, "TLS transport is not available yet");
      return nullptr;
    default:
      return nullptr;
  }
}

}  // namespace quarn::lidar
