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

/// How soon the accept thread notices a stop signal or a restart.
constexpr int kAcceptSliceMs = 50;
/// Pause between attempts to get the port back after a restart.
constexpr std::chrono::milliseconds kListenRetry{50};

}  // namespace

SimServer::SimServer(const std::string& address, std::uint16_t port, Conversation conversation,
                     Restarting restarting)
    : address_(address), conversation_(std::move(conversation)), restarting_(std::move(restarting)) {
  quarn::platform::StartUpSockets();
  listener_ = quarn::platform::TcpListener::Listen(address, port);
  if (!listener_) {
    quarn::platform::CleanUpSockets();
    throw std::runtime_error("Can't listen on " + address + ":" + std::to_string(port) +
                             ": the port is in use or the address is not one of this machine.");
  }
  port_ = listener_->port();
  accept_thread_ = std::thread([this] { AcceptClients(); });
}

SimServer::~SimServer() {
  stop_.Raise();
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
  }
  phase_changed_.notify_all();
  accept_thread_.join();
  DisconnectAll();
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
    JoinFinished();
    if (socket != kInvalidSocket) Admit(socket);
    if (RestartHasBegun()) Restart();
  }
}

bool SimServer::RestartHasBegun() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return phase_ != Phase::kServing;
}

bool SimServer::Begin() {
  std::unique_lock<std::mutex> lock(mutex_);
  if (phase_ != Phase::kServing) return false;
  phase_ = Phase::kClosing;
  restarting_.on_begin();
  phase_changed_.wait(lock, [this] { return phase_ != Phase::kClosing || stopping_; });
  return true;
}

void SimServer::Finish() {
  SetPhase(Phase::kDown);
}

void SimServer::Restart() {
  listener_.reset();
  SetPhase(Phase::kReplying);
  WaitForReply();
  DisconnectAll();
  stop_.WaitFor(restarting_.time);
  restarting_.on_power_up();
  ListenAgain();
  SetPhase(Phase::kServing);
}

void SimServer::WaitForReply() {
  std::unique_lock<std::mutex> lock(mutex_);
  phase_changed_.wait(lock, [this] { return phase_ == Phase::kDown || stopping_; });
}

/// The listener stays null only while the server is being destroyed.
void SimServer::ListenAgain() {
  while (!stop_.raised()) {
    listener_ = quarn::platform::TcpListener::Listen(address_, port_);
    if (listener_ || stop_.WaitFor(kListenRetry)) return;
  }
}

void SimServer::SetPhase(Phase phase) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    phase_ = phase;
  }
  phase_changed_.notify_all();
}

/// Includes stuck ones; returns when all have ended.
void SimServer::DisconnectAll() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (Client& client : clients_) {
      client.stop.Raise();
      if (client.socket != kInvalidSocket) quarn::platform::ShutdownSocket(client.socket);
    }
  }
  for (Client& client : clients_) client.thread.join();
  const std::lock_guard<std::mutex> lock(mutex_);
  clients_.clear();
}

void SimServer::Admit(SocketHandle socket) {
  const std::lock_guard<std::mutex> lock(mutex_);
  Client& client = clients_.emplace_back();
  try {
    client.thread = std::thread([this, &client, socket] { Serve(client, socket); });
    client.socket = socket;
  } catch (const std::system_error&) {  // no more threads: this client is rejected
    clients_.pop_back();
    quarn::platform::CloseSocket(socket);
  }
}

void SimServer::Serve(Client& client, SocketHandle socket) {
  conversation_(socket, client.stop, *this);
  // Under the lock, so that no other thread shuts down a descriptor that has been reused.
  const std::lock_guard<std::mutex> lock(mutex_);
  quarn::platform::CloseSocket(socket);
  client.socket = kInvalidSocket;
}

void SimServer::JoinFinished() {
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
