#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Parsers for the cells of a model table, one function per notation. All raise the conversion errors of
/// text_number.h for a text that is not a number or out of range.
namespace varkel {

/// A base-10 integer, or `fallback` for an empty cell.
std::int32_t IntCell(std::string_view cell, std::int32_t fallback);
/// A number with a decimal point, or `fallback` for an empty cell.
float FloatCell(std::string_view cell, float fallback);
/// Whether the whole cell is one number (FloatCell reads "0,5" as 0). Spaces at the ends are allowed.
bool IsWholeNumber(std::string_view cell);

/// "0|1|2" lists values, "1~100" is a range, "5" a single value.
struct OptionsCell {
  std::vector<std::int32_t> values;
  std::int32_t range_min = 0;
  std::int32_t range_max = 0;
};
OptionsCell ParseOptions(std::string_view cell);

/// "0_Off" and "1_On", one per line: labels by value; a later line replaces an earlier one.
std::map<std::int32_t, std::string> ParseOptionLabels(std::string_view cell);

/// One of the places on the pages that "2_1_3_1|4_2_1_1" lists.
struct PlaceCell {
  std::int32_t module = 0;  ///< from 0; a table's own numbers count from 1
  std::int32_t group = 0;   ///< from 0
  std::int32_t position = 0;
  std::int32_t component = 0;
  std::optional<std::int32_t> switched_position;  ///< only read for switches
};
/// Removes the next place from the front of the cell, skipping malformed ones; nullopt if none is left.
std::optional<PlaceCell> TakePlace(std::string_view& cell);

/// "0x0102": the payload of a get command.
struct GetPayloadCell {
  std::string digits;
  std::vector<std::uint8_t> bytes;
};
GetPayloadCell ParseGetPayload(std::string_view cell);

}  // namespace varkel
