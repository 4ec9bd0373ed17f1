#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "VarkelCore/src/catalogue/config_parser.h"

namespace varkel {

/// A piece of a payload: a variable, a part of the protocol, or bytes that nothing is known of.
struct DecodedField {
  std::string id;         ///< of the variable; empty for what is none
  std::string name;       ///< empty: unknown bytes
  std::string text;       ///< as the pages show it; empty where bytes say it best
  std::string label;      ///< of the option; may be empty
  std::string unit;       ///< may be empty
  std::size_t place = 0;  ///< of its first byte in the payload
  std::vector<std::uint8_t> raw;
  bool is_missing = false;  ///< the payload ends before it; `raw` is what there is
};

/// Tells by a model's table what the payloads of an exchange mean: the one place that does. What it returns
/// covers the payload from its first byte to its last, whatever that holds. Thread-safe.
class ExchangeDecoder {
 public:
  explicit ExchangeDecoder(std::shared_ptr<const ConfigParser> catalogue);

  /// What the command does, in words: "read Model, PN and 5 more", "write Destination IP", "Restart"; empty
  /// for one that neither the table nor the protocol knows.
  std::string CommandName(std::uint8_t command, std::span<const std::uint8_t> request) const;

  std::vector<DecodedField> Request(std::uint8_t command, std::span<const std::uint8_t> request) const;
  /// The payload of a reply that reports success.
  std::vector<DecodedField> Reply(std::uint8_t command, std::span<const std::uint8_t> request,
                                  std::span<const std::uint8_t> reply) const;

 private:
  using Code = std::pair<std::uint8_t, std::optional<std::uint32_t>>;  // command byte, four-byte code
  using Bytes = std::span<const std::uint8_t>;
  using Vars = std::vector<const VarInfo*>;
  struct Route {
    Code code;
    Bytes content;               // of the request, behind the four-byte code
    const Vars* sets = nullptr;  // null: no write
    Vars gets;                   // of this very request
    const VarInfo* action = nullptr;
  };

  void Index(const std::map<std::string, ConfigParser::VarList>& commands, std::map<Code, Vars>& index);
  Route FindRoute(std::uint8_t command, Bytes request) const;
  DecodedField Field(const VarInfo& var, Bytes payload, std::size_t place, float coefficient) const;

  const std::shared_ptr<const ConfigParser> catalogue_;
  std::map<Code, Vars> gets_;
  std::map<Code, Vars> sets_;
};

}  // namespace varkel
