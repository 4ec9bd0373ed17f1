#pragma once

#include <QTemporaryDir>
#include <QUrl>
#include <functional>
#include <string>
#include <vector>

#include "tests/core/controller_fixture.h"

namespace varkel::test {

/// A controller with its sensor, and what its operations report.
class FaultFixture : public ControllerFixture {
 public:
  explicit FaultFixture(const std::string& model_name);
  ~FaultFixture() { CloseAll(); }
  FaultFixture(const FaultFixture&) = delete;
  FaultFixture& operator=(const FaultFixture&) = delete;

  /// Connects, and waits until a small sensor has answered what it is asked in the background.
  bool Connect();
  /// Whether what the window shows first comes from the sensor.
  bool ShowsTheSensor();
  bool IsBusy() const;  ///< a flag of an operation is up
  void Forget();        ///< what was reported so far
  QUrl File(const QString& name, const std::vector<std::uint8_t>& content = {}) const;

  const std::string model;
  QTemporaryDir folder;
  int ended = 0;  ///< operations that reported their end
};

/// Something long that a user starts.
struct Operation {
  const char* name;
  const char* model;
  std::function<void(FaultFixture&)> start;
  /// Where it is disturbed, as COMMAND of a fault rule and its "#N".
  std::vector<std::pair<std::string, std::string>> points = {{"*", "#1"}};
  /// Error notices of a failure; 0 for what fails without one.
  int errors = 1;
  /// A single exchange that is not repeated: no reply, a refusal or a cut connection fails it for certain.
  bool is_single = false;
  bool connects = false;  ///< begins without a connection, and is over when that has come or failed
  bool restarts = false;  ///< the connection goes when it succeeds
};

std::vector<Operation> Operations();

}  // namespace varkel::test
