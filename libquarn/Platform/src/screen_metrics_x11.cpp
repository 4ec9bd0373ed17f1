#include <xcb/randr.h>
#include <xcb/xcb.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>

#include "libquarn/Platform/src/screen_metrics.h"

namespace quarn::platform {
namespace {

constexpr double kUnscaledDpi = 96.0;

struct Disconnect {
  void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
struct Free {
  void operator()(void* reply) const { std::free(reply); }  // NOLINT(cppcoreguidelines-no-malloc)
};
using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;
template <typename T>
using Reply = std::unique_ptr<T, Free>;

struct Size {
  int width = 0;
  int height = 0;
};

// The resolution of one output; nullopt if it is off.
std::optional<Size> OutputSize(xcb_connection_t* x, xcb_randr_output_t output) {
  const Reply<xcb_randr_get_output_info_reply_t> info(
      xcb_randr_get_output_info_reply(x, xcb_randr_get_output_info(x, output, XCB_CURRENT_TIME), nullptr));
  if (!info || info->crtc == XCB_NONE) {
    return std::nullopt;
  }
  const Reply<xcb_randr_get_crtc_info_reply_t> crtc(
      xcb_randr_get_crtc_info_reply(x, xcb_randr_get_crtc_info(x, info->crtc, XCB_CURRENT_TIME), nullptr));
  if (!crtc || crtc->width == 0 || crtc->height == 0) {
    return std::nullopt;
  }
  return Size{crtc->width, crtc->height};
}

// The first output that is on.
std::optional<Size> FirstSize(xcb_connection_t* x, const xcb_screen_t& screen) {
  const Reply<xcb_randr_get_screen_resources_current_reply_t> resources(
      xcb_randr_get_screen_resources_current_reply(x, xcb_randr_get_screen_resources_current(x, screen.root),
                                                   nullptr));
  if (!resources) {
    return std::nullopt;
  }
  const std::span outputs(xcb_randr_get_screen_resources_current_outputs(resources.get()),
                          resources->num_outputs);
  for (const xcb_randr_output_t output : outputs) {
    if (const auto size = OutputSize(x, output)) {
      return size;
    }
  }
  return std::nullopt;
}

// Not every window manager names a primary output. Then it is the first, as for Qt.
std::optional<Size> PrimarySize(xcb_connection_t* x, const xcb_screen_t& screen) {
  const auto* extension = xcb_get_extension_data(x, &xcb_randr_id);
  if (extension == nullptr || extension->present == 0) {
    return std::nullopt;
  }
  const Reply<xcb_randr_get_output_primary_reply_t> primary(
      xcb_randr_get_output_primary_reply(x, xcb_randr_get_output_primary(x, screen.root), nullptr));
  const auto size = primary && primary->output != XCB_NONE ? OutputSize(x, primary->output) : std::nullopt;
  return size ? size : FirstSize(x, screen);
}

// The desktop's dots per inch: the resource "Xft.dpi", which desktops set in order to scale programs.
double DesktopDpi(xcb_connection_t* x, const xcb_screen_t& screen) {
  constexpr std::uint32_t kMaxWords = 16384;
  const Reply<xcb_get_property_reply_t> property(xcb_get_property_reply(
      x, xcb_get_property(x, 0, screen.root, XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, 0, kMaxWords),
      nullptr));
  if (!property) {
    return kUnscaledDpi;
  }
  const std::string resources(static_cast<const char*>(xcb_get_property_value(property.get())),
                              static_cast<std::size_t>(xcb_get_property_value_length(property.get())));
  const std::string key = "Xft.dpi:";
  std::size_t start = resources.find(key);
  while (start != std::string::npos && start != 0 && resources[start - 1] != '\n') {
    start = resources.find(key, start + 1);
  }
  if (start == std::string::npos) {
    return kUnscaledDpi;
  }
  const double dpi = std::strtod(resources.c_str() + start + key.size(), nullptr);
  return std::isfinite(dpi) && dpi > 0.0 ? dpi : kUnscaledDpi;
}

int Logical(int physical, double dpi) {
  return static_cast<int>(std::lround(physical * kUnscaledDpi / dpi));
}

}  // namespace

std::optional<ScreenMetrics> ReadScreenMetrics() {
  int screen_number = 0;
  const Connection connection(xcb_connect(nullptr, &screen_number));
  if (xcb_connection_has_error(connection.get()) != 0) {
    return std::nullopt;
  }
  auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection.get()));
  while (screen_number > 0 && screens.rem > 1) {
    xcb_screen_next(&screens);
    --screen_number;
  }
  if (screens.rem == 0) {
    return std::nullopt;
  }
  const xcb_screen_t& screen = *screens.data;
  const Size size =
      PrimarySize(connection.get(), screen).value_or(Size{screen.width_in_pixels, screen.height_in_pixels});
  const double dpi = DesktopDpi(connection.get(), screen);
  return ScreenMetrics{Logical(size.width, dpi), Logical(size.height, dpi), size.width, size.height};
}

}  // namespace quarn::platform
