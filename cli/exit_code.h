#pragma once

namespace varkel::cli {

enum ExitCode : int {
  kDone = 0,
  kFailed = 1,
  kDifferent = 2,  ///< compare and --check found differences
  kRefused = 3,    ///< refused by the sensor, or written and not verified
  kNoConnection = 4,
  kWrongUse = 64,
};

/// The one that speaks for several sensors: no connection, then refused, failed, different.
constexpr ExitCode Heavier(ExitCode a, ExitCode b) {
  for (const ExitCode code : {kNoConnection, kRefused, kFailed, kDifferent}) {
    if (a == code || b == code) return code;
  }
  return a == kDone ? b : a;
}

}  // namespace varkel::cli
