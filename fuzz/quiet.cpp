#include <iostream>
#include <streambuf>

#include "fuzz/input.h"

// The trace lines that the code under test writes would only cost time.
extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  struct Nowhere : std::streambuf {
    int_type overflow(int_type character) override { return traits_type::not_eof(character); }
    std::streamsize xsputn(const char* /*text*/, std::streamsize count) override { return count; }
  };
  static auto* const nowhere = new Nowhere;  // the stream is flushed after every static object has ended
  std::cout.rdbuf(nowhere);
  return 0;
}
