#include "VarkelCore/src/values/logged_exchange.h"

#include <charconv>
#include <optional>
#include <string_view>

#include "VarkelCore/src/values/decoded_text.h"
#include "VarkelCore/src/values/protocol_fields.h"
#include "libquarn/Capture/src/ktc_frame_splitter.h"

namespace varkel {
namespace {

using Bytes = std::vector<std::uint8_t>;
using quarn::lidar::KtcFrame;

constexpr std::string_view kSend = "SEND: ";
constexpr std::string_view kReceived = "RECV: ";
constexpr std::string_view kFailed = "RECV: ret_code is ";

/// The line's bytes; nullopt if it is not a line of the byte log.
std::optional<Bytes> BytesOf(std::string_view line, std::string_view prefix) {
  if (!line.starts_with(prefix)) return std::nullopt;
  Bytes bytes;
  for (line.remove_prefix(prefix.size()); !line.empty();) {
    std::uint8_t byte = 0;
    const auto [end, error] =
        std::from_chars(line.data(), line.data() + std::min<std::size_t>(line.size(), 2), byte, 16);
    if (error != std::errc() || end != line.data() + 2) return std::nullopt;
    bytes.push_back(byte);
    line.remove_prefix(std::min<std::size_t>(line.size(), 3));
  }
  return bytes;
}

std::optional<KtcFrame> FrameOf(const Bytes& bytes) {
  quarn::lidar::KtcFrameSplitter splitter;
  splitter.Append(bytes);
  auto frame = splitter.Next();
  return splitter.noise() == 0 ? frame : std::nullopt;
}

/// "0x07 (read Model, PN and 5 more)".
std::string Title(std::uint8_t command, const std::string& name) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text = {'0', 'x', kDigits[command >> 4U], kDigits[command & 0x0FU]};
  return name.empty() ? text : text + " (" + name + ")";
}

std::string Joined(const std::string& head, const std::string& body) {
  return body.empty() ? head : head + "\n" + body;
}

std::string KtcText(const ExchangeDecoder& decoder, const KtcFrame& request, const std::string& received) {
  const std::string title = Title(request.command, decoder.CommandName(request.command, request.payload));
  if (received.empty()) return Joined(title, DecodedText(decoder.Request(request.command, request.payload)));
  if (received.starts_with(kFailed)) {
    return title + ": " +
           (received.substr(kFailed.size()).starts_with('-')
                ? "no usable reply"
                : "refused with code " + received.substr(kFailed.size()));
  }
  auto reply = BytesOf(received, kReceived);
  if (!reply) return {};
  // Replies to console commands are logged with their header.
  if (const auto frame = FrameOf(*reply);
      frame && frame->command == request.command && frame->version == request.version) {
    reply = frame->payload;
  }
  return Joined(title, DecodedText(decoder.Reply(request.command, request.payload, *reply)));
}

}  // namespace

std::string DecodeLogLines(const ExchangeDecoder& decoder, const std::string& sent,
                           const std::string& received) {
  const auto request = BytesOf(sent, kSend);
  if (request) {
    if (const auto frame = FrameOf(*request)) return KtcText(decoder, *frame, received);
  }
  // Serial lines.
  const auto reply = BytesOf(received, kReceived);
  const std::string name = request ? SerialFrameName(*request) : std::string();
  const std::string body = DecodedText(reply     ? SerialFrameFields(*reply, true)
                                       : request ? SerialFrameFields(*request, false)
                                                 : std::vector<DecodedField>());
  return name.empty() ? body : Joined(name, body);
}

}  // namespace varkel
