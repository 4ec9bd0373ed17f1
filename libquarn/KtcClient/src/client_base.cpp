#include "libquarn/KtcClient/src/client_base.h"

namespace quarn::lidar {

ClientBase::~ClientBase() = default;

}  // namespace quarn::lidar
