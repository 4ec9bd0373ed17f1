#pragma once

#include <memory>
#include <string>

#include "simulator/src/datagram_stream.h"
#include "simulator/src/tls_acceptor.h"

namespace CLI {
class App;
}

namespace varkel::sim {

/// What the program's options say about TLS.
struct TlsChoice {
  bool wanted = false;
  TlsOptions options;
};

/// What they say about the datagrams.
struct StreamChoice {
  std::string to;       ///< empty: no stream
  double megabits = 0;  ///< 0: the rate counts
  int hops = 1;
  StreamOptions options;  ///< the rest
};

/// Both outlive the parsing.
void AddOptions(CLI::App& app, TlsChoice& tls);
void AddOptions(CLI::App& app, StreamChoice& stream);

/// Null when none is wanted. Raises std::runtime_error as DatagramStream does.
std::unique_ptr<DatagramStream> StartStream(const StreamChoice& choice);

}  // namespace varkel::sim
