#include "VarkelCore/src/upgrade/upgraded_restart.h"

#include <utility>

namespace varkel {

UpgradedRestart::UpgradedRestart(RestartFunction restart, UserReport& report,
                                 const SessionDisconnect& disconnect, SensorReturn& sensor_return,
                                 const ConnectionSettings& settings)
    : restart_(std::move(restart)),
      report_(report),
      disconnect_(disconnect),
      sensor_return_(sensor_return),
      settings_(settings) {}

int UpgradedRestart::Restart(const Session& session, const Catalogue& catalogue) const {
  const bool is_awaited = session->has_pages();  // only its pages say which sensor it is
  const SensorIdentity before =
      is_awaited ? ReadIdentity(*session->ktc_client(), catalogue) : SensorIdentity();
  const int code = restart_(*catalogue, *session, report_);
  if (code != 0) return code;
  disconnect_.Leave(session, [this, is_awaited, catalogue, before] {
    if (is_awaited) sensor_return_.Await(settings_, catalogue, before);
  });
  return 0;
}

}  // namespace varkel
