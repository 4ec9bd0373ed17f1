#include "VarkelCore/src/values/whole_number.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace varkel {

bool IsNumberType(const std::string& type) {
  return type.starts_with("uint") || type.starts_with("int") || type == "float32" || type == "double";
}

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::optional<double> WholeNumber(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool is_whole = error == std::errc() && end == text.data() + text.size();
  return is_whole && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

}  // namespace varkel
