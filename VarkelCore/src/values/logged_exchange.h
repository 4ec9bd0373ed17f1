#pragma once

#include <string>

#include "VarkelCore/src/values/exchange_decoder.h"

namespace varkel {

/// Decodes two lines of the byte log: a request ("SEND: 47 74 …") and its reply ("RECV: …"); either may be
/// empty. The text is for a monospaced font; empty if neither line can be decoded.
std::string DecodeLogLines(const ExchangeDecoder& decoder, const std::string& sent,
                           const std::string& received);

}  // namespace varkel
