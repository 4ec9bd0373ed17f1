#pragma once

#include <string>

#include "VarkelCore/src/values/exchange_decoder.h"

namespace varkel {

/// What two lines of the byte flow mean: the request ("SEND: 47 74 …") and what came of it ("RECV: …");
/// either may be empty. The text is for a monospaced font; empty when neither line tells anything.
std::string DecodeLogLines(const ExchangeDecoder& decoder, const std::string& sent,
                           const std::string& received);

}  // namespace varkel
