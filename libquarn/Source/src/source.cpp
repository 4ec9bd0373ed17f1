#include "libquarn/Source/src/source.h"

#include "libquarn/Platform/src/logger.h"

namespace quarn::lidar {
namespace {

const char kSourceFile[] = "libquarn/Source/src/source";

}  // namespace

Source::~Source() = default;

void Source::Close() {
  QUARN_LOG(log_lib::kProgress, "Source::Close()");
}

void Source::SetReceiveType(std::uint32_t /*type*/) {}

void Source::SetAutoReceive(bool /*auto_receive*/) {}

void Source::Clear(int /*what*/) {}

}  // namespace quarn::lidar
