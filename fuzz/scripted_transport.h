#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>

#include "fuzz/input.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace fuzz {

/// What every client's transport does until the script changes. Both functions return what the transport's
/// operations return; an empty function means failure.
struct TransportScript {
  std::function<int(Bytes frame)> send;
  std::function<int(std::span<std::uint8_t> buffer)> receive;
};
TransportScript& Script();

/// Answers every request with the result of `answer`, in blocks of at most `block` bytes.
void AnswerWith(std::function<Vector(Bytes request)> answer,
                std::size_t block = std::numeric_limits<std::size_t>::max());

/// A connected client of the protocol version (1 or 2) without time-outs. It lives as long as the program, so
/// that no thread is started per input.
const std::shared_ptr<quarn::lidar::KtcClient>& OpenClient(std::uint8_t version);

}  // namespace fuzz
