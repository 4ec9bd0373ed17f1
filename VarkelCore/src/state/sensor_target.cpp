#include "VarkelCore/src/state/sensor_target.h"

#include <charconv>
#include <exception>
#include <stdexcept>
#include <string_view>

#include "VarkelCore/src/catalogue/csv_table.h"
#include "VarkelCore/src/catalogue/model_names.h"

namespace varkel {

namespace {

/// 0 for anything but a port.
std::uint16_t ReadPort(std::string_view text) {
  std::uint16_t port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  return error == std::errc() && end == text.data() + text.size() ? port : std::uint16_t{0};
}

SensorTarget ReadTarget(const CsvRow& row, SensorTarget target) {
  const CsvColumn host("host");
  const CsvColumn port("port");
  const CsvColumn model("model");
  const CsvColumn label("label");
  target.host = row.Cell(host);
  if (target.host.empty()) throw std::runtime_error("there is no host");
  if (const auto text = row.CellIfPresent(port); !text.empty()) {
    target.port = ReadPort(text);
    if (target.port == 0) throw std::runtime_error("\"" + std::string(text) + "\" is not a port");
  }
  if (const auto text = row.CellIfPresent(model); !text.empty()) target.model = text;
  target.label = row.CellIfPresent(label);
  return target;
}

}  // namespace

std::string SensorTarget::name() const {
  if (!label.empty()) return label;
  return ConnectTypeOf(model) == kSerialLines ? uart : host + ":" + std::to_string(port);
}

tl::expected<SensorTarget, std::string> ParseTarget(const std::string& text, SensorTarget usual) {
  const std::size_t colon = text.find(':');
  usual.host = text.substr(0, colon);
  if (colon != std::string::npos) usual.port = ReadPort(std::string_view(text).substr(colon + 1));
  if (usual.host.empty() || usual.port == 0) {
    return tl::unexpected("\"" + text +
                          "\" is not an address: it has to look like 192.168.1.201 or 192.168.1.201:9347.");
  }
  return usual;
}

tl::expected<std::vector<SensorTarget>, std::string> LoadTargets(const std::string& path,
                                                                 const SensorTarget& usual) {
  CsvTable table(path);
  if (!table.is_open()) return tl::unexpected(path + ": can't be opened.");
  std::vector<SensorTarget> targets;
  try {
    table.ForEachRow([&](const CsvRow& row) { targets.push_back(ReadTarget(row, usual)); });
  } catch (const std::exception& error) {
    return tl::unexpected(path + ", line " + std::to_string(table.line()) + ": " + error.what() + ".");
  }
  if (targets.empty()) return tl::unexpected(path + ": it lists no sensor.");
  return targets;
}

}  // namespace varkel
