#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace varkel::sim {

/// The bytes of a reply field that is displayed as `text`: the inverse of BytesToText.
///
/// `length` is the field's size in bytes, `coefficient` the factor from raw to shown value. Numbers are
/// big-endian, texts padded with NUL. An empty text gives a field of zeros, of any type.
/// Raises std::invalid_argument with a sentence if the text is not valid for the type or doesn't fit.
std::vector<std::uint8_t> FieldBytes(const std::string& var_type, const std::string& text, std::size_t length,
                                     float coefficient);

}  // namespace varkel::sim
