#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>

#include "fuzz/input.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace fuzz {

/// What the transport of every client does until the script changes. Both return what the transport's
/// operations return; an empty function fails.
struct TransportScript {
  std::function<int(Bytes frame)> send;
  std::function<int(std::span<std::uint8_t> buffer)> receive;
};
TransportScript& Script();

/// Has every request answered with what `answer` makes of it, in blocks of `block` bytes at most.
void AnswerWith(std::function<Vector(Bytes request)> answer,
                std::size_t block = std::numeric_limits<std::size_t>::max());

/// The client of the protocol version (1 or 2), connected and without time-outs; it lives as long as the
/// program, so that inputs cost no threads.
const std::shared_ptr<quarn::lidar::KtcClient>& OpenClient(std::uint8_t version);

}  // namespace fuzz
