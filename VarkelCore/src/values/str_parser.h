#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace varkel {

/// Turns the text that the user sees into the bytes of a set payload's field, most significant byte first.
/// One class per value type; they keep no state between calls.
class StrParser {
 public:
  virtual ~StrParser() = default;

  /// `coefficient` divides: the value sent is the shown value / coefficient. Raises std::invalid_argument
  /// with a sentence naming the text that can't be sent.
  virtual std::vector<std::uint8_t> ParseToBytes(const std::string& text, float coefficient) = 0;

  std::uint64_t parser_length = 1;  ///< byte width of the integer types; 1 for all others
};

/// Unsigned integers. The limit is computed in a 32-bit word whose shift wraps, so a 32 or 64-bit field only
/// takes scaled values below 1: it can be cleared, but not set by hand.
class UintParser : public StrParser {
 public:
  explicit UintParser(std::uint64_t length) { parser_length = length; }
  std::vector<std::uint8_t> ParseToBytes(const std::string& text, float coefficient) override;
};

/// Signed integers in two's complement.
class IntParser : public StrParser {
 public:
  explicit IntParser(std::uint64_t length) { parser_length = length; }
  std::vector<std::uint8_t> ParseToBytes(const std::string& text, float coefficient) override;
};

/// IEEE 754 single precision, 4 bytes.
class FloatParser : public StrParser {
 public:
  std::vector<std::uint8_t> ParseToBytes(const std::string& text, float coefficient) override;
};

/// IEEE 754 double precision, 8 bytes.
class DoubleParser : public StrParser {
 public:
  std::vector<std::uint8_t> ParseToBytes(const std::string& text, float coefficient) override;
};

/// Four decimal numbers from 0 to 255 separated by ".".
class IPv4Parser : public StrParser {
 public:
  std::vector<std::uint8_t> ParseToBytes(const std::string& text, float coefficient) override;
};

/// Six decimal (not hexadecimal) numbers from 0 to 255 separated by ":".
class MacParser : public StrParser {
 public:
  std::vector<std::uint8_t> ParseToBytes(const std::string& text, float coefficient) override;
};

/// Raw fields are not written: always returns no bytes.
class RawParser : public StrParser {
 public:
  std::vector<std::uint8_t> ParseToBytes(const std::string& text, float coefficient) override;
};

/// The codec for a value type as named in the tables (case matters); null for a type that can't be written.
std::unique_ptr<StrParser> MakeStrParser(const std::string& var_type);

}  // namespace varkel
