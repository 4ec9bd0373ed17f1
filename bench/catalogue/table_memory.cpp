// Peak memory of loading a model's table, each size in a process of its own: bytes a variable beyond the
// bytes of the file's cells. One line a figure: name, tab, number.

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

#include "VarkelCore/src/config_parser.h"
#include "bench/catalogue/big_table.h"

namespace {

constexpr long kBytesAKibibyte = 1024;

/// What the system says of this process' memory: "VmRSS:" now, "VmHWM:" at its peak.
long Resident(const std::string& what) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == what) {
      long kibibytes = 0;
      status >> kibibytes;
      return kibibytes * kBytesAKibibyte;
    }
  }
  throw std::runtime_error("The system does not say " + what);
}

void Load(const std::string& path) {
  varkel::ConfigParser catalogue(path);
  if (!catalogue.ExtractConfigInfo()) {
    throw std::runtime_error("Can't load " + path);
  }
}

// Loads twice: the pages of code that the first time touches are not the table's.
void Measure(long variables) {
  const varkel::bench::BigTable table(static_cast<std::size_t>(variables));
  Load(table.path());
  malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << 5;  // the peak is what there is now
  const long before = Resident("VmRSS:");
  Load(table.path());
  const long beyond = Resident("VmHWM:") - before - static_cast<long>(table.text_size());
  std::cout << "table_memory/" << variables << '\t' << beyond / variables << std::endl;
}

bool MeasureOrSayWhyNot(long variables) {
  try {
    Measure(variables);
    return true;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return false;
  }
}

}  // namespace

int main() {
  int failures = 0;
  for (const long variables : {100L, 10'000L, 100'000L}) {
    const pid_t child = fork();
    if (child == 0) {
      std::_Exit(MeasureOrSayWhyNot(variables) ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = 0;
    waitpid(child, &status, 0);
    failures += status == 0 ? 0 : 1;
  }
  return failures;
}
