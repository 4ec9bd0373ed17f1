#include "VarkelCore/src/actions/restart_commands.h"

#include "VarkelCore/src/actions/sensor_restart.h"

namespace varkel {

int RestartCommands::Restart() const {
  const auto session = connection_.session();
  const auto catalogue = models_.catalogue();
  if (!session || !catalogue) return -1;
  const int code = RestartSensor(*catalogue, *session, report_);
  if (code == 0) disconnect_.Leave(session);
  return code;
}

int RestartCommands::Reset() const {
  const auto session = connection_.session();
  const auto catalogue = models_.catalogue();
  return session && catalogue ? ResetSensor(*catalogue, *session, report_) : -1;
}

}  // namespace varkel
