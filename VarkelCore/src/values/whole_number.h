#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace varkel {

/// Whether values of this type are numbers.
bool IsNumberType(const std::string& type);

/// The text without white space at its ends.
std::string_view Trimmed(std::string_view text);

/// The number, if the whole text is one; always with a decimal point, whatever the locale. Spaces are not
/// allowed.
std::optional<double> WholeNumber(std::string_view text);

}  // namespace varkel
