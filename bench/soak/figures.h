#pragma once

#include <string>

/// A sanitizer makes a program slower and keeps what was freed.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

/// What a process holds, according to the system.
struct Figures {
  static Figures Now();  ///< after free memory went back to the system

  std::string Text() const;

  long resident_kib = 0;
  long heap_kib = 0;  ///< bytes that were allocated and not given back; 0 under sanitizers
  int handles = 0;
  int threads = 0;
};

/// How long this thread has waited for a core since it began: that is the machine's doing, not the tool's.
double WaitedForCoreMs();

/// A count from the environment, or the given one.
int CountOf(const char* variable, int otherwise);
