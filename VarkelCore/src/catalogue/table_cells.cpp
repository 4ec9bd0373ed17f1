#include "VarkelCore/src/catalogue/table_cells.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>

#include "VarkelCore/src/catalogue/var_info.h"
#include "libquarn/Platform/src/text_number.h"

namespace varkel {
namespace {

using quarn::lidar::TextToFloat;
using quarn::lidar::TextToInt;

constexpr std::string_view kTrimmed = " \t\r\f\v";
constexpr std::size_t kPlaceNumbers = 4;

std::int32_t Int(std::string_view text) {
  return TextToInt(std::string(text));
}

std::string_view Trim(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kTrimmed);
  if (begin == std::string_view::npos) {
    return {};
  }
  return text.substr(begin, text.find_last_not_of(kTrimmed) - begin + 1);
}

// Removes the text up to the next separator from the front of `rest`, or all of it if there is none.
std::string_view TakePiece(std::string_view& rest, char separator) {
  const std::string_view piece = rest.substr(0, rest.find(separator));
  rest.remove_prefix(std::min(piece.size() + 1, rest.size()));
  return piece;
}

// Converts to counting from 0 without overflow, whatever number the table holds.
std::int32_t FromZero(std::int32_t number) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(number) - 1U);
}

std::optional<PlaceCell> ParsePlace(std::string_view text) {
  std::array<std::int32_t, kPlaceNumbers> numbers{};
  for (std::int32_t& number : numbers) {
    if (text.empty()) {
      return std::nullopt;
    }
    number = Int(TakePiece(text, '_'));
  }
  PlaceCell place{FromZero(numbers[0]), FromZero(numbers[1]), numbers[2], numbers[3], std::nullopt};
  if (place.component == kSwitch && !text.empty()) {
    place.switched_position = Int(text);
  }
  return place;
}

}  // namespace

std::int32_t IntCell(std::string_view cell, std::int32_t fallback) {
  return cell.empty() ? fallback : Int(cell);
}

float FloatCell(std::string_view cell, float fallback) {
  return cell.empty() ? fallback : TextToFloat(std::string(cell));
}

bool IsWholeNumber(std::string_view cell) {
  std::string_view number = Trim(cell);
  if (number.starts_with('+')) {
    number.remove_prefix(1);
  }
  float value = 0;
  const char* const end = number.data() + number.size();
  const auto result = std::from_chars(number.data(), end, value);
  return result.ec == std::errc() && result.ptr == end;
}

OptionsCell ParseOptions(std::string_view cell) {
  OptionsCell options;
  if (cell.find('|') != std::string_view::npos) {
    while (cell.find('|') != std::string_view::npos) {
      options.values.push_back(Int(TakePiece(cell, '|')));
    }
    options.values.push_back(Int(cell));
  } else if (const std::size_t tilde = cell.find('~'); tilde != std::string_view::npos) {
    options.range_min = Int(cell.substr(0, tilde));
    options.range_max = Int(cell.substr(tilde + 1));
  } else if (!cell.empty()) {
    options.values.push_back(Int(cell));
  }
  return options;
}

std::map<std::int32_t, std::string> ParseOptionLabels(std::string_view cell) {
  std::map<std::int32_t, std::string> labels;
  while (cell.find('_') != std::string_view::npos) {
    const std::int32_t value = Int(Trim(TakePiece(cell, '_')));
    labels[value] = Trim(TakePiece(cell, '\n'));
  }
  return labels;
}

std::optional<PlaceCell> TakePlace(std::string_view& cell) {
  while (!cell.empty()) {
    if (const auto place = ParsePlace(TakePiece(cell, '|'))) {
      return place;
    }
  }
  return std::nullopt;
}

GetPayloadCell ParseGetPayload(std::string_view cell) {
  constexpr std::size_t kPrefixSize = 2;
  constexpr std::size_t kDigitsAByte = 2;
  constexpr int kHexadecimal = 16;
  GetPayloadCell payload;
  if (cell.size() < kPrefixSize + kDigitsAByte || !(cell.starts_with("0x") || cell.starts_with("0X"))) {
    return payload;
  }
  payload.digits = cell.substr(kPrefixSize);
  payload.bytes.reserve(payload.digits.size() / kDigitsAByte);
  for (std::size_t i = 0; i + kDigitsAByte <= payload.digits.size(); i += kDigitsAByte) {
    payload.bytes.push_back(
        static_cast<std::uint8_t>(TextToInt(payload.digits.substr(i, kDigitsAByte), kHexadecimal)));
  }
  return payload;
}

}  // namespace varkel
