#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>

#include "fuzz/input.h"

namespace {

// A claimed length must not become memory here either.
void* Allocate(std::size_t size) {
  constexpr std::size_t kLimit = std::size_t{64} << 20U;
  fuzz::Require(size <= kLimit, "nothing takes 64 MiB at once");
  return std::malloc(size);
}

}  // namespace

void* operator new(std::size_t size) {
  void* const memory = Allocate(size);
  return memory != nullptr ? memory : throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return Allocate(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

// Runs a target without libFuzzer: once on each file of the folder that is the argument, and once on nothing.
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
