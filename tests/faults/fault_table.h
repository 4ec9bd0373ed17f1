#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "tests/faults/fault_bench.h"

namespace varkel::test {

/// One disturbance of one operation.
struct Fault {
  std::string kind;    ///< a name of kKinds; empty for none
  std::size_t at = 1;  ///< the disturbed exchange, counted from 1, or the place in Operation::points
  std::vector<std::size_t> steps;  ///< the counted exchanges' payload bytes when nothing disturbs them
};

/// The simulator's rules by the names of the table. LATE stands for more than the client's patience.
struct Kind {
  const char* name;
  const char* rule;
};
inline constexpr Kind kKinds[] = {{"slow", "late:300"},         {"split", "split:7"},
                                  {"noise", "noise"},           {"late", "late:LATE"},
                                  {"wrong-echo", "wrong-echo"}, {"error", "error:7"},
                                  {"more", "lying-length:5"},   {"less", "lying-length:-2"},
                                  {"silence", "silence"},       {"close", "close"}};

/// Where an operation is disturbed: COMMAND=KIND and NTH make the rule; `also` holds beside it.
struct Point {
  std::string command;
  std::string nth{};
  std::string also{};
};

struct Operation {
  std::string name;
  std::string model;
  std::function<void(FaultBench&)> start{};
  std::function<Lines(const Fault&)> expected{};  ///< what the user is told; kUntellable leaves the case out
  std::vector<Point> points{};  ///< none: at the first, a middle and the last of the exchanges
  unsigned patience_ms = 4000;
  bool connects = false;  ///< begins without a connection
  bool restarts = false;  ///< the sensor goes whether it answers or not
  enum class Ends { kNever, kOnSuccess, kAlways } disconnects = Ends::kNever;
  bool alone = false;                       ///< two at once get in each other's way
  std::function<bool(FaultBench&)> over{};  ///< none: it is connected, or says that it ended
  /// What else must hold in the end; else a complaint. `success`: no error notice is due.
  std::function<std::string(FaultBench&, bool success)> check{};
};

/// Hangs on fractions of a second.
inline const Lines kUntellable = {"?"};

std::vector<Operation> Operations();

}  // namespace varkel::test
