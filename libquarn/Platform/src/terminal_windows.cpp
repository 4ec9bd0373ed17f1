#include <windows.h>

#include "libquarn/Platform/src/terminal.h"

namespace quarn::lidar {

namespace {

DWORD NumberOf(StandardStream stream) {
  switch (stream) {
    case StandardStream::kInput:
      return STD_INPUT_HANDLE;
    case StandardStream::kOutput:
      return STD_OUTPUT_HANDLE;
    case StandardStream::kError:
      break;
  }
  return STD_ERROR_HANDLE;
}

}  // namespace

bool IsTerminal(StandardStream stream) {
  const HANDLE handle = GetStdHandle(NumberOf(stream));
  DWORD mode = 0;
  if (GetConsoleMode(handle, &mode) == 0) return false;
  if (stream == StandardStream::kInput) return true;
  SetConsoleOutputCP(CP_UTF8);
  SetConsoleMode(handle, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
  return true;
}

}  // namespace quarn::lidar
