#include <unistd.h>

#include "libquarn/Platform/src/terminal.h"

namespace quarn::lidar {

bool IsTerminal(StandardStream stream) {
  switch (stream) {
    case StandardStream::kInput:
      return isatty(STDIN_FILENO) != 0;
    case StandardStream::kOutput:
      return isatty(STDOUT_FILENO) != 0;
    case StandardStream::kError:
      return isatty(STDERR_FILENO) != 0;
  }
  return false;
}

}  // namespace quarn::lidar
