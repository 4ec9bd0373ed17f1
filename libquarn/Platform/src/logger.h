#pragma once

#include <functional>
#include <memory>
#include <string>

#if defined(__GNUC__)
#define LOG_LIB_PRINTF(format_index, first_argument) \
  __attribute__((format(printf, format_index, first_argument)))
#else
#define LOG_LIB_PRINTF(format_index, first_argument)
#endif

namespace log_lib {

/// The numeric levels that callers pass.
enum Level : int { kTiming = 1, kProgress = 2, kWarning = 4, kError = 8 };

/// The program's log file, written through one call. Thread-safe; a message never blocks, throws, or affects
/// the operation that logs it: before Start messages are dropped, and a full queue drops the oldest.
class Logger {
 public:
  Logger(const Logger&) = delete;
  Logger& operator=(const Logger&) = delete;

  static Logger& GetInstance();

  /// Opens the rotating file `path` (3 files of 5 MiB) and its writer thread. False if it can't be opened.
  bool Start(const std::string& path);
  /// Writes the queued messages and ends the writer thread.
  void Stop();

  /// Also hands every formatted message to `tap`, on the caller's thread; an empty function removes it.
  void SetTap(std::function<void(int level, const std::string& text)> tap);

  /// `file` is the source path within the project, `line` is 0 if the message is logged under another file's
  /// name, `format` is printf's. Copies all arguments before it returns.
  void AddToQueue(int level, const char* file, int line, const char* function, const char* format, ...)
      LOG_LIB_PRINTF(6, 7);

 private:
  Logger();
  ~Logger();
  void Deliver(int level, const char* file, int line, const char* function, const std::string& text);

  struct State;
  const std::unique_ptr<State> state_;
};

}  // namespace log_lib

/// Logs under the name of another source file, without a line number, so that all messages of a component are
/// found under one name, whichever file logs them.
#define QUARN_LOG_AS(file, level, ...) \
  log_lib::Logger::GetInstance().AddToQueue((level), (file), 0, __func__, __VA_ARGS__)

/// Logs from a source file that defines `kSourceFile`, its path within the project.
#define QUARN_LOG(level, ...) \
  log_lib::Logger::GetInstance().AddToQueue((level), kSourceFile, __LINE__, __func__, __VA_ARGS__)
