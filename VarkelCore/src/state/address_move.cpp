#include "VarkelCore/src/state/address_move.h"

#include <algorithm>

#include "VarkelCore/src/pages/page_writer.h"
#include "VarkelCore/src/tasks/worker_threads.h"
#include "libquarn/Platform/src/host_addresses.h"
#include "libquarn/Platform/src/ipv4.h"
#include "libquarn/Platform/src/text_number.h"

namespace varkel {

namespace {

constexpr std::chrono::milliseconds kPauseBetweenTries{250};

/// The planned text of the command's first variable of that type.
std::optional<std::string> NewTextOf(const ConfigParser& catalogue, const PlannedCommand& command,
                                     const char* type) {
  const auto& carried = catalogue.set_cmd_map().at(command.set_cmd);
  const auto var = std::find_if(carried.begin(), carried.end(),
                                [type](const VarInfo* candidate) { return candidate->var_type == type; });
  if (var == carried.end()) return std::nullopt;
  const auto field = std::find_if(command.fields.begin(), command.fields.end(),
                                  [&](const PlannedField& planned) { return planned.var == *var; });
  return field == command.fields.end() ? std::nullopt : std::optional(field->new_text);
}

}  // namespace

std::string AddressText(const SensorAddress& address) {
  return address.host + ":" + std::to_string(address.port);
}

std::optional<SensorAddress> AddressAfter(const ConfigParser& catalogue, const PlannedCommand& command,
                                          const SensorAddress& present) {
  if (command.set_cmd != kAddressSetCommand) return std::nullopt;
  const auto host = NewTextOf(catalogue, command, "IP");
  const auto port = NewTextOf(catalogue, command, "uint16");
  if (!host && !port) return std::nullopt;
  SensorAddress address = present;
  if (host) address.host = *host;
  if (port) address.port = static_cast<std::uint16_t>(quarn::lidar::TextToInt(*port));
  return address;
}

std::shared_ptr<quarn::lidar::KtcClient> FollowTo(const SensorAddress& address, const MoveOptions& options,
                                                  const std::stop_token& stop) {
  const auto end = std::chrono::steady_clock::now() + options.timeout;
  do {
    if (auto client = options.connect(address, stop)) return client;
  } while (std::chrono::steady_clock::now() < end && SleepUnlessStopped(stop, kPauseBetweenTries));
  return nullptr;
}

std::string NotReachedText(const SensorAddress& from, const SensorAddress& to,
                           std::chrono::milliseconds waited) {
  const auto sensor = quarn::lidar::ParseIpv4(to.host);
  std::string own;
  bool is_near = false;
  for (const quarn::lidar::HostAddress& host : quarn::lidar::HostAddresses()) {
    own += (own.empty() ? "" : ", ") + quarn::lidar::FormatIpv4(host.address) + "/" +
           std::to_string(host.prefix_length);
    is_near |= sensor && quarn::lidar::IsInSubnet(*sensor, host);
  }
  return "The sensor was moved from " + AddressText(from) + " to " + AddressText(to) +
         " and did not answer there within " + std::to_string((waited.count() + 999) / 1000) +
         " s. This computer has the addresses " + (own.empty() ? "(none)" : own) + "; " +
         (is_near ? "one of them is" : "none of them is") + " in the subnet of " + to.host + ".";
}

}  // namespace varkel
