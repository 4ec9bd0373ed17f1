// Memory of loading a model's table: the peak allocation, in bytes per variable, minus the bytes of the
// file's cells. One line per figure: name, tab, number. Resident memory would say nothing about small tables:
// code that runs for the first time and memory kept by the allocator outweigh them.

#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <stdexcept>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "bench/catalogue/big_table.h"

namespace {

// This program has one thread.
std::size_t allocated = 0;
std::size_t peak = 0;

/// What the allocator uses: the rounded size and the word before it.
std::size_t Taken(void* block) {
  return block == nullptr ? 0 : malloc_usable_size(block) + sizeof(std::size_t);
}

std::size_t PeakOfLoad(const varkel::bench::BigTable& table) {
  const std::size_t before = allocated;
  peak = allocated;
  varkel::ConfigParser catalogue(table.path());
  if (!catalogue.ExtractConfigInfo()) {
    throw std::runtime_error("Can't load " + table.path());
  }
  return peak - before;
}

}  // namespace

void* operator new(std::size_t size) {
  void* const block = std::malloc(size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  allocated += Taken(block);
  peak = std::max(peak, allocated);
  return block;
}
void operator delete(void* block) noexcept {
  allocated -= Taken(block);
  std::free(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
  operator delete(block);
}

int main() {
  try {
    for (const std::size_t variables : {100U, 10'000U, 100'000U}) {
      const varkel::bench::BigTable table(variables);
      std::cout << "table_memory/" << variables << '\t' << (PeakOfLoad(table) - table.text_size()) / variables
                << std::endl;
    }
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return EXIT_FAILURE;
  }
}
