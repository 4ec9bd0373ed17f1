#include "libquarn/KtcClient/src/transport_factory.h"

#include "libquarn/KtcClient/src/tcp_client.h"
#include "libquarn/KtcClient/src/tcp_ssl_client.h"

namespace quarn::lidar {

std::shared_ptr<ClientBase> CreateTransport(std::uint32_t client_type) {
  switch (client_type) {
    case kPlainTcpClient:
      return std::make_shared<TcpClient>();
    case kTlsClient:
      return std::make_shared<TcpSslClient>();
    default:
      return nullptr;
  }
}

}  // namespace quarn::lidar
