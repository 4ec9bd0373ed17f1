#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "libquarn/KtcClient/src/tcp_open.h"
#include "libquarn/Platform/src/socket.h"
#ifdef _WIN32
#define popen _popen
#define pclose _pclose
#endif

namespace quarn::test {

/// OpenSSL's own server program: answers every line with the line reversed. The options must not contain
/// quotation marks.
class TlsServer {
 public:
  explicit TlsServer(const std::vector<std::string>& options) {
    std::string command =
        "\"" VARKEL_OPENSSL_PROGRAM "\" s_server -accept 127.0.0.1:0 -rev -naccept " + std::to_string(kPeers);
    for (const std::string& option : options) command += " \"" + option + "\"";
    command += " 2>&1";
#ifdef _WIN32
    command = "\"" + command + "\"";  // its shell removes the outer quotation marks
#endif
    output_ = popen(command.c_str(), "r");
    const std::string start = "ACCEPT 127.0.0.1:";
    std::array<char, 512> line{};
    while (port_ == 0 && output_ != nullptr && fgets(line.data(), line.size(), output_) != nullptr) {
      const std::string text = line.data();
      if (text.starts_with(start)) port_ = static_cast<std::uint16_t>(std::stoi(text.substr(start.size())));
    }
  }
  /// Connections that close at once make the program reach its limit and end.
  ~TlsServer() {
    while (port_ != 0 && Visit()) continue;
    if (output_ != nullptr) pclose(output_);
  }
  TlsServer(const TlsServer&) = delete;
  TlsServer& operator=(const TlsServer&) = delete;

  /// 0 if the server did not start.
  std::uint16_t port() const {
    return port_;
  }

 private:
  static constexpr int kPeers = 8;  ///< it ends after this many connections

  bool Visit() const {
    const int peer = lidar::tcp_open(kLoopback, port_);
    if (peer <= 0) return false;
    platform::CloseSocket(peer);
    platform::CleanUpSockets();
    return true;
  }

  FILE* output_ = nullptr;
  std::uint16_t port_ = 0;
};

}  // namespace quarn::test
