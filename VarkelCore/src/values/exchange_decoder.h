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

/// A field of a payload: a variable, a part of the protocol, or unknown bytes.
struct DecodedField {
  std::string id;         ///< of the variable; empty if it is not one
  std::string name;       ///< empty: unknown bytes
  std::string text;       ///< as the pages show it; empty if the bytes alone are shown
  std::string label;      ///< of the option; may be empty
  std::string unit;       ///< may be empty
  std::size_t place = 0;  ///< position of its first byte in the payload
  std::vector<std::uint8_t> raw;
  bool is_missing = false;  ///< the payload ends before the end of the field; `raw` holds the bytes that came
};

/// Decodes the payloads of an exchange with a model's table. The returned fields always cover the whole
/// payload, whatever it holds. Thread-safe.
class ExchangeDecoder {
 public:
  explicit ExchangeDecoder(std::shared_ptr<const ConfigParser> catalogue);

  /// What the command does, in words: "read Model, PN and 5 more", "write Destination IP", "Restart"; empty
  /// if neither the table nor the protocol knows it.
  std::string CommandName(std::uint8_t command, std::span<const std::uint8_t> request) const;

  std::vector<DecodedField> Request(std::uint8_t command, std::span<const std::uint8_t> request) const;
  /// The payload of a reply that reports success.
  std::vector<DecodedField> Reply(std::uint8_t command, std::span<const std::uint8_t> request,
                                  std::span<const std::uint8_t> reply) const;

 private:
  using Code = std::pair<std::uint8_t, std::optional<std::uint32_t>>;  // command byte, four-byte code
  using ByteView = std::span<const std::uint8_t>;
  using Vars = std::vector<const VarInfo*>;
  struct Route {
    Code code;
    ByteView content;            // of the request, after the four-byte code
    const Vars* sets = nullptr;  // null: not a set command
    Vars gets;                   // those read by this request
    const VarInfo* action = nullptr;
  };

  void Index(const std::map<std::string, ConfigParser::VarList>& commands, std::map<Code, Vars>& index);
  Route FindRoute(std::uint8_t command, ByteView request) const;
  DecodedField Field(const VarInfo& var, ByteView payload, std::size_t place, float coefficient) const;

  const std::shared_ptr<const ConfigParser> catalogue_;
  std::map<Code, Vars> gets_;
  std::map<Code, Vars> sets_;
};

}  // namespace varkel
