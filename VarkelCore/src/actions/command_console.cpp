#include "VarkelCore/src/actions/command_console.h"

#include <QByteArray>
#include <QDateTime>
#include <QLocale>
#include <algorithm>
#include <charconv>
#include <optional>
#include <span>
#include <system_error>
#include <utility>

#include "VarkelCore/src/values/protocol_fields.h"
#include "VarkelCore/src/values/whole_number.h"
#include "libquarn/KtcClient/src/sensor_timeouts.h"
#include "libquarn/Platform/src/trace.h"
namespace varkel {

namespace {

constexpr std::size_t kHeaderSize = 8;
/// Nonce, CRC and trailer of a serial reply frame.
constexpr std::size_t kSerialTail = 10;

std::string WithoutHexPrefix(const std::string& text) {
  return text.rfind("0x", 0) == 0 || text.rfind("0X", 0) == 0 ? text.substr(2) : text;
}

/// One byte in base 16. For any other text, standard output says whether it is not a number or too large.
std::optional<std::uint8_t> ReadByte(const std::string& digits) {
  std::uint8_t value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  if (error == std::errc::result_out_of_range) {
    quarn::platform::TraceLine("Out_of_range");
    return std::nullopt;
  }
  if (error != std::errc() || end != digits.data() + digits.size()) {
    quarn::platform::TraceLine("Invalid_argument");
    return std::nullopt;
  }
  return value;
}

std::vector<std::string> PayloadPieces(const std::string& text) {
  std::vector<std::string> pieces;
  if (text.empty()) return pieces;
  std::size_t begin = 0;
  for (std::size_t end = 0; end != std::string::npos; begin = end + 1) {
    end = text.find(' ', begin);
    pieces.push_back(WithoutHexPrefix(text.substr(begin, end - begin)));
  }
  return pieces;
}

std::string Joined(const std::vector<std::string>& pieces) {
  std::string text;
  for (const std::string& piece : pieces) text += (text.empty() ? "" : " ") + piece;
  return text;
}

std::string UpperHex(std::span<const std::uint8_t> bytes) {
  return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()))
      .toHex(' ')
      .toUpper()
      .toStdString();
}

}  // namespace

CommandConsole::Channel CommandConsole::KtcChannel(std::shared_ptr<quarn::lidar::KtcClient> client) {
  return {[client = std::move(client)](std::uint8_t code, std::span<const std::uint8_t> payload,
                                       std::vector<std::uint8_t>& reply) {
            return client->QueryCommand(payload, reply, code, true);
          },
          "Query ktc command fail. Please input right ktc command header and payload.",
          "Incorrect KTC header was entered. Parsing failed.",
          "Incorrect KTC payload was entered. Parsing failed."};
}

CommandConsole::Channel CommandConsole::SerialChannel(std::shared_ptr<quarn::lidar::SerialExchange> exchange,
                                                      bool over_ktc) {
  return {[exchange = std::move(exchange)](std::uint8_t code, std::span<const std::uint8_t> payload,
                                           std::vector<std::uint8_t>& reply) {
            return exchange->QueryFrame(code, payload, reply, quarn::lidar::Timeouts().small_exchange_ms);
          },
          over_ktc ? "Query Serial command fail. Please check BytesFlow in Log Window. Please input right "
                     "Serial command header and payload."
                   : "Query Serial command fail. Please input right Serial command header and payload.",
          "Incorrect Serial header was entered. Parsing failed.",
          "Incorrect Serial payload was entered. Parsing failed.",
          true,
          kSerialTail};
}

CommandConsole::Outcome CommandConsole::Send(const Channel& channel, const std::string& command,
                                             const std::string& payload, std::uint8_t& code) {
  Record record;
  record.time = QLocale::c()
                    .toString(QDateTime::currentDateTime(), QStringLiteral("yyyy-MM-dd HH:mm:ss"))
                    .toStdString();
  // A copied line often ends in a space or a line break.
  record.command = WithoutHexPrefix(std::string(Trimmed(command)));
  const std::vector<std::string> pieces = PayloadPieces(std::string(Trimmed(payload)));
  record.payload = Joined(pieces);

  const std::optional<std::uint8_t> command_code = ReadByte(record.command);
  if (!command_code) {
    report_.Error(channel.bad_header);
    return Outcome::kRefused;
  }
  code = *command_code;
  std::vector<std::uint8_t> bytes;
  for (const std::string& piece : pieces) {
    const std::optional<std::uint8_t> byte = ReadByte(piece);
    if (!byte) {
      report_.Error(channel.bad_payload);
      return Outcome::kRefused;
    }
    bytes.push_back(*byte);
  }

  std::vector<std::uint8_t> reply;
  const bool is_answered = channel.query(code, bytes, reply) == 0;
  {
    const std::lock_guard lock(mutex_);
    last_exchange_ = {channel.is_serial, code, bytes, reply, is_answered};
  }
  reply.resize(reply.size() - std::min(reply.size(), channel.tail));
  if (!is_answered || reply.size() < kHeaderSize) {
    quarn::platform::TraceLine("query command failed!");
    SetReplyTexts({}, {});
    report_.Error(channel.query_failed);
    return Outcome::kFailed;
  }
  ShowReply(reply);
  const std::lock_guard lock(mutex_);
  history_.push_front(std::move(record));
  if (history_.size() > kHistorySize) history_.pop_back();
  return Outcome::kSent;
}

void CommandConsole::ShowReply(const std::vector<std::uint8_t>& reply) {
  const std::span<const std::uint8_t> bytes(reply);
  const auto payload = bytes.subspan(kHeaderSize);
  SetReplyTexts(UpperHex(bytes.first(kHeaderSize)),
                UpperHex(payload.first(std::min(payload.size(), kShownPayload))));
  if (payload.size() > kShownPayload) {
    report_.Error(
        "WARNING: This return payload is too long, only the first 1024 bytes are displayed. For a complete "
        "payload please use the log bytes flow function.");
  }
}

void CommandConsole::SetReplyTexts(std::string header, std::string payload) {
  const std::lock_guard lock(mutex_);
  return_header_ = std::move(header);
  return_payload_ = std::move(payload);
}

CommandConsole::Exchange CommandConsole::last_exchange() const {
  const std::lock_guard lock(mutex_);
  return last_exchange_;
}

std::vector<DecodedField> CommandConsole::DecodedReply(const ExchangeDecoder& decoder) const {
  const Exchange exchange = last_exchange();
  if (!exchange.is_answered || exchange.reply.size() < kHeaderSize) return {};
  return exchange.is_serial ? SerialFrameFields(exchange.reply, true)
                            : decoder.Reply(exchange.command, exchange.request,
                                            std::span(exchange.reply).subspan(kHeaderSize));
}

std::string CommandConsole::FailureText(const ExchangeDecoder& decoder) const {
  constexpr std::size_t kReturnCode = 3;
  const Exchange exchange = last_exchange();
  std::string name =
      exchange.is_serial ? std::string() : decoder.CommandName(exchange.command, exchange.request);
  if (!name.empty()) name = " (" + name + ")";
  const bool is_refused =
      !exchange.is_serial && exchange.reply.size() >= kHeaderSize && exchange.reply[kReturnCode] != 0;
  return "0x" + UpperHex(std::span(&exchange.command, 1)) + name + ": " +
         (is_refused ? "refused with code " + std::to_string(exchange.reply[kReturnCode])
                     : "no usable reply");
}

void CommandConsole::Forget() {
  const std::lock_guard lock(mutex_);
  return_header_.clear();
  return_payload_.clear();
  history_.clear();
  last_exchange_ = {};
}

std::string CommandConsole::return_header() const {
  const std::lock_guard lock(mutex_);
  return return_header_;
}

std::string CommandConsole::return_payload() const {
  const std::lock_guard lock(mutex_);
  return return_payload_;
}

std::vector<CommandConsole::Record> CommandConsole::history() const {
  const std::lock_guard lock(mutex_);
  return {history_.begin(), history_.end()};
}

}  // namespace varkel
