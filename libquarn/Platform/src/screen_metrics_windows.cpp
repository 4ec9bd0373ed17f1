#include <windows.h>

#include "libquarn/Platform/src/screen_metrics.h"

namespace quarn::platform {

std::optional<ScreenMetrics> ReadScreenMetrics() {
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
