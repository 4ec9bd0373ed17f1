#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "VarkelCore/src/var_info.h"

namespace varkel::test {

/// The bytes of a variable's field that show as its default value; nothing when there are none.
std::optional<std::vector<std::uint8_t>> DefaultBytes(const VarInfo& var);

}  // namespace varkel::test
