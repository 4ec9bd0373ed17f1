#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/faults/fault_bench.h"

namespace varkel::test {

/// One disturbance of one operation.
struct Fault {
  std::string kind;    ///< a name of kKinds; "none" for none
  std::size_t at = 1;  ///< the disturbed exchange, counted from 1, or the place in Operation::points
  std::vector<FaultBench::Answered> steps;  ///< the exchanges when nothing disturbs them
};

/// The simulator's rules by the names of the table. LATE stands for more than the client's patience.
struct Kind {
  const char* name;
  const char* rule;
};
inline constexpr Kind kKinds[] = {
    {"slow", "late:300"},       {"split", "split:7"},         {"noise", "noise"},
    {"late", "late:LATE"},      {"wrong-echo", "wrong-echo"}, {"error", "error:7"},
    {"more", "lying-length:5"}, {"less", "lying-length:-2"},  {"silence", "silence"},
    {"close", "close"},
};

/// Where an operation is disturbed: COMMAND=KIND and NTH make the rule; `also` holds beside it.
struct Point {
  std::string command;
  std::string nth{};
  std::string also{};
};

struct Operation {
  std::string name;
  std::string model;
  /// Begins it; the bench's `ended` tells its end, or `over` does.
  std::function<void(FaultBench&)> start;
  /// What the user is told; nothing for a fault whose outcome hangs on fractions of a second.
  std::function<std::optional<Lines>(const Fault&)> expected;
  std::vector<Point> points{};  ///< none: at the first, a middle and the last of the exchanges
  unsigned patience_ms = 4000;
  unsigned last_patience_ms = 0;  ///< of the last exchange, where it differs
  bool connects = false;          ///< begins without a connection
  bool restarts = false;          ///< the sensor goes whether it answers or not
  enum class Ends { kNever, kOnSuccess, kAlways } disconnects = Ends::kNever;
  bool alone = false;  ///< two at once get in each other's way
  std::string info{};  ///< which failure of the information read in the background it is about
  std::function<bool(FaultBench&)> over{};
  /// Once it is over: what else must hold, told as a fault; `success`: no error notice is due.
  std::function<std::string(FaultBench&, bool success)> check{};
};

const std::vector<Operation>& Operations();

}  // namespace varkel::test
