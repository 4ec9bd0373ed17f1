#include "bench/soak/figures.h"

#include <malloc.h>
#include <unistd.h>

#include <QtGlobal>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

int EntriesOf(const char* folder) {
  const std::filesystem::directory_iterator entries(folder);
  return static_cast<int>(std::distance(begin(entries), end(entries)));
}

}  // namespace

Figures Figures::Now() {
  malloc_trim(0);
  Figures now;
  now.handles = EntriesOf("/proc/self/fd");
  now.threads = EntriesOf("/proc/self/task");
  now.heap_kib = static_cast<long>(mallinfo2().uordblks / 1024);
  long pages = 0;
  std::ifstream("/proc/self/statm") >> pages >> pages;  // the second number is the resident part
  now.resident_kib = pages * (sysconf(_SC_PAGESIZE) / 1024);
  return now;
}

std::string Figures::Text() const {
  return std::to_string(resident_kib) + " KiB resident, " + std::to_string(heap_kib) + " KiB heap, " +
         std::to_string(handles) + " handles, " + std::to_string(threads) + " threads";
}

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
