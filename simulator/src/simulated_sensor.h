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
  std::string address = "127.0.0.1";               ///< dotted IP version 4 text
  std::uint16_t port = 0;                          ///< 0 picks a free one
  std::optional<TlsOptions> tls{};                 ///< none: plain TCP
  std::vector<std::string> faults{};               ///< see AddFault
  std::chrono::milliseconds restart_time{300};     ///< connections are refused for so long
  Clock clock{};                                   ///< empty: the steady clock from construction on
  std::function<void(const Exchange&)> watcher{};  ///< called on client threads, may be empty
  std::function<void(const SerialRequest&)> serial_watcher{};  ///< the same for what a small sensor gets
  std::shared_ptr<Replay> replay{};  ///< answers in place of the table's values; may be null
};

/// A sensor of one model on a TCP port of its own, speaking KTC 1.0 and 2.0 to any number of clients,
/// plainly or inside TLS.
///
///     SimulatedSensor sensor({.table_path = "./Config/varID/Quenta.csv"});
///     sensor.Start();
///     // connect to 127.0.0.1, sensor.port()
///
/// Values start from the table's defaults; what is set is stored. Variables that the page timer re-reads
/// move with the clock: at time 0 they show their defaults.
///
/// The table's "Restart" answers, closes all connections, refuses new ones for the restart time and sets the
/// running times and counters back; "Reset" also restores all defaults. The upgrade row's command takes a
/// package piece by piece. After the next restart "Firmware Version" shows what the package's first line
/// names ("VARKEL-SIM FIRMWARE 1.2.3.4 2024-10-01" and a line feed); any other package leaves it, and a reset
/// does not bring the old one back.
///
/// The models "Zelto-KTC" and "Marvo-KTC" (named like their tables) have a small sensor on their far side,
/// which KTC command 0xFF reaches, and take the package of their junction box under command 0x83. Logs have a
/// few kilobytes of text. All operations are thread-safe but for Start and Stop, which belong to one thread.
/// Values, faults, packages and the request log outlive Stop and Start.
class SimulatedSensor {
 public:
  /// Raises std::runtime_error with a sentence that names table and variable when the table can't be read,
  /// or a default value can't be encoded, or that names the file when TLS can't use one;
  /// std::invalid_argument for a bad fault rule.
  explicit SimulatedSensor(SensorOptions options);
  ~SimulatedSensor();
  SimulatedSensor(const SimulatedSensor&) = delete;
  SimulatedSensor& operator=(const SimulatedSensor&) = delete;

  /// Raises std::runtime_error when it can't listen on the address and port.
  void Start();
  /// Disconnects every client and joins all threads, also with a client stuck in an exchange.
  void Stop();

  const std::string& address() const;
  std::uint16_t port() const;  ///< the port, also during a restart; 0 while stopped

  /// The value that a client would read now, as the user interface shows it. Raises std::out_of_range for
  /// a name that the table lacks.
  std::string ValueText(const std::string& var_name) const;
  /// Gives a variable the value of a shown text; it stops moving. Raises std::out_of_range for an unknown
  /// name, std::invalid_argument for a text that doesn't fit the variable's type and length.
  void SetValue(const std::string& var_name, const std::string& text);

  /// COMMAND=KIND[:ARGUMENT][#N], e.g. "0x07=silence", "0x12=late:1500", "0x0A=close#3". COMMAND is written
  /// as in the table (four-byte codes in full) or "*" for all. With #N only the N-th exchange of the
  /// command from now on is concerned. Kinds of one command add up; a repeated kind replaces.
  ///   late:MS            answers after MS milliseconds
  ///   split[:SIZE]       sends the reply in pieces of SIZE bytes (1), some milliseconds apart
  ///   noise[:COUNT]      COUNT bytes of noise (5) before the header
  ///   wrong-echo[:CODE]  another command code in the reply
  ///   error[:CODE]       this return code (1) and no payload; the command is not carried out
  ///   lying-length:N     announces N bytes more (N > 0) or less (N < 0) than it sends
  ///   clamp:MAX          a write stores whole numbers beyond MAX as MAX (before coefficients), and succeeds
  ///   silence            carried out, but no reply
  ///   close[:SIZE]       closes after SIZE bytes of the reply (half of it), over TLS without a word
  ///   drop               answers, then closes: "*=drop#3" ends the connection after the third command
  ///   none               removes the rules of that command
  /// For the frames that a small sensor gets inside KTC, COMMAND is "ldcmd:ITEM" (only "ldcmd-get:ITEM", only
  /// "ldcmd-set:ITEM") or "ota:TYPE", e.g. "ldcmd:10=silence" or "ota:2=error:7#3"; noise, echo, error and
  /// length are then those of the carried frame, "error" its status. "pull" is another name for "close".
  /// Raises std::invalid_argument with a sentence for anything else.
  void AddFault(const std::string& rule);
  /// Removes every rule.
  void ClearFaults();

  std::vector<ReceivedRequest> Received() const;
  std::vector<ReceivedRequest> Received(std::uint8_t command) const;
  void ClearReceived();
  /// Waits until `count` received requests carry `command`. False when the time ran out.
  bool WaitReceived(std::uint8_t command, std::size_t count, std::chrono::milliseconds timeout) const;

  std::size_t exchanges() const;          ///< requests received in all
  std::size_t connected_clients() const;  ///< connections open now
  std::size_t restarts() const;           ///< restarts begun, counted before their reply goes out

  /// The last firmware package that came whole, whether it runs yet or not; empty before the first.
  std::vector<std::uint8_t> ReceivedPackage() const;

  /// State, received firmware and request log of the small sensor. Raises std::logic_error for a model
  /// without one.
  SmallSensorDevice& device();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace varkel::sim
