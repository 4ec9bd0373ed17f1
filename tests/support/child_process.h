#pragma once

#include <array>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace quarn::test {

/// A program with its input closed and its output (both kinds) readable; killed when it goes. Its arguments
/// hold no quotation marks.
class ChildProcess {
 public:
  explicit ChildProcess(std::vector<std::string> arguments);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// The rest of the next output line that begins with `start`; empty when the output ends first.
  std::string LineAfter(const std::string& start) {
    std::array<char, 512> line{};
    while (output_ != nullptr &&
           fgets(line.data(), static_cast<int>(line.size()), output_.get()) != nullptr) {
      std::string text = line.data();
      if (text.rfind(start, 0) == 0) {
        return text.substr(start.size());
      }
    }
    return {};
  }

 private:
  struct FileCloser {
    void operator()(FILE* file) const { fclose(file); }
  };
#ifdef _WIN32
  PROCESS_INFORMATION process_{};
#else
  pid_t pid_ = -1;
#endif
  std::unique_ptr<FILE, FileCloser> output_;
};

#ifdef _WIN32

inline ChildProcess::ChildProcess(std::vector<std::string> arguments) {
  SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
  HANDLE ours = nullptr;
  HANDLE theirs = nullptr;
  if (!CreatePipe(&ours, &theirs, &inherited, 0)) {
    return;
  }
  SetHandleInformation(ours, HANDLE_FLAG_INHERIT, 0);
  output_.reset(_fdopen(_open_osfhandle(reinterpret_cast<std::intptr_t>(ours), _O_RDONLY), "r"));
  std::string command;
  for (const std::string& argument : arguments) {
    command += "\"" + argument + "\" ";
  }
  STARTUPINFOA start{};
  start.cb = sizeof(start);
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdOutput = theirs;
  start.hStdError = theirs;
  CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process_);
  CloseHandle(theirs);
}

inline ChildProcess::~ChildProcess() {
  if (process_.hProcess != nullptr) {
    TerminateProcess(process_.hProcess, 1);
    WaitForSingleObject(process_.hProcess, INFINITE);
    CloseHandle(process_.hThread);
    CloseHandle(process_.hProcess);
  }
}

#else

inline ChildProcess::ChildProcess(std::vector<std::string> arguments) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    return;
  }
  output_.reset(fdopen(ends[0], "r"));
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (std::string& argument : arguments) {
    argv.push_back(argument.data());
  }
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
  if (posix_spawnp(&pid_, argv[0], &actions, nullptr, argv.data(), environ) != 0) {
    pid_ = -1;
  }
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
}

inline ChildProcess::~ChildProcess() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
}

#endif

}  // namespace quarn::test
