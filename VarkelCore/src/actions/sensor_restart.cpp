#include "VarkelCore/src/actions/sensor_restart.h"

#include <exception>
#include <initializer_list>
#include <string>
#include <vector>

#include "VarkelCore/src/catalogue/named_command.h"
#include "VarkelCore/src/session/exchange.h"

namespace varkel {

namespace {

struct Action {
  std::initializer_list<const char*> names;
  const char* word;            ///< in messages about the table
  const char* error_prefix;    ///< before an exception's text
  const char* failure_prefix;  ///< before the sensor's code
  const char* failure_suffix;
};

int Query(const VarInfo& var, quarn::lidar::KtcClient& client) {
  const ActionRequest request = MakeActionRequest(var);
  const ExchangeResult result = QueryTableCommand(client, request.command, request.payload);
  return result ? 0 : result.error();
}

int Send(const Action& action, const ConfigParser& catalogue, SensorSession& session, UserReport& report) {
  if (!session.is_ktc_open() || !session.is_idle()) return -1;
  const ByteLog::Quiet quiet;
  const std::string word = action.word;
  try {
    const VarInfo* var = FindNamed(catalogue, action.names);
    if (var == nullptr) {
      report.Error("Can not find " + word + " name");
      return -1;
    }
    if (ActionCommandText(*var).empty()) {
      report.Error("Can not find " + word + " command");
      return -1;
    }
    const int code = Query(*var, *session.ktc_client());
    if (code != 0) report.Error(action.failure_prefix + std::to_string(code) + action.failure_suffix);
    return code;
  } catch (const std::exception& error) {
    report.Error(action.error_prefix + std::string(error.what()));
    return -1;
  }
}

}  // namespace

int RestartSensor(const ConfigParser& catalogue, SensorSession& session, UserReport& report) {
  return Send({{"Restart", "restart"},
               "restart",
               "Restart error: ",
               "Auto reboot failed, ret_code: ",
               ". Please reboot lidar manually."},
              catalogue, session, report);
}

int ResetSensor(const ConfigParser& catalogue, SensorSession& session, UserReport& report) {
  return Send({{"Reset", "reset"}, "reset", "retset error: ", "Reset failed, ret_code: ", "."}, catalogue,
              session, report);
}

}  // namespace varkel
