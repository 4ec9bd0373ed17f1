#include "VarkelCore/src/state/exchange_text.h"

#include <QByteArray>

#include "libquarn/KtcClient/src/ktc_client.h"
#include "libquarn/Platform/src/hex_text.h"

namespace varkel {

using quarn::lidar::KtcClient;

std::string ExchangeCodeText(std::int32_t code) {
  switch (code) {
    case KtcClient::kOtherReply:
      return "the reply answers another command";
    case KtcClient::kNoHeader:
      return "no reply";
    case KtcClient::kNoPayload:
      return "the reply was cut off";
    case KtcClient::kNotSent:
      return "the request was not sent";
    default:
      return "the sensor refused with code " + std::to_string(code);
  }
}

std::vector<std::uint8_t> RawBytes(const std::string& text) {
  const QByteArray bytes = QByteArray::fromHex(QByteArray::fromStdString(text));
  std::vector<std::uint8_t> raw(bytes.begin(), bytes.end());
  return quarn::lidar::HexText(raw) == text ? raw : std::vector<std::uint8_t>();
}

}  // namespace varkel
