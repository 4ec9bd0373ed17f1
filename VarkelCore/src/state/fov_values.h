#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "VarkelCore/src/state/sensor_state.h"
#include "VarkelCore/src/values/fov_angles.h"

namespace varkel {

// The angles of the field of view have no rows of their own in a table. In states and plans each is a value
// of its own, next to that of the channel, the variable whose command carries them: "15-1-start-1",
// "15-1-end-1" and so on.

/// The channel's variable; null if the table has no readable and writable field of view.
VarInfo* FovChannel(const ConfigParser& catalogue);

/// `index` as in FovAngles: five starts, then five ends.
std::string FovAngleId(const VarInfo& channel, std::size_t index);
std::string FovAngleName(const VarInfo& channel, std::size_t index);

/// The index of the angle with this identifier or, failing that, this name; nullopt if there is none.
std::optional<std::size_t> FindFovAngle(const ConfigParser& catalogue, const std::string& key);

/// Appends the angles of the first `sectors` sectors, starts before ends.
void AppendFovAngles(const ConfigParser& catalogue, const VarInfo& channel, const FovAngles& angles,
                     std::size_t sectors, std::vector<StateValue>& values);

}  // namespace varkel
