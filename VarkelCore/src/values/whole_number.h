#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace varkel {

/// Whether values of this type are numbers.
bool IsNumberType(const std::string& type);

/// Without the blanks at its ends.
std::string_view Trimmed(std::string_view text);

/// The number that all of the text is, with a decimal point whatever the locale; blanks count as text.
std::optional<double> WholeNumber(std::string_view text);

}  // namespace varkel
