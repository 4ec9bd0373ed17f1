#pragma once

#include <string>

/// A sanitizer makes a program slower and keeps freed memory.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

/// The resources of a process, according to the system.
struct Figures {
  static Figures Now();  ///< after returning free memory to the system

  std::string Text() const;

  long resident_kib = 0;
  long heap_kib = 0;  ///< memory that is allocated and not freed; 0 under sanitizers
  int handles = 0;
  int threads = 0;
};

/// How long this thread has waited for a core since it started, which is not the tool's fault.
double WaitedForCoreMs();

/// A count from the environment, or the given default.
int CountOf(const char* variable, int otherwise);
