#include "simulator/transport_options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdint>
#include <string_view>
#include <system_error>

namespace varkel::sim {
namespace {

/// 0 if the text is not a port; the stream reports that.
std::uint16_t PortOf(std::string_view text) {
  std::uint16_t port = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, port);
  return error == std::errc{} && stop == end ? port : std::uint16_t{0};
}

}  // namespace

void AddOptions(CLI::App& app, TlsChoice& tls) {
  CLI::Option* const wanted = app.add_flag("--tls", tls.wanted, "Speak TLS on the port");
  CLI::Option* const certificate =
      app.add_option("--certificate", tls.options.certificate, "The sensor's certificate (PEM)");
  CLI::Option* const key = app.add_option("--key", tls.options.key, "Its private key (PEM)");
  CLI::Option* const ca = app.add_option(
      "--ca", tls.options.ca, "Certificate authorities that client certificates are checked against (PEM)");
  CLI::Option* const required =
      app.add_flag("--require-client-certificate", tls.options.require_client_certificate,
                   "Refuse clients without a certificate");
  wanted->needs(certificate)->needs(key);
  for (CLI::Option* const option : {certificate, key, ca, required}) option->needs(wanted);
  required->needs(ca);
}

void AddOptions(CLI::App& app, StreamChoice& stream) {
  CLI::Option* const to = app.add_option(
      "--stream", stream.to, "ADDRESS:PORT of a receiver or a multicast group to send numbered datagrams to");
  CLI::Option* const rate =
      app.add_option("--stream-rate", stream.options.rate, "Datagrams per second; 0: as fast as possible")
          ->check(CLI::NonNegativeNumber)
          ->capture_default_str();
  CLI::Option* const megabits =
      app.add_option("--stream-mbit", stream.megabits, "Megabits per second, instead of the rate")
          ->check(CLI::PositiveNumber)
          ->excludes(rate);
  CLI::Option* const size =
      app.add_option("--stream-size", stream.options.size, "Bytes per datagram")->capture_default_str();
  CLI::Option* const local = app.add_option("--stream-interface", stream.options.local,
                                            "Address of the interface to send them from");
  CLI::Option* const hops =
      app.add_option("--stream-ttl", stream.hops, "Multicast time-to-live; 0: this machine only")
          ->check(CLI::Range(0, 255))
          ->capture_default_str();
  for (CLI::Option* const option : {rate, megabits, size, local, hops}) option->needs(to);
}

std::unique_ptr<DatagramStream> StartStream(const StreamChoice& choice) {
  if (choice.to.empty()) return nullptr;
  StreamOptions options = choice.options;
  const std::string_view to = choice.to;
  const std::size_t colon = to.rfind(':');
  options.address = to.substr(0, colon);
  options.port = colon == std::string_view::npos ? std::uint16_t{0} : PortOf(to.substr(colon + 1));
  options.hops = static_cast<std::uint8_t>(choice.hops);
  if (choice.megabits > 0) options.rate = RateOfMegabits(choice.megabits, options.size);
  return std::make_unique<DatagramStream>(options);
}

}  // namespace varkel::sim
