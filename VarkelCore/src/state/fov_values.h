#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "VarkelCore/src/state/sensor_state.h"
#include "VarkelCore/src/values/fov_angles.h"

namespace varkel {

// The angles of the field of view have no rows of their own in a table. In states and plans each is a value
// beside the channel's, the variable whose command carries them: "15-1-start-1", "15-1-end-1" and so on.

/// The channel's variable; null when the table has no field of view that is read and written.
VarInfo* FovChannel(const ConfigParser& catalogue);

/// `index` as in FovAngles: five starts, then five ends.
std::string FovAngleId(const VarInfo& channel, std::size_t index);
std::string FovAngleName(const VarInfo& channel, std::size_t index);

/// The angle with this identifier or else this name; nullopt when it is none's.
std::optional<std::size_t> FindFovAngle(const ConfigParser& catalogue, const std::string& key);

/// Appends the angles of the first `sectors`, starts before ends.
void AppendFovAngles(const ConfigParser& catalogue, const VarInfo& channel, const FovAngles& angles,
                     std::size_t sectors, std::vector<StateValue>& values);

}  // namespace varkel
