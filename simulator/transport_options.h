#pragma once

#include <memory>
#include <string>

#include "simulator/src/datagram_stream.h"
#include "simulator/src/tls_acceptor.h"

namespace CLI {
class App;
}

namespace varkel::sim {

/// The program's options for TLS.
struct TlsChoice {
  bool wanted = false;
  TlsOptions options;
};

/// The program's options for datagrams.
struct StreamChoice {
  std::string to;       ///< empty: no stream
  double megabits = 0;  ///< 0: the rate is used
  int hops = 1;
  StreamOptions options;  ///< the other options
};

/// Both must outlive the parsing.
void AddOptions(CLI::App& app, TlsChoice& tls);
void AddOptions(CLI::App& app, StreamChoice& stream);

/// Null if no stream is requested. Raises std::runtime_error as DatagramStream does.
std::unique_ptr<DatagramStream> StartStream(const StreamChoice& choice);

}  // namespace varkel::sim
