#include "simulator/src/sim_server.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace varkel::sim {
namespace {

using quarn::platform::kInvalidSocket;
using quarn::platform::SocketHandle;

/// How long the accept thread may miss a raised stop signal.
constexpr int kAcceptSliceMs = 50;

}  // namespace

SimServer::SimServer(const std::string& address, std::uint16_t port, Conversation conversation)
    : conversation_(std::move(conversation)) {
  quarn::platform::StartUpSockets();
  listener_ = quarn::platform::TcpListener::Listen(address, port);
  if (!listener_) {
    quarn::platform::CleanUpSockets();
    throw std::runtime_error("Can't listen on " + address + ":" + std::to_string(port) +
                             ": the port is in use or the address is not one of this machine.");
  }
  accept_thread_ = std::thread([this] { AcceptClients(); });
}

SimServer::~SimServer() {
  stop_.Raise();
  accept_thread_.join();
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const Client& client : clients_) {
      if (client.socket != kInvalidSocket) quarn::platform::ShutdownSocket(client.socket);
    }
  }
  for (Client& client : clients_) client.thread.join();
  listener_.reset();
  quarn::platform::CleanUpSockets();
}

std::size_t SimServer::connected_clients() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return static_cast<std::size_t>(std::count_if(clients_.begin(), clients_.end(), [](const Client& client) {
    return client.socket != kInvalidSocket;
  }));
}

void SimServer::AcceptClients() {
  while (!stop_.raised()) {
    const SocketHandle socket = listener_->Accept(kAcceptSliceMs);
    JoinThoseWhoLeft();
    if (socket != kInvalidSocket) Admit(socket);
  }
}

void SimServer::Admit(SocketHandle socket) {
  const std::lock_guard<std::mutex> lock(mutex_);
  Client& client = clients_.emplace_back();
  try {
    client.thread = std::thread([this, &client, socket] { Serve(client, socket); });
    client.socket = socket;
  } catch (const std::system_error&) {  // no more threads: this client is turned away
    clients_.pop_back();
    quarn::platform::CloseSocket(socket);
  }
}

void SimServer::Serve(Client& client, SocketHandle socket) {
  conversation_(socket, stop_);
  // Under the lock, so that nobody shuts down a descriptor that already belongs to someone else.
  const std::lock_guard<std::mutex> lock(mutex_);
  quarn::platform::CloseSocket(socket);
  client.socket = kInvalidSocket;
}

void SimServer::JoinThoseWhoLeft() {
  std::list<Client> left;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (auto client = clients_.begin(); client != clients_.end();) {
      const auto next = std::next(client);
      if (client->socket == kInvalidSocket) left.splice(left.end(), clients_, client);
      client = next;
    }
  }
  for (Client& client : left) client.thread.join();
}

}  // namespace varkel::sim
