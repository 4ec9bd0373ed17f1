#include "VarkelCore/src/values/decoded_text.h"

#include <algorithm>

#include "libquarn/Platform/src/hex_text.h"

namespace varkel {
namespace {

constexpr std::size_t kLineBytes = 16;
constexpr std::size_t kLongestField = 256;  // bytes shown
constexpr std::size_t kMaxLines = 512;

std::string Ascii(std::span<const std::uint8_t> bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) text += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
  return text;
}

std::string Padded(std::string text, std::size_t width, bool at_front = false) {
  if (text.size() < width) text.insert(at_front ? 0 : text.size(), width - text.size(), ' ');
  return text;
}

std::string Meaning(const DecodedField& field) {
  if (field.name.empty()) return {};
  const std::string value = FieldText(field);
  std::string text = value.empty() ? field.name : field.name + " = " + value;
  // Text from the sensor must not add lines of its own.
  std::replace_if(
      text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; },
      '?');
  return text;
}

}  // namespace

std::string FieldText(const DecodedField& field) {
  if (field.is_missing) return "-";
  std::string text = field.text;
  if (!field.label.empty()) text += " (" + field.label + ")";
  if (!field.unit.empty() && !text.empty()) text += " " + field.unit;
  return text;
}

std::string DecodedText(std::span<const DecodedField> fields) {
  std::size_t widest = 0;
  std::size_t last_place = 0;
  for (const DecodedField& field : fields) {
    widest = std::max(widest, std::min(field.raw.size(), kLineBytes));
    last_place = std::max(last_place, field.place);
  }
  const std::size_t digits = std::to_string(last_place).size() + 1;
  std::string text;
  std::size_t lines = 0;
  for (const DecodedField& field : fields) {
    std::span<const std::uint8_t> rest =
        std::span(field.raw).first(std::min(field.raw.size(), kLongestField));
    std::string meaning = Meaning(field);
    std::size_t place = field.place;
    do {
      if (lines++ == kMaxLines) return text + "\n…";
      const auto line = rest.first(std::min(rest.size(), kLineBytes));
      rest = rest.subspan(line.size());
      std::string shown = Padded(std::to_string(place), digits, true) + "  " +
                          Padded(quarn::lidar::HexLine(line), widest * 3) + " " +
                          Padded(Ascii(line), widest) + "  " + meaning;
      shown.erase(shown.find_last_not_of(' ') + 1);
      text += (text.empty() ? "" : "\n") + shown;
      place += line.size();
      meaning.clear();
    } while (!rest.empty());
    if (field.raw.size() > kLongestField) {
      text += "\n" + std::string(digits + 2, ' ') + "… " + std::to_string(field.raw.size() - kLongestField) +
              " more bytes";
    }
  }
  return text;
}

}  // namespace varkel
