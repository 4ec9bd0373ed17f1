#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "libquarn/Platform/src/socket.h"

namespace quarn::test {

/// A program with its input closed and its output (both kinds) readable; killed when it goes.
class ChildProcess {
 public:
  explicit ChildProcess(std::vector<std::string> arguments) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
      return;
    }
    output_.reset(fdopen(ends[0], "r"));
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
      argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    if (posix_spawnp(&pid_, argv[0], &actions, nullptr, argv.data(), environ) != 0) {
      pid_ = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
  }
  ~ChildProcess() {
    if (pid_ > 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// The rest of the next output line that begins with `start`; empty when the output ends first.
  std::string LineAfter(const std::string& start) {
    std::array<char, 512> line{};
    while (output_ != nullptr &&
           fgets(line.data(), static_cast<int>(line.size()), output_.get()) != nullptr) {
      std::string text = line.data();
      if (text.rfind(start, 0) == 0) {
        return text.substr(start.size());
      }
    }
    return {};
  }

 private:
  struct FileCloser {
    void operator()(FILE* file) const { fclose(file); }
  };
  pid_t pid_ = -1;
  std::unique_ptr<FILE, FileCloser> output_;
};

/// OpenSSL's own server program: answers every line with the line reversed.
class TlsServer {
 public:
  explicit TlsServer(const std::vector<std::string>& options) : process_(Command(options)) {
    const std::string address = process_.LineAfter("ACCEPT ");
    const std::size_t colon = address.rfind(':');
    port_ = colon == std::string::npos
                ? std::uint16_t{0}
                : static_cast<std::uint16_t>(std::strtoul(address.c_str() + colon + 1, nullptr, 10));
  }

  /// 0 when the server did not start.
  std::uint16_t port() const { return port_; }
  /// Waits for a line that begins with `start`; false when the server ends first.
  bool Says(const std::string& start) { return !process_.LineAfter(start).empty(); }

 private:
  static std::vector<std::string> Command(const std::vector<std::string>& options) {
    std::vector<std::string> command = {"openssl", "s_server", "-accept", "127.0.0.1:0", "-rev"};
    command.insert(command.end(), options.begin(), options.end());
    return command;
  }

  ChildProcess process_;
  std::uint16_t port_ = 0;
};

/// Passes one connection on to a port of the loopback, until it is told to break it.
class Relay {
 public:
  explicit Relay(std::uint16_t target)
      : listener_(platform::TcpListener::Listen("127.0.0.1", 0)), thread_([this, target] { Run(target); }) {}
  ~Relay() {
    stopping_ = true;
    thread_.join();
  }
  Relay(const Relay&) = delete;
  Relay& operator=(const Relay&) = delete;

  std::uint16_t port() const { return listener_->port(); }

  /// Passes half of the next block that comes from the target, and closes.
  void CutNextBlock() { cutting_ = true; }

 private:
  void Run(std::uint16_t target) {
    platform::SocketHandle near = platform::kInvalidSocket;
    while (!stopping_ && near == platform::kInvalidSocket) {
      near = listener_->Accept(20);
    }
    const platform::SocketHandle far = platform::CreateTcpSocket();
    if (platform::ConnectSocket(far, "127.0.0.1", target) == 0) {
      while (!stopping_ && Pass(near, far, false) && Pass(far, near, cutting_)) {
      }
    }
    platform::CloseSocket(far);
    if (near != platform::kInvalidSocket) {
      platform::CloseSocket(near);
    }
  }

  static bool Pass(platform::SocketHandle from, platform::SocketHandle to, bool cut) {
    if (platform::WaitReadable(from, 1) == 0) {
      return true;
    }
    std::array<std::uint8_t, 16384> block{};
    const int received = platform::ReceiveBytes(from, block, 0);
    if (received <= 0) {
      return false;
    }
    const auto size = static_cast<std::size_t>(cut ? received / 2 : received);
    return platform::SendBytes(to, std::span(block).first(size), 0) == received;
  }

  const std::unique_ptr<platform::TcpListener> listener_;
  std::atomic<bool> stopping_{false};
  std::atomic<bool> cutting_{false};
  std::thread thread_;  // last: everything stands when it starts
};

}  // namespace quarn::test
