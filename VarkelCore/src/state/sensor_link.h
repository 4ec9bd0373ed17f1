#pragma once

#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <tl/expected.hpp>

#include "VarkelCore/src/session/activity.h"
#include "VarkelCore/src/session/sensor_session.h"
#include "VarkelCore/src/session/session_makers.h"
#include "VarkelCore/src/state/address_move.h"
#include "VarkelCore/src/state/sensor_target.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// Loads a model's table from a folder. The error is a sentence.
tl::expected<std::shared_ptr<Model>, std::string> LoadModel(const std::string& folder,
                                                            const std::string& model_name);

/// Why there is no link.
struct LinkFailure {
  bool is_no_connection = false;  ///< the sensor could not be reached; false: a fault of the model's table
  std::string text;               ///< a sentence
};

/// One connected sensor with its own model, connected for as long as the object exists. Nothing runs in the
/// background except what the caller starts. A stop ends the session, so that calls waiting for the sensor
/// return at once.
class SensorLink {
 public:
  /// Blocks until the sensor answers or can't be reached. `report`, and `recorder` if given, outlive the
  /// link.
  static tl::expected<std::unique_ptr<SensorLink>, LinkFailure> Open(
      const SensorTarget& target, const std::string& table_folder, UserReport& report,
      const std::stop_token& stop, quarn::lidar::CaptureRecorder* recorder = nullptr);

  const SensorTarget& target() const { return target_; }
  const std::shared_ptr<Model>& model() const { return model_; }
  const std::shared_ptr<SensorSession>& session() const { return session_; }
  const std::shared_ptr<quarn::lidar::KtcClient>& client() const { return session_->ktc_client(); }
  /// Whether this sensor has the model's variables; small sensors have functions instead.
  bool has_variables() const { return session_->has_pages(); }
  Activity& activity() { return activity_; }

  /// Makes clients to other addresses of the same sensor. This object outlives them.
  ConnectTo connect_to();

 private:
  SensorLink(SensorTarget target, std::shared_ptr<Model> model, UserReport& report,
             quarn::lidar::CaptureRecorder* recorder);

  SessionResult Connect(const SensorTarget& target, const std::stop_token& stop);

  const SensorTarget target_;
  const std::shared_ptr<Model> model_;
  UserReport& report_;
  quarn::lidar::CaptureRecorder* const recorder_;
  const ByteLogSwitch log_bytes_ = false;
  Activity activity_;
  std::shared_ptr<SensorSession> session_;
  std::optional<std::stop_callback<std::function<void()>>> end_on_stop_;  // last: uses the session
};

}  // namespace varkel
