#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/child_process.h"

namespace quarn::test {

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

 private:
  static std::vector<std::string> Command(const std::vector<std::string>& options) {
    std::vector<std::string> command = {VARKEL_OPENSSL_PROGRAM, "s_server", "-accept", "127.0.0.1:0", "-rev"};
    command.insert(command.end(), options.begin(), options.end());
    return command;
  }

  ChildProcess process_;
  std::uint16_t port_ = 0;
};

}  // namespace quarn::test
