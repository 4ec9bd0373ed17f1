#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulator/src/clock.h"
#include "simulator/src/exchange_log.h"
#include "simulator/src/small_sensor_device.h"
#include "simulator/src/tls_acceptor.h"

namespace varkel::sim {

class Replay;

struct SensorOptions {
  std::string table_path{};                        ///< the model's table, e.g. "./Config/varID/Quenta.csv"
  std::string address = "127.0.0.1";               ///< dotted IPv4 text
  std::uint16_t port = 0;                          ///< 0 picks a free one
  std::optional<TlsOptions> tls{};                 ///< nullopt: plain TCP
  std::vector<std::string> faults{};               ///< see AddFault
  std::chrono::milliseconds restart_time{300};     ///< how long connections are refused
  Clock clock{};                                   ///< empty: the steady clock from construction on
  std::function<void(const Exchange&)> watcher{};  ///< called on client threads, may be empty
  std::function<void(const SerialRequest&)> serial_watcher{};  ///< the same for a small sensor's requests
  std::shared_ptr<Replay> replay{};  ///< if set, answers instead of the table's values
};

/// A sensor of one model on a TCP port of its own, speaking KTC 1.0 and 2.0 to any number of clients, over
/// plain TCP or TLS.
///
///     SimulatedSensor sensor({.table_path = "./Config/varID/Quenta.csv"});
///     sensor.Start();
///     // connect to 127.0.0.1, sensor.port()
///
/// Values start with the table's defaults and can be set. Variables that the page timer re-reads change with
/// the clock, starting from their defaults.
///
/// The table's "Restart" answers, closes all connections, refuses new ones for the restart time and resets
/// running times and counters; "Reset" also restores all defaults. The upgrade row's command accepts a
/// package piece by piece. After the next restart "Firmware Version" shows the version in the package's first
/// line ("VARKEL-SIM FIRMWARE 1.2.3.4 2024-10-01" and a line feed); a package without one leaves it
/// unchanged, and a reset does not restore the old one.
///
/// The models "Zelto-KTC" and "Marvo-KTC" (named after their tables) have a small sensor, which is reached
/// with KTC command 0xFF, and accept the package for their junction box with command 0x83. Logs have a few
/// kilobytes of text. All operations are thread-safe, except Start and Stop, which must be called on the same
/// thread. Values, faults, packages and the request log survive Stop and Start.
class SimulatedSensor {
 public:
  /// Raises std::runtime_error with a sentence that names table and variable if the table can't be read or a
  /// default value can't be encoded, or the file if TLS can't use one; std::invalid_argument for an invalid
  /// fault rule.
  explicit SimulatedSensor(SensorOptions options);
  ~SimulatedSensor();
  SimulatedSensor(const SimulatedSensor&) = delete;
  SimulatedSensor& operator=(const SimulatedSensor&) = delete;

  /// Raises std::runtime_error if it can't listen on the address and port.
  void Start();
  /// Disconnects every client and joins all threads, even if a client is stuck in an exchange.
  void Stop();

  const std::string& address() const;
  std::uint16_t port() const;  ///< the port, also during a restart; 0 while stopped

  /// The value that a client would read now, as the user interface shows it. Raises std::out_of_range for a
  /// name that is not in the table.
  std::string ValueText(const std::string& var_name) const;
  /// Sets a variable from a displayed text; it no longer changes by itself. Raises std::out_of_range for an
  /// unknown name, std::invalid_argument for a text that doesn't fit the variable's type and length.
  void SetValue(const std::string& var_name, const std::string& text);

  /// COMMAND=KIND[:ARGUMENT][#N], e.g. "0x07=silence", "0x12=late:1500", "0x0A=close#3". COMMAND is written
  /// as in the table (four-byte codes in full), or "*" for all. With #N the rule applies only to the N-th
  /// exchange of the command from now on. Different kinds for a command are combined; the same kind replaces
  /// the earlier rule.
  ///   late:MS            answers after MS milliseconds
  ///   split[:SIZE]       sends the reply in pieces of SIZE bytes (1), some milliseconds apart
  ///   noise[:COUNT]      sends COUNT bytes of noise (5) before the header
  ///   wrong-echo[:CODE]  replies with another command code
  ///   error[:CODE]       replies with this return code (1) and no payload; does not carry out the command
  ///   lying-length:N     announces N bytes more (N > 0) or less (N < 0) than it sends
  ///   clamp:MAX          stores written whole numbers above MAX as MAX (before coefficients), and succeeds
  ///   silence            carries out the command, but does not reply
  ///   close[:SIZE]       closes after SIZE bytes of the reply (half of it), over TLS without a close message
  ///   drop               answers, then closes: "*=drop#3" ends the connection after the third command
  ///   none               removes the rules for that command
  /// For a small sensor's frames inside KTC, COMMAND is "ldcmd:ITEM" ("ldcmd-get:ITEM" or "ldcmd-set:ITEM"
  /// for only one of them) or "ota:TYPE", e.g. "ldcmd:10=silence" or "ota:2=error:7#3". Noise, echo, error
  /// and length then apply to the inner frame, and "error" is its status. "pull" is another name for "close".
  /// Raises std::invalid_argument with a sentence for anything else.
  void AddFault(const std::string& rule);
  /// Removes every rule.
  void ClearFaults();

  std::vector<ReceivedRequest> Received() const;
  std::vector<ReceivedRequest> Received(std::uint8_t command) const;
  void ClearReceived();
  /// Waits until `count` received requests have `command`. False on time-out.
  bool WaitReceived(std::uint8_t command, std::size_t count, std::chrono::milliseconds timeout) const;

  std::size_t exchanges() const;          ///< total number of requests received
  std::size_t connected_clients() const;  ///< number of open connections
  std::size_t restarts() const;           ///< restarts begun, counted before the reply is sent

  /// The last complete firmware package, whether or not it runs yet; empty before the first.
  std::vector<std::uint8_t> ReceivedPackage() const;

  /// The small sensor's state, received firmware and request log. Raises std::logic_error if the model has no
  /// small sensor.
  SmallSensorDevice& device();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace varkel::sim
