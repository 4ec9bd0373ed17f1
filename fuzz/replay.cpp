#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/input.h"

// Runs a target without libFuzzer: once on each file in the folder given as argument, and once on an empty
// input.
int main(int argc, char** argv) {
  LLVMFuzzerInitialize(&argc, &argv);
  LLVMFuzzerTestOneInput(nullptr, 0);
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(argc > 1 ? argv[1] : ".")) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    std::fprintf(stderr, "%s\n", entry.path().filename().c_str());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    ++files;
  }
  return files > 0 ? 0 : 1;
}
