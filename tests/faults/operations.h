#pragma once

#include <QTemporaryDir>
#include <QUrl>
#include <string>
#include <utility>
#include <vector>

#include "tests/core/controller_fixture.h"

namespace varkel::test {

/// A controller with its sensor, recording what its operations report.
class FaultFixture : public ControllerFixture {
 public:
  explicit FaultFixture(const std::string& model_name);
  ~FaultFixture() { CloseAll(); }
  FaultFixture(const FaultFixture&) = delete;
  FaultFixture& operator=(const FaultFixture&) = delete;

  /// Connects, and waits until a small sensor has answered the background requests.
  bool Connect();
  /// Whether the first values that the window shows come from the sensor.
  bool ShowsTheSensor();
  bool IsBusy() const;  ///< an operation's flag is set
  void Forget();        ///< clears what was reported so far
  QUrl File(const QString& name, const std::vector<std::uint8_t>& content = {}) const;

  const std::string model;
  QTemporaryDir folder;
  int ended = 0;  ///< operations that reported their end
};

/// A long operation that a user starts.
struct Operation {
  const char* name;
  const char* model;
  void (*start)(FaultFixture&);
  /// Where the fault occurs, as COMMAND of a fault rule and its "#N".
  std::vector<std::pair<std::string, std::string>> points = {{"*", "#1"}};
  /// Number of error notices on failure; 0 if it fails without one.
  int errors = 1;
  /// A single exchange that is not repeated: no reply, a refusal or a closed connection always makes it fail.
  bool is_single = false;
  bool connects = false;  ///< starts unconnected, and ends when the connection is established or has failed
  bool restarts = false;  ///< the connection ends when it succeeds
};

std::vector<Operation> Operations();

}  // namespace varkel::test
