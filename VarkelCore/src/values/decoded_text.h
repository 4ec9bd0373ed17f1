#pragma once

#include <span>
#include <string>
#include <vector>

#include "VarkelCore/src/values/exchange_decoder.h"

namespace varkel {

/// "600 rpm", "2 (Running)"; "-" for a field that the payload lacks.
std::string FieldText(const DecodedField& field);

/// A payload for a monospaced font, one line per field, or per 16 bytes of a longer field: position, bytes in
/// hexadecimal, ASCII, name and value. Long fields are cut; the last line has no line end.
///
///     0  51 75 65 6e 74 61 2d 36 34 00 00 00 00 00 00 00  Quenta-64.......  Model = Quenta-64
std::string DecodedText(std::span<const DecodedField> fields);

}  // namespace varkel
