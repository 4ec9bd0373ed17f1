#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "libquarn/Platform/src/socket.h"
#include "simulator/src/stop_signal.h"

namespace varkel::sim {

/// Accepts clients from construction to destruction and runs one conversation a client, each on a thread of
/// its own.
class SimServer {
 public:
  /// Returns when the client leaves, or when the socket is shut down with the signal raised. Must not throw.
  using Conversation = std::function<void(quarn::platform::SocketHandle socket, const StopSignal& stop)>;

  /// Port 0 picks a free one. Raises std::runtime_error when it can't listen.
  SimServer(const std::string& address, std::uint16_t port, Conversation conversation);
  /// Ends all conversations, stuck ones too, and joins their threads.
  ~SimServer();
  SimServer(const SimServer&) = delete;
  SimServer& operator=(const SimServer&) = delete;

  std::uint16_t port() const { return listener_->port(); }
  std::size_t connected_clients() const;

 private:
  struct Client {
    quarn::platform::SocketHandle socket = quarn::platform::kInvalidSocket;  ///< guarded; invalid: it left
    std::thread thread;
  };

  void AcceptClients();
  void Admit(quarn::platform::SocketHandle socket);
  void Serve(Client& client, quarn::platform::SocketHandle socket);
  void JoinThoseWhoLeft();

  const Conversation conversation_;
  StopSignal stop_;
  std::unique_ptr<quarn::platform::TcpListener> listener_;
  mutable std::mutex mutex_;
  std::list<Client> clients_;  // the accept thread adds and removes; mutex_ guards list and sockets
  std::thread accept_thread_;
};

}  // namespace varkel::sim
