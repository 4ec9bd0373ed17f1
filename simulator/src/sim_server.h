#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "libquarn/Platform/src/socket.h"
#include "simulator/src/restart_switch.h"
#include "simulator/src/stop_signal.h"

namespace varkel::sim {

/// Accepts clients from construction to destruction, except during restarts, and runs one conversation per
/// client, each on a thread of its own.
class SimServer : public RestartSwitch {
 public:
  /// Returns when the client disconnects, or when the signal is raised and the socket shut down. Must not
  /// throw.
  using Conversation = std::function<void(quarn::platform::SocketHandle socket, const StopSignal& stop,
                                          RestartSwitch& restart)>;

  /// What a restart does besides ending all conversations. The functions must not throw.
  struct Restarting {
    std::chrono::milliseconds time{0};  ///< how long connections are refused
    std::function<void()> on_begin;     ///< on the thread of the conversation that requested it
    std::function<void()> on_power_up;  ///< after all conversations, before the next ones
  };

  /// Port 0 picks a free one. Raises std::runtime_error if it can't listen.
  SimServer(const std::string& address, std::uint16_t port, Conversation conversation, Restarting restarting);
  /// Ends all conversations, including stuck ones, and joins their threads.
  ~SimServer() override;
  SimServer(const SimServer&) = delete;
  SimServer& operator=(const SimServer&) = delete;

  std::uint16_t port() const { return port_; }
  std::size_t connected_clients() const;

  bool Begin() override;
  void Finish() override;

 private:
  struct Client {
    quarn::platform::SocketHandle socket =
        quarn::platform::kInvalidSocket;  ///< guarded; invalid once it has disconnected
    StopSignal stop;
    std::thread thread;
  };
  enum class Phase {
    kServing,
    kClosing,   ///< a restart has begun, the listener is about to be closed
    kReplying,  ///< the listener is closed, the reply to the restart is being sent
    kDown,
  };

  void AcceptClients();
  void Admit(quarn::platform::SocketHandle socket);
  void Serve(Client& client, quarn::platform::SocketHandle socket);
  void JoinFinished();
  bool RestartHasBegun() const;
  void Restart();
  void WaitForReply();
  void ListenAgain();
  void SetPhase(Phase phase);
  void DisconnectAll();

  const std::string address_;
  const Conversation conversation_;
  const Restarting restarting_;
  StopSignal stop_;
  std::unique_ptr<quarn::platform::TcpListener> listener_;  // the accept thread's; null during a restart
  std::uint16_t port_ = 0;                                  // constant after construction
  mutable std::mutex mutex_;
  std::condition_variable phase_changed_;
  Phase phase_ = Phase::kServing;  // guarded by mutex_
  bool stopping_ = false;          // guarded by mutex_; stop_ for threads that wait for a phase
  std::list<Client> clients_;      // the accept thread adds and removes; mutex_ guards list and sockets
  std::thread accept_thread_;
};

}  // namespace varkel::sim
