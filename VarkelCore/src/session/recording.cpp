#include "VarkelCore/src/session/recording.h"

#include <string>
#include <utility>

namespace varkel {

Recording::Recording(UserReport& report, std::function<void()> changed)
    : report_(report), changed_(std::move(changed)), recorder_([this](const std::string& end) {
        report_.Error(end);
        report_.Log(end, "ERROR");
        changed_();
      }) {}

QString Recording::Start(const QString& path) {
  const std::string fault = recorder_.Start(path.toStdU16String());
  if (fault.empty()) report_.Log("Recording to " + path.toStdString(), "INFO");
  changed_();
  return QString::fromStdString(fault);
}

void Recording::Stop() {
  if (!recorder_.is_recording()) return;
  recorder_.Stop();
  report_.Log("Recording ended", "INFO");
  changed_();
}

}  // namespace varkel
