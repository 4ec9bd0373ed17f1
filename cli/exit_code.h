#pragma once

namespace varkel::cli {

enum ExitCode : int {
  kDone = 0,
  kFailed = 1,
  kDifferent = 2,  ///< compare or --check found differences
  kRefused = 3,    ///< refused by the sensor, or written but not verified
  kNoConnection = 4,
  kWrongUse = 64,
};

/// The more severe code, which becomes the exit code for several sensors. In descending order: no connection,
/// refused, failed, different.
constexpr ExitCode MoreSevere(ExitCode a, ExitCode b) {
  for (const ExitCode code : {kNoConnection, kRefused, kFailed, kDifferent}) {
    if (a == code || b == code) return code;
  }
  return a == kDone ? b : a;
}

}  // namespace varkel::cli
