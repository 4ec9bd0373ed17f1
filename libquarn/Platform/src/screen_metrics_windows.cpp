#include <windows.h>

#include "libquarn/Platform/src/screen_metrics.h"

namespace quarn::platform {
namespace {

// For its lifetime this thread sees sizes as Windows gives them to a program that it scales up, whatever the
// process has declared or the user has set for it. Qt later makes the process aware of each screen's scale.
class SeesScaledSizes {
 public:
  SeesScaledSizes() : before_(SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_UNAWARE)) {}
  ~SeesScaledSizes() { SetThreadDpiAwarenessContext(before_); }
  SeesScaledSizes(const SeesScaledSizes&) = delete;
  SeesScaledSizes& operator=(const SeesScaledSizes&) = delete;

 private:
  DPI_AWARENESS_CONTEXT before_;
};

}  // namespace

std::optional<ScreenMetrics> ReadScreenMetrics() {
  const SeesScaledSizes scaled_sizes;
  const HWND desktop = GetDesktopWindow();
  const HDC context = GetDC(desktop);
  if (context == nullptr) {
    return std::nullopt;
  }
  ScreenMetrics metrics;
  metrics.logical_width = GetSystemMetrics(SM_CXSCREEN);
  metrics.logical_height = GetSystemMetrics(SM_CYSCREEN);
  metrics.physical_width = GetDeviceCaps(context, DESKTOPHORZRES);
  metrics.physical_height = GetDeviceCaps(context, DESKTOPVERTRES);
  ReleaseDC(desktop, context);
  return metrics;
}

}  // namespace quarn::platform
