#include "libquarn/Platform/src/logger.h"

#include <spdlog/async_logger.h>
#include <spdlog/details/thread_pool.h>
#include <spdlog/sinks/rotating_file_sink.h>

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <mutex>
#include <utility>

namespace log_lib {
namespace {

constexpr std::size_t kQueuedMessages = 8192;
constexpr std::size_t kFileBytes = std::size_t{5} * 1024 * 1024;
constexpr std::size_t kOlderFiles = 2;  // in addition to the file being written: three in all

spdlog::level::level_enum ToSpdlog(int level) {
  switch (level) {
    case kTiming:
      return spdlog::level::debug;
    case kProgress:
      return spdlog::level::info;
    case kWarning:
      return spdlog::level::warn;
    default:
      return spdlog::level::err;
  }
}

// A message may contain untrusted text: it must stay on one line and must not control a terminal.
std::string OneLine(const std::string& text) {
  std::string line;
  line.reserve(text.size());
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (code >= 0x20 && code != 0x7F) {
      line += c;
    } else {
      std::array<char, 5> escape{};
      std::snprintf(escape.data(), escape.size(), "\\x%02x", unsigned{code});
      line += code == '\n' ? "\\n" : escape.data();
    }
  }
  return line;
}

std::string Place(const char* file, int line, const char* function) {
  return std::string(file) + (line > 0 ? ":" + std::to_string(line) : "") + " " + function + " ";
}

}  // namespace

struct Logger::State {
  using Tap = std::function<void(int, const std::string&)>;

  std::atomic<bool> listening{false};  // there is a file or a tap, so messages are formatted
  std::mutex mutex;                    // guards what follows
  std::shared_ptr<spdlog::details::thread_pool> writer;
  std::shared_ptr<spdlog::async_logger> file;
  std::shared_ptr<const Tap> tap;
};

Logger::Logger() : state_(std::make_unique<State>()) {}

Logger::~Logger() {
  Stop();
}

Logger& Logger::GetInstance() {
  static Logger instance;
  return instance;
}

bool Logger::Start(const std::string& path) {
  Stop();
  try {
    auto sink = std::make_shared<spdlog::sinks::rotating_file_sink_mt>(path, kFileBytes, kOlderFiles);
    auto writer = std::make_shared<spdlog::details::thread_pool>(kQueuedMessages, 1);
    auto file = std::make_shared<spdlog::async_logger>("varkel", std::move(sink), writer,
                                                       spdlog::async_overflow_policy::overrun_oldest);
    file->set_level(spdlog::level::debug);
    file->set_pattern("%Y-%m-%d %H:%M:%S.%e %l %v");
    // Flushes run on the writer thread; a crash loses at most timing lines.
    file->flush_on(spdlog::level::info);
    file->set_error_handler([](const std::string&) {});
    const std::lock_guard lock(state_->mutex);
    state_->writer = std::move(writer);
    state_->file = std::move(file);
    state_->listening = true;
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

void Logger::Stop() {
  std::shared_ptr<spdlog::details::thread_pool> writer;
  std::shared_ptr<spdlog::async_logger> file;
  {
    const std::lock_guard lock(state_->mutex);
    writer.swap(state_->writer);
    file.swap(state_->file);
    state_->listening = state_->tap != nullptr;
  }
  // Outside the lock: the writer first finishes its queue.
  writer.reset();
}

void Logger::SetTap(std::function<void(int level, const std::string& text)> tap) {
  auto shared = tap ? std::make_shared<const State::Tap>(std::move(tap)) : nullptr;
  const std::lock_guard lock(state_->mutex);
  state_->tap = std::move(shared);
  state_->listening = state_->tap != nullptr || state_->file != nullptr;
}

void Logger::AddToQueue(int level, const char* file, int line, const char* function, const char* format,
                        ...) {
  if (!state_->listening.load(std::memory_order_relaxed)) {
    return;
  }
  std::va_list arguments;
  va_start(arguments, format);
  // The analyzer does not recognise va_start here. NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  if (length < 0) {
    return;
  }
  try {
    std::string text(static_cast<std::size_t>(length), '\0');
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    va_end(arguments);
    Deliver(level, file, line, function, text);
  } catch (...) {  // NOLINT(bugprone-empty-catch): logging must not make its caller fail
  }
}

void Logger::Deliver(int level, const char* file, int line, const char* function, const std::string& text) {
  std::shared_ptr<spdlog::async_logger> log;
  std::shared_ptr<const State::Tap> tap;
  {
    const std::lock_guard lock(state_->mutex);
    log = state_->file;
    tap = state_->tap;
  }
  if (log) {
    log->log(ToSpdlog(level), "{}{}", Place(file, line, function), OneLine(text));
  }
  if (tap) {
    (*tap)(level, text);
  }
}

}  // namespace log_lib
