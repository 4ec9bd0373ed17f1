#include "tests/endurance/figures.h"

#include <QtGlobal>
#include <fstream>

double WaitedForCoreMs() {
  double running_ns = 0;
  double waiting_ns = 0;
  std::ifstream("/proc/thread-self/schedstat") >> running_ns >> waiting_ns;
  return waiting_ns / 1e6;
}

int CountOf(const char* variable, int otherwise) {
  bool given = false;
  const int count = qEnvironmentVariableIntValue(variable, &given);
  return given ? count : otherwise;
}
