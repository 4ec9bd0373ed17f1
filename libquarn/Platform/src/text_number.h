#pragma once

#include <string>

namespace quarn::lidar {

/// Conversion of text to numbers that behaves the same on every platform and in every locale ("." is the
/// decimal point). Leading white space is skipped, and anything after the number is ignored.
///
/// A text without a number raises std::invalid_argument with the text "invalid stoi argument" ("invalid stof
/// argument", "invalid stod argument"), a number that does not fit raises std::out_of_range with "stoi
/// argument out of range" (and its counterparts): these texts are shown to users and in logs.

/// Signed 32-bit integer. `base` 0 reads "0x" as hexadecimal, a leading "0" as octal, else decimal; with
/// base 16 a "0x" prefix is allowed.
int TextToInt(const std::string& text, int base = 10);

/// 32-bit float.
float TextToFloat(const std::string& text);

/// 64-bit float.
double TextToDouble(const std::string& text);

}  // namespace quarn::lidar
