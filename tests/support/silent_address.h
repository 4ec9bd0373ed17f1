#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "libquarn/Platform/src/socket.h"

namespace quarn::test {

/// An address that never answers: a listener whose queue is full, so that further connections hang.
class SilentAddress {
 public:
  SilentAddress() : listener_(platform::TcpListener::Listen("127.0.0.1", 0, 0)) {
    for (int i = 0; i < 8; ++i) {
      waiting_.push_back(platform::CreateTcpSocket());
      platform::SetNonBlocking(waiting_.back(), true);
      platform::ConnectSocket(waiting_.back(), "127.0.0.1", port());
      if (platform::WaitWritable(waiting_.back(), 200) == 0) {
        return;
      }
    }
  }
  ~SilentAddress() {
    for (const platform::SocketHandle socket : waiting_) {
      platform::CloseSocket(socket);
    }
  }
  SilentAddress(const SilentAddress&) = delete;
  SilentAddress& operator=(const SilentAddress&) = delete;

  std::uint16_t port() const { return listener_->port(); }

 private:
  const std::unique_ptr<platform::TcpListener> listener_;
  std::vector<platform::SocketHandle> waiting_;
};

}  // namespace quarn::test
