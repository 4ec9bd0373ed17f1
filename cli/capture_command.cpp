#include <QDateTime>
#include <QLocale>
#include <QString>
#include <filesystem>
#include <fstream>

#include "VarkelCore/src/state/exchange_text.h"
#include "VarkelCore/src/state/json_text.h"
#include "VarkelCore/src/state/sensor_link.h"
#include "VarkelCore/src/values/decoded_text.h"
#include "VarkelCore/src/values/exchange_decoder.h"
#include "VarkelCore/src/values/protocol_fields.h"
#include "cli/commands.h"
#include "libquarn/Capture/src/captured_exchanges.h"
#include "libquarn/Platform/src/hex_text.h"

namespace varkel::cli {

namespace {

using quarn::lidar::CapturedExchange;
using Answer = CapturedExchange::Answer;
using Fields = std::vector<DecodedField>;

std::string TimeText(quarn::lidar::CaptureTime time) {
  constexpr std::size_t kMicrosecondDigits = 6;
  const auto us = std::chrono::duration_cast<std::chrono::microseconds>(time.time_since_epoch()).count();
  const std::string digits = std::to_string(us % 1'000'000);
  const QDateTime seconds = QDateTime::fromMSecsSinceEpoch(us / 1000, Qt::UTC);
  return QLocale::c().toString(seconds, "yyyy-MM-ddTHH:mm:ss").toStdString() + "." +
         std::string(kMicrosecondDigits - digits.size(), '0') + digits + "Z";
}

long long DelayUs(const CapturedExchange& exchange) {
  return std::chrono::duration_cast<std::chrono::microseconds>(exchange.answered - exchange.asked).count();
}

/// An exchange and its decoded fields.
struct Decoded {
  std::string name;
  Fields request;
  Fields reply;
};

Decoded Decode(const ExchangeDecoder& decoder, const CapturedExchange& exchange) {
  if (exchange.protocol == CapturedExchange::Protocol::kSerialLines) {
    return {SerialFrameName(exchange.request), SerialFrameFields(exchange.request, false),
            SerialFrameFields(exchange.reply, true)};
  }
  Decoded decoded{decoder.CommandName(exchange.command, exchange.request),
                  decoder.Request(exchange.command, exchange.request),
                  {}};
  const bool is_good = exchange.answer == Answer::kWhole && exchange.return_code == 0 &&
                       exchange.reply_command == exchange.command;
  if (is_good) {
    decoded.reply = decoder.Reply(exchange.command, exchange.request, exchange.reply);
  } else if (!exchange.reply.empty()) {
    decoded.reply = {{{}, {}, {}, {}, {}, 0, exchange.reply}};
  }
  return decoded;
}

/// The outcome of the request.
std::string Outcome(const CapturedExchange& exchange) {
  std::string text;
  switch (exchange.answer) {
    case Answer::kNone:
      return "no reply";
    case Answer::kIncomplete:
      text = "the reply was cut off after " + std::to_string(exchange.reply.size()) + " of " +
             std::to_string(exchange.announced) + " bytes";
      break;
    case Answer::kWhole:
      text = exchange.return_code == 0 ? "ok" : ExchangeCodeText(exchange.return_code);
      break;
  }
  if (exchange.reply_command != exchange.command) text += ", answering another command";
  return text + ", " + QString::number(static_cast<double>(DelayUs(exchange)) / 1000, 'f', 1).toStdString() +
         " ms";
}

std::string CommandText(std::uint8_t command) {
  return QString("0x%1").arg(command, 2, 16, QLatin1Char('0')).toStdString();
}

std::string Indented(const char* head, const std::string& block) {
  if (block.empty()) return {};
  std::string text = "\n    " + std::string(head) + "\n    ";
  for (const char c : block) text += c == '\n' ? std::string("\n    ") : std::string(1, c);
  return text;
}

std::string TextOf(const CapturedExchange& exchange, const Decoded& decoded) {
  const std::string name = decoded.name.empty() ? std::string() : " (" + decoded.name + ")";
  return PlainLines(TimeText(exchange.asked) + "  #" + std::to_string(exchange.connection) + " " +
                    FormatEndpoint(exchange.sensor) + "  " + CommandText(exchange.command) + name + ": " +
                    Outcome(exchange) + Indented("request", DecodedText(decoded.request)) +
                    Indented("reply", DecodedText(decoded.reply)));
}

std::string JsonField(const DecodedField& field) {
  return JsonObject()
      .Text("id", field.id)
      .Text("name", Utf8(field.name))
      .Text("value", Utf8(field.text))
      .Text("label", Utf8(field.label))
      .Text("unit", Utf8(field.unit))
      .Number("place", static_cast<long long>(field.place))
      .Text("raw", quarn::lidar::HexText(field.raw))
      .Bool("missing", field.is_missing)
      .str();
}

std::string JsonOf(const CapturedExchange& exchange, const Decoded& decoded) {
  const char* const answers[] = {"none", "whole", "broken-off"};
  JsonObject object;
  object.Text("time", TimeText(exchange.asked))
      .Number("connection", static_cast<long long>(exchange.connection))
      .Text("sensor", FormatEndpoint(exchange.sensor))
      .Text("command", CommandText(exchange.command))
      .Text("name", Utf8(decoded.name))
      .Raw("request", JsonList(decoded.request, JsonField))
      .Text("answer", answers[static_cast<std::size_t>(exchange.answer)]);
  if (exchange.answer != Answer::kNone) {
    object.Number("code", exchange.return_code).Number("delay_us", DelayUs(exchange));
  }
  return object.Raw("reply", JsonList(decoded.reply, JsonField)).str();
}

/// "43 exchanges in 1 connection; 3 other packets".
std::string SummaryText(const quarn::lidar::CaptureSummary& summary) {
  std::string text = std::to_string(summary.exchanges) + " exchanges in " +
                     std::to_string(summary.connections) +
                     (summary.connections == 1 ? " connection" : " connections");
  const std::pair<std::uint64_t, const char*> oddities[] = {{summary.other_packets, "other packets"},
                                                            {summary.unsolicited, "unsolicited replies"},
                                                            {summary.noise, "bytes that belong to no frame"},
                                                            {summary.lost, "bytes missing from the file"}};
  for (const auto& [count, what] : oddities) {
    if (count > 0) text += "; " + std::to_string(count) + " " + what;
  }
  return text + (summary.fault.empty() ? "" : "\n" + summary.fault);
}

}  // namespace

ExitCode ShowCapture(const Arguments& arguments, const std::string& table_folder, Console& console) {
  const auto model = LoadModel(table_folder, arguments.model);
  if (!model) {
    console.Note("varkelctl: " + Plain(model.error()));
    return kFailed;
  }
  std::ifstream file(std::filesystem::path(QString::fromStdString(arguments.file).toStdU16String()),
                     std::ios::binary);
  if (!file) {
    console.Note("varkelctl: " + Plain(arguments.file) + " can't be opened.");
    return kFailed;
  }
  const ExchangeDecoder decoder((*model)->catalogue);
  const auto summary = quarn::lidar::ReadCapture(file, [&](const CapturedExchange& exchange) {
    const Decoded decoded = Decode(decoder, exchange);
    console.Result(arguments.json ? JsonOf(exchange, decoded) : TextOf(exchange, decoded));
  });
  console.Note(SummaryText(summary));
  return summary.fault.empty() ? kDone : kFailed;
}

}  // namespace varkel::cli
