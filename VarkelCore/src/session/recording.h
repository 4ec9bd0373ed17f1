#pragma once

#include <QString>
#include <functional>

#include "VarkelCore/src/tasks/user_report.h"
#include "libquarn/Capture/src/capture_recorder.h"

namespace varkel {

/// The user's recording of all exchanges to a pcap file; its beginning and end are logged. Used from the
/// window's thread.
class Recording {
 public:
  /// `changed` is called when a recording begins or ends: on the thread of the exchange being recorded if it
  /// ends by itself. `report` outlives this object.
  Recording(UserReport& report, std::function<void()> changed);

  /// Records to this file; ends a running recording first. Returns an empty text, or a sentence saying why it
  /// can't record.
  QString Start(const QString& path);
  void Stop();
  bool is_running() const { return recorder_.is_recording(); }

  /// For the sessions.
  quarn::lidar::CaptureRecorder& recorder() { return recorder_; }

 private:
  UserReport& report_;
  const std::function<void()> changed_;
  quarn::lidar::CaptureRecorder recorder_;
};

}  // namespace varkel
